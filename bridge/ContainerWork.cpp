#include "bridge/ContainerWork.h"

#include "base/Text.h"
#include "platform/Background.h"

namespace quillmere {

using platform::Failure;
using platform::Outcome;

namespace {

ContainerOpenResult openItem(ContainerBrowser& browser, const std::string& token, const std::optional<std::string>& id,
                             const CancellationTest& cancelled) {
    if (!id)
        throw ContainerError("Select an item to open.");
    return browser.open(token, *id, cancelled);
}

/// What the main thread needs of a result.
using BrowsedItem = std::variant<WrittenListing, OpenedFile>;

BrowsedItem itemOf(ContainerOpenResult result) {
    if (auto* opened = std::get_if<OpenedFile>(&result))
        return std::move(*opened);
    return writeListing(std::get<JsonObject>(result));
}

} // namespace

ContainerWork::ContainerWork(Host& host, Services services)
    : host_(host), services_(std::move(services)),
      containerQueue_(services_.executors.makeSerial("app.quillmere.containers")) {}

void ContainerWork::browse(const OpenRequest& request) {
    currentContainerRoot_ = request.file;
    runContainerOperation(displayText(request.file.lastPathComponent()), request.containerToken,
                          [url = request.file](ContainerBrowser& browser, const CancellationTest& cancelled) {
                              return ContainerOpenResult(browser.browse(url, std::nullopt, std::nullopt, cancelled));
                          });
}

void ContainerWork::containerAction(const inbound::ContainerOpen& message) {
    if (isCurrent(message.token))
        runPageAction(*message.token, [token = *message.token, id = message.id](ContainerBrowser& browser,
                                                                                const CancellationTest& cancelled) {
            return openItem(browser, token, id, cancelled);
        });
}

void ContainerWork::containerAction(const inbound::ContainerUp& message) {
    if (isCurrent(message.token))
        runPageAction(*message.token,
                      [token = *message.token](ContainerBrowser& browser, const CancellationTest& cancelled) {
                          return ContainerOpenResult(browser.up(token, cancelled));
                      });
}

void ContainerWork::containerAction(const inbound::ContainerRefresh& message) {
    if (isCurrent(message.token))
        runPageAction(*message.token,
                      [token = *message.token](ContainerBrowser& browser, const CancellationTest& cancelled) {
                          return ContainerOpenResult(browser.refresh(token, cancelled));
                      });
}

bool ContainerWork::isCurrent(const std::optional<std::string>& token) const {
    return token && token == services_.channel.containerToken();
}

void ContainerWork::runPageAction(const std::string& token, Operation operation) {
    runContainerOperation(host_.currentDisplayName().value_or("Folder"), token, std::move(operation));
}

void ContainerWork::runContainerOperation(const std::string& name, const std::optional<std::string>& token,
                                          Operation operation) {
    const auto ticket = services_.requests.begin();
    const CancellationTest cancelled = services_.requests.stale();
    services_.channel.setContainerToken(token);
    host_.willBrowse();
    services_.channel.sendBusy(ticket, name);
    const auto browser = containers();
    platform::runInBackground(
        *containerQueue_, services_.executors.main(), weak_from_this(),
        [browser, operation = std::move(operation), cancelled] { return itemOf(operation(*browser, cancelled)); },
        [ticket, cancelled, name, token](ContainerWork& self, const Outcome<BrowsedItem>& outcome) {
            if (!self.services_.requests.isCurrent(ticket) || cancelled())
                return;
            if (const auto* failure = std::get_if<Failure>(&outcome))
                return self.services_.channel.sendError(ticket, name, failure->message);
            const auto* item = std::get_if<BrowsedItem>(&outcome);
            if (!item)
                return;
            if (const auto* opened = std::get_if<OpenedFile>(item))
                self.host_.openDocument({.file = opened->file,
                                         .containerToken = token,
                                         .displayName = opened->name,
                                         .identity = opened->identity});
            else
                self.showListing(std::get<WrittenListing>(*item), name, ticket);
        });
    // Behind what somebody waits for, and until the next operation.
    containerQueue_->submit([browser, cancelled] { browser->sweep(cancelled); });
}

void ContainerWork::showListing(const WrittenListing& listing, const std::string& operationName,
                                Requests::Ticket ticket) {
    if (!listing.token)
        return;
    services_.channel.setContainerToken(listing.token);
    showingContainer_ = true;
    const std::string name = listing.name.value_or(operationName);
    host_.didShowListing(name, currentContainerRoot_);
    services_.channel.send({{"type", "open"}, {"kind", "container"}, {"name", name}, {"requestId", ticket}}, &listing);
}

void ContainerWork::leaveListing(bool inContainer) {
    showingContainer_ = false;
    if (!inContainer)
        currentContainerRoot_.reset();
}

std::optional<ContainerToRefresh> ContainerWork::shown() const {
    const auto& token = services_.channel.containerToken();
    return showingContainer_ && token ? std::optional(ContainerToRefresh{.token = *token}) : std::nullopt;
}

std::shared_ptr<ContainerBrowser> ContainerWork::containers() {
    if (!containers_)
        containers_ = services_.makeBrowser();
    return containers_;
}

} // namespace quillmere
