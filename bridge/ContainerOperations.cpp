#include "shell/Background.h"
#include "shell/QuillmereDelegate.h"

namespace quillmere {

namespace {

ContainerOpenResult openItem(ContainerBrowser& browser, const std::string& token, const std::optional<std::string>& id,
                             const CancellationTest& cancelled) {
    if (!id)
        throw ContainerError("Select an item to open.");
    return browser.open(token, *id, cancelled);
}

/// What the main thread needs of a result.
using ContainerOutcome = std::variant<WrittenListing, OpenedFile>;

ContainerOutcome outcomeOf(ContainerOpenResult result) {
    if (auto* opened = std::get_if<OpenedFile>(&result))
        return std::move(*opened);
    return writeListing(std::get<JsonObject>(result));
}

} // namespace

void QuillmereDelegate::runContainerOperation(const std::string& name, const std::optional<std::string>& token,
                                              ContainerOperation operation) {
    assertMainThread();
    const Ticket ticket = nextRequest();
    const int64_t generation = containerGeneration_->raise();
    currentContainerToken_ = token;
    currentGrant_.reset();
    removePreview();
    send({{"type", "busy"}, {"name", name}, {"requestId", ticket}});

    const CancellationTest cancelled = [counter = containerGeneration_, generation] {
        return counter->value() != generation;
    };
    runInBackground(
        *containerQueue_, platform_.executors.main(), weak_from_this(),
        [browser = containers(), operation = std::move(operation), cancelled] {
            return outcomeOf(operation(*browser, cancelled));
        },
        [ticket, cancelled, name, token](QuillmereDelegate& self, const Outcome<ContainerOutcome>& outcome) {
            if (self.requestID_ != ticket || cancelled())
                return;
            if (const auto* failure = std::get_if<Failure>(&outcome))
                return self.sendError(ticket, name, failure->message);
            const auto& result = std::get<ContainerOutcome>(outcome);
            if (const auto* opened = std::get_if<OpenedFile>(&result))
                self.open(opened->file, token, opened->name, opened->identity);
            else
                self.showListing(std::get<WrittenListing>(result), name, ticket);
        });
}

void QuillmereDelegate::showListing(const WrittenListing& listing, const std::string& operationName, Ticket ticket) {
    if (!listing.token)
        return;
    currentContainerToken_ = listing.token;
    showingContainer_ = true;
    const std::string name = listing.name.value_or(operationName);
    currentDisplayName_ = name;
    showInTitle(name, currentContainerRoot_);
    send({{"type", "open"}, {"kind", "container"}, {"name", name}, {"requestId", ticket}}, &listing);
}

void QuillmereDelegate::containerAction(InboundType type, const JsonObject& body) {
    const auto token = stringField(body, "token");
    if (!token || token != currentContainerToken_)
        return;
    ContainerOperation operation;
    if (type == InboundType::containerOpen) {
        operation = [token = *token, id = stringField(body, "id")](ContainerBrowser& browser,
                                                                   const CancellationTest& cancelled) {
            return openItem(browser, token, id, cancelled);
        };
    } else if (type == InboundType::containerUp) {
        operation = [token = *token](ContainerBrowser& browser, const CancellationTest& cancelled) {
            return ContainerOpenResult(browser.up(token, cancelled));
        };
    } else {
        operation = [token = *token](ContainerBrowser& browser, const CancellationTest& cancelled) {
            return ContainerOpenResult(browser.refresh(token, cancelled));
        };
    }
    runContainerOperation(currentDisplayName_.value_or("Folder"), token, std::move(operation));
}

} // namespace quillmere
