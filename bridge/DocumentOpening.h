#pragma once

#include "bridge/InboundMessage.h"
#include "bridge/OpenRequest.h"
#include "bridge/PageChannel.h"
#include "bridge/Requests.h"
#include "files/LocalFiles.h"
#include "platform/Executors.h"
#include "prepare/FilePreparation.h"

#include <memory>
#include <optional>
#include <string>

namespace quillmere {

/// Opens documents: decides what a request is for, has the file prepared in the background, grants it to the page and
/// tells the page of it. Owned by a shared pointer, since work under way holds it weakly. Main thread only.
class DocumentOpening : public std::enable_shared_from_this<DocumentOpening> {
public:
    /// What it needs from its owner.
    class Host {
    public:
        virtual ~Host() = default;
        /// A folder or an archive was asked for.
        virtual void openContainer(const OpenRequest& request) = 0;
        /// A document is opened; with `inContainer` the container that it was chosen in stays the current one.
        virtual void didLeaveListing(bool inContainer) = 0;
        virtual void showInTitle(const std::string& name, std::optional<FileUrl> file) = 0;
        /// The platform's own preview over the page, `top` points below the window's upper edge. False where there is
        /// none.
        virtual bool showPreview(const FileUrl& file, double top) = 0;
        virtual void removePreview() = 0;
        virtual LocalFiles& localFiles() = 0;
    };
    struct Services {
        PageChannel& channel;
        Requests& requests;
        platform::Executors& executors;
        std::shared_ptr<const FilePreparation> preparation;
        FileUrl cache; // the preview cache
    };

    /// The host and the services outlive it.
    DocumentOpening(Host& host, Services services);

    /// Opens a file, a folder or an archive, or keeps it until the page is ready.
    void open(OpenRequest request);
    /// Converts the current document, which the page could not play, at most once.
    void transcodeMedia(const inbound::TranscodeMedia& message);
    /// The document is not the page's any more. A preview that the platform shows stays.
    void dropGrant() { currentGrant_.reset(); }
    /// The same, and the preview goes: something else takes the document's place.
    void leave();

    /// What waits for the page; it is taken out.
    PendingOpen takePending();
    bool hasPendingFile() const { return std::holds_alternative<OpenRequest>(pending_); }
    /// Keeps a request for a page that is not there yet.
    void keep(PendingOpen pending) { pending_ = std::move(pending); }
    /// The document that is shown or on its way.
    PendingOpen shown() const;

    /// What the user knows the current document or listing by.
    const std::optional<std::string>& currentDisplayName() const noexcept { return currentDisplayName_; }
    void setCurrentDisplayName(std::string name) { currentDisplayName_ = std::move(name); }

private:
    void openFile();
    void sendFile(const PreparedFile& prepared, Requests::Ticket ticket);
    void showQuickLook(const FileUrl& file, Requests::Ticket ticket);

    Host& host_;
    Services services_;
    PendingOpen pending_;
    std::optional<OpenRequest> current_; // as the user opened it, before any conversion
    std::optional<std::string> currentDisplayName_;
    std::optional<std::string> currentGrant_;
    bool mediaFallbackAttempted_ = false;
};

} // namespace quillmere
