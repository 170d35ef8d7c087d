#pragma once

#include "bridge/InboundMessage.h"
#include "bridge/OpenRequest.h"
#include "bridge/PageChannel.h"
#include "bridge/Requests.h"
#include "containers/ContainerBrowser.h"
#include "platform/Executors.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quillmere {

/// Runs the container browser for the page: one operation at a time on a queue of its own, the newest one's result
/// only. Owned by a shared pointer, since work under way holds it weakly. Main thread only.
class ContainerWork : public std::enable_shared_from_this<ContainerWork> {
public:
    /// What it needs from its owner.
    class Host {
    public:
        virtual ~Host() = default;
        /// An operation begins: the document that was shown is not the page's any more.
        virtual void willBrowse() = 0;
        /// A document was chosen in a listing.
        virtual void openDocument(OpenRequest request) = 0;
        /// A listing is shown under this name; `root` is the folder or archive that was opened.
        virtual void didShowListing(const std::string& name, const std::optional<FileUrl>& root) = 0;
        /// What the user knows the current document or listing by.
        virtual std::optional<std::string> currentDisplayName() const = 0;
    };
    struct Services {
        PageChannel& channel;
        Requests& requests;
        platform::Executors& executors;
        std::function<std::shared_ptr<ContainerBrowser>()> makeBrowser; // called once, on first use
    };
    using Operation = std::function<ContainerOpenResult(ContainerBrowser&, const CancellationTest&)>;

    /// The host and the services outlive it.
    ContainerWork(Host& host, Services services);

    /// Lists a folder or an archive that was opened from outside.
    void browse(const OpenRequest& request);
    /// What the page asks for in a listing; nothing happens for a token that is not the current one.
    void containerAction(const inbound::ContainerOpen& message);
    void containerAction(const inbound::ContainerUp& message);
    void containerAction(const inbound::ContainerRefresh& message);
    void runContainerOperation(const std::string& name, const std::optional<std::string>& token, Operation operation);

    /// A document is shown instead of the listing.
    void leaveListing(bool inContainer);
    /// The listing that is shown now, if any.
    std::optional<ContainerToRefresh> shown() const;

private:
    bool isCurrent(const std::optional<std::string>& token) const;
    void runPageAction(const std::string& token, Operation operation);
    void showListing(const WrittenListing& listing, const std::string& operationName, Requests::Ticket ticket);
    std::shared_ptr<ContainerBrowser> containers();

    Host& host_;
    Services services_;
    std::unique_ptr<platform::Executor> containerQueue_;
    std::shared_ptr<ContainerBrowser> containers_; // made on first use
    std::optional<FileUrl> currentContainerRoot_;
    bool showingContainer_ = false;
};

} // namespace quillmere
