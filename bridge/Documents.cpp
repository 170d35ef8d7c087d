#include "base/Text.h"
#include "bridge/OpenRules.h"
#include "shell/Background.h"
#include "shell/QuillmereDelegate.h"

#include <cerrno>
#include <filesystem>
#include <sys/stat.h>

namespace quillmere {

namespace fs = std::filesystem;

namespace {

std::string shownName(const FileUrl& url) {
    return displayText(url.lastPathComponent());
}

int64_t fileSize(const FileUrl& file) {
    std::error_code error;
    const auto size = fs::file_size(file.filesystemPath(), error);
    return error ? 0 : static_cast<int64_t>(size);
}

/// Pipes, sockets and devices would make whatever reads them wait. Where an identity is known, what has taken the
/// file's name meanwhile is not touched either.
void checkBeforeUse(const FileUrl& file, const std::optional<FileIdentity>& identity) {
    struct stat facts{};
    if (::stat(file.path().c_str(), &facts) != 0)
        throwFileError(errno, file.path());
    if (!S_ISREG(facts.st_mode) && !S_ISDIR(facts.st_mode))
        throwFileError(EINVAL, file.path());
    if (identity && FileIdentity{.device = facts.st_dev, .file = facts.st_ino} != *identity)
        throw FileFailure("The selected item no longer exists or access was denied.");
}

} // namespace

void QuillmereDelegate::open(const FileUrl& url, const std::optional<std::string>& containerToken,
                             const std::optional<std::string>& displayName) {
    open(url, containerToken, displayName, std::nullopt);
}

void QuillmereDelegate::open(const FileUrl& url, const std::optional<std::string>& containerToken,
                             const std::optional<std::string>& displayName,
                             const std::optional<FileIdentity>& identity) {
    assertMainThread();
    if (!ready_) {
        pending_ = url;
        pendingContainerToken_ = containerToken;
        pendingDisplayName_ = displayName;
        pendingContainerRefresh_.reset();
        return;
    }
    currentContainerToken_ = containerToken;
    currentDisplayName_ = displayName ? displayText(*displayName) : shownName(url);
    currentOriginal_ = url;
    std::error_code error;
    if (!fs::exists(url.filesystemPath(), error)) {
        const Ticket ticket = nextRequest();
        containerGeneration_->raise();
        sendError(ticket, currentDisplayName_, "The selected item no longer exists or access was denied.");
    } else if (ContainerBrowser::isContainer(url)) {
        openContainer(url, containerToken);
    } else {
        openFile(url, containerToken, identity);
    }
}

void QuillmereDelegate::openContainer(const FileUrl& url, const std::optional<std::string>& token) {
    currentContainerRoot_ = url;
    runContainerOperation(shownName(url), token, [url](ContainerBrowser& browser, const CancellationTest& cancelled) {
        return ContainerOpenResult(browser.browse(url, std::nullopt, std::nullopt, cancelled));
    });
}

void QuillmereDelegate::openFile(const FileUrl& url, const std::optional<std::string>& token,
                                 const std::optional<FileIdentity>& identity) {
    if (!token)
        currentContainerRoot_.reset();
    showingContainer_ = false;
    containerGeneration_->raise();
    const Ticket ticket = nextRequest();
    currentGrant_.reset();
    mediaFallbackAttempted_ = false;
    removePreview();
    const std::string name = currentDisplayName_.value_or(shownName(url));
    showInTitle(name, url);
    send({{"type", "busy"}, {"name", name}, {"requestId", ticket}});
    if (needsNativePreview(url.lowerExtension()) && !parts_.preparation->libreOffice())
        return showQuickLook(url, ticket);

    runInBackground(
        platform_.executors.userInitiated(), platform_.executors.main(), weak_from_this(),
        [preparation = parts_.preparation, url, cache = cacheRoot(), identity] {
            checkBeforeUse(url, identity);
            const auto prepared = preparation->prepare(url, cache);
            if (identity)
                checkBeforeUse(url, identity);
            return prepared;
        },
        [ticket, name, url, identity](QuillmereDelegate& self, const Outcome<PreparedFile>& outcome) {
            if (self.requestID_ != ticket)
                return;
            if (const auto* prepared = std::get_if<PreparedFile>(&outcome))
                self.sendFile(*prepared, url, ticket, identity);
            else
                self.sendError(ticket, name, std::get<Failure>(outcome).message);
        });
}

void QuillmereDelegate::sendFile(const PreparedFile& prepared, const FileUrl& original, Ticket ticket,
                                 const std::optional<FileIdentity>& identity) {
    assertMainThread();
    currentGrant_ = localFiles_->grant(prepared.file, prepared.file == original ? identity : std::nullopt);
    if (prepared.file != original && isConvertedMedia(prepared.ext))
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
    send(std::move(message));
}

void QuillmereDelegate::showQuickLook(const FileUrl& url, Ticket ticket) {
    assertMainThread();
    auto shown = content_ ? platform_.toolkit.makeFilePreview(url) : nullptr;
    if (!shown)
        return sendError(ticket, std::nullopt, "macOS Quick Look is unavailable.");
    const double top = currentContainerToken_ ? 84 : 44; // the page's own bars stay in sight
    shown->placement = view::Fill{.insets = {.top = top}};
    shown->tag = "preview";
    content_->addBelow(shown, *toolbar_);
    preview_ = std::move(shown);
    send({{"type", "native-preview"}, {"name", shownName(url)}, {"requestId", ticket}});
}

void QuillmereDelegate::transcodeMedia(const JsonObject& body) {
    const auto url = stringField(body, "url");
    if (!url || url != currentGrant_ || !currentOriginal_)
        return;
    const auto served = localFiles_->grantedFile(*url);
    if (!served)
        return;
    const FileUrl original = *currentOriginal_;
    if (mediaFallbackAttempted_)
        return sendError(requestID_, shownName(original), "This media codec could not be played after conversion.");
    mediaFallbackAttempted_ = true;
    const MediaKind kind = boolField(body, "isAudio").value_or(false) ? MediaKind::audio : MediaKind::video;
    const Ticket ticket = nextRequest();
    send({{"type", "busy"}, {"name", stringField(body, "name").value_or(shownName(*served))}, {"requestId", ticket}});
    runInBackground(
        platform_.executors.userInitiated(), platform_.executors.main(), weak_from_this(),
        [preparation = parts_.preparation, file = *served, cache = cacheRoot(), kind] {
            checkBeforeUse(file, std::nullopt);
            return preparation->transcode(file, cache, kind);
        },
        [ticket, original](QuillmereDelegate& self, const Outcome<PreparedFile>& outcome) {
            if (self.requestID_ != ticket)
                return;
            if (const auto* prepared = std::get_if<PreparedFile>(&outcome))
                self.sendFile(*prepared, original, ticket, std::nullopt);
            else
                self.sendError(ticket, std::nullopt, std::get<Failure>(outcome).message);
        });
}

void QuillmereDelegate::removePreview() {
    if (!preview_)
        return;
    preview_->removeFromParent();
    preview_ = nullptr;
}

void QuillmereDelegate::showInTitle(const std::string& name, std::optional<FileUrl> file) {
    window_->setTitle(name + " — Quillmere");
    window_->setRepresentedFile(std::move(file));
}

} // namespace quillmere
