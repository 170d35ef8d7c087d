#include "bridge/DocumentOpening.h"

#include "base/RegularFile.h"
#include "base/Text.h"
#include "bridge/OpenRules.h"
#include "containers/ContainerBrowser.h"
#include "platform/Background.h"

#include <filesystem>

namespace quillmere {

namespace fs = std::filesystem;
using platform::Failure;
using platform::Outcome;

namespace {

constexpr const char* noLongerThere = "The selected item no longer exists or access was denied.";
constexpr double belowPageBars = 44;
constexpr double belowContainerBars = 84;

std::string shownName(const FileUrl& url) {
    return displayText(url.lastPathComponent());
}

int64_t fileSize(const FileUrl& file) {
    std::error_code error;
    const auto size = fs::file_size(file.filesystemPath(), error);
    return error ? 0 : static_cast<int64_t>(size);
}

/// Opens what is to be prepared, so that a refused permission is told in the same words whatever the file is; each
/// converter would have its own. Where an identity is known, what has taken the file's name meanwhile is not touched.
void checkBeforeUse(const FileUrl& file, const std::optional<FileIdentity>& identity) {
    std::error_code error;
    const bool isFolder = fs::is_directory(file.filesystemPath(), error);
    if (isFolder && !identity)
        return; // a document that is a folder
    if (isFolder)
        throw FileFailure(noLongerThere);
    if (const RegularFile opened(file); identity && opened.identity() != *identity)
        throw FileFailure(noLongerThere);
}

} // namespace

DocumentOpening::DocumentOpening(Host& host, Services services) : host_(host), services_(std::move(services)) {}

void DocumentOpening::open(OpenRequest request) {
    if (!services_.channel.ready()) {
        pending_ = std::move(request);
        return;
    }
    services_.channel.setContainerToken(request.containerToken);
    currentDisplayName_ = request.displayName ? displayText(*request.displayName) : shownName(request.file);
    current_ = request;
    std::error_code error;
    if (!fs::exists(request.file.filesystemPath(), error))
        services_.channel.sendError(services_.requests.begin(), currentDisplayName_, noLongerThere);
    else if (!request.identity && ContainerBrowser::isContainer(request.file))
        host_.openContainer(request);
    else
        openFile();
}

void DocumentOpening::openFile() {
    const OpenRequest request = *current_;
    host_.didLeaveListing(request.containerToken.has_value());
    const auto ticket = services_.requests.begin();
    leave();
    mediaFallbackAttempted_ = false;
    const std::string name = currentDisplayName_.value_or(shownName(request.file));
    host_.showInTitle(name, request.file);
    services_.channel.sendBusy(ticket, name);
    if (needsNativePreview(request.file.lowerExtension()) && !services_.preparation->libreOffice())
        return showQuickLook(request.file, ticket);

    platform::runInBackground(
        services_.executors.userInitiated(), services_.executors.main(), weak_from_this(),
        [preparation = services_.preparation, request, cache = services_.cache] {
            checkBeforeUse(request.file, request.identity);
            const auto prepared = preparation->prepare(request.file, cache);
            if (request.identity)
                checkBeforeUse(request.file, request.identity);
            return prepared;
        },
        [ticket, name](DocumentOpening& self, const Outcome<PreparedFile>& outcome) {
            if (!self.services_.requests.isCurrent(ticket))
                return;
            if (const auto* prepared = std::get_if<PreparedFile>(&outcome))
                self.sendFile(*prepared, ticket);
            else if (const auto* failure = std::get_if<Failure>(&outcome))
                self.services_.channel.sendError(ticket, name, failure->message);
        });
}

void DocumentOpening::sendFile(const PreparedFile& prepared, Requests::Ticket ticket) {
    const FileUrl& original = current_->file;
    const bool converted = prepared.file != original;
    currentGrant_ = host_.localFiles().grant(prepared.file, converted ? std::nullopt : current_->identity);
    if (converted && isConvertedMedia(prepared.ext))
        mediaFallbackAttempted_ = true;
    JsonObject message{{"type", "open"},
                       {"url", *currentGrant_},
                       {"name", currentDisplayName_.value_or(shownName(original))},
                       {"ext", displayText(prepared.ext)},
                       {"originalExt", displayText(original.lowerExtension())},
                       {"size", fileSize(prepared.file)},
                       {"requestId", ticket}};
    if (prepared.kind)
        message["kind"] = *prepared.kind;
    services_.channel.send(std::move(message));
}

void DocumentOpening::showQuickLook(const FileUrl& file, Requests::Ticket ticket) {
    auto& channel = services_.channel;
    if (!host_.showPreview(file, channel.containerToken() ? belowContainerBars : belowPageBars))
        return channel.sendError(ticket, std::nullopt, "macOS Quick Look is unavailable.");
    channel.send({{"type", "native-preview"}, {"name", shownName(file)}, {"requestId", ticket}});
}

void DocumentOpening::transcodeMedia(const inbound::TranscodeMedia& message) {
    if (!message.url || message.url != currentGrant_ || !current_)
        return;
    const auto served = host_.localFiles().grantedFile(*message.url);
    if (!served)
        return;
    if (mediaFallbackAttempted_)
        return services_.channel.sendError(services_.requests.current(), shownName(current_->file),
                                           "This media codec could not be played after conversion.");
    mediaFallbackAttempted_ = true;
    const auto ticket = services_.requests.beginAgain();
    services_.channel.sendBusy(ticket, message.name.value_or(shownName(*served)));
    // What is served is the file that was checked, or a converted copy that nobody else has a name for.
    const auto identity = *served == current_->file ? current_->identity : std::nullopt;
    platform::runInBackground(
        services_.executors.userInitiated(), services_.executors.main(), weak_from_this(),
        [preparation = services_.preparation, file = *served, cache = services_.cache,
         kind = message.isAudio ? MediaKind::audio : MediaKind::video, identity] {
            checkBeforeUse(file, identity);
            auto prepared = preparation->transcode(file, cache, kind);
            if (identity)
                checkBeforeUse(file, identity);
            return prepared;
        },
        [ticket](DocumentOpening& self, const Outcome<PreparedFile>& outcome) {
            if (!self.services_.requests.isCurrent(ticket))
                return;
            if (const auto* prepared = std::get_if<PreparedFile>(&outcome))
                self.sendFile(*prepared, ticket);
            else if (const auto* failure = std::get_if<Failure>(&outcome))
                self.services_.channel.sendError(ticket, std::nullopt, failure->message);
        });
}

void DocumentOpening::leave() {
    dropGrant();
    host_.removePreview();
}

PendingOpen DocumentOpening::takePending() {
    return std::exchange(pending_, std::monostate{});
}

PendingOpen DocumentOpening::shown() const {
    if (!current_)
        return std::monostate{};
    OpenRequest request = *current_;
    request.containerToken = services_.channel.containerToken();
    request.displayName = currentDisplayName_;
    return request;
}

} // namespace quillmere
