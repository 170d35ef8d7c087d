#include "base/WeakCallback.h"
#include "bridge/OutboundMessage.h"
#include "shell/QuillmereDelegate.h"

#include <utility>

namespace quillmere {

void QuillmereDelegate::didReceiveScriptMessage(const platform::ScriptMessage& message) {
    assertMainThread();
    if (const auto accepted = acceptMessage(message))
        dispatch(*accepted);
}

void QuillmereDelegate::dispatch(const InboundMessage& message) {
    switch (message.type) {
    case InboundType::ready:
        return pageIsReady();
    case InboundType::openDialog:
    case InboundType::openFolderDialog:
        return openDialog();
    case InboundType::containerOpen:
    case InboundType::containerUp:
    case InboundType::containerRefresh:
        return containerAction(message.type, message.body);
    case InboundType::cancelPreview:
        return cancelPreview();
    case InboundType::clipboardCopy:
    case InboundType::copyText:
        return copyToClipboard(message.body);
    case InboundType::macSettings:
        return showSettings();
    case InboundType::pickBackground:
        return pickBackground();
    case InboundType::clearBackground:
        return clearBackground();
    case InboundType::minimize:
        return window_->miniaturize();
    case InboundType::maximize:
        return window_->toggleFullScreen();
    case InboundType::close:
        return window_->performClose();
    case InboundType::defaultApps:
        if (lifecycle_ && !lifecycle_->removing())
            lifecycle_->chooseDefaultType();
        return;
    case InboundType::uninstall:
        if (lifecycle_)
            lifecycle_->confirmUninstall();
        return;
    case InboundType::drag:
        return window_->performDrag();
    case InboundType::openSample:
        return openSample(message.body);
    case InboundType::transcodeMedia:
        return transcodeMedia(message.body);
    }
}

void QuillmereDelegate::pageIsReady() {
    ready_ = true;
    hideStartupLoading();
    send({{"type", "init"},
          {"maximized", window_->isFullScreen()},
          {"platform", "macos"},
          {"showDefaultPrompt", false},
          {"office", parts_.preparation->libreOffice() ? "libreoffice" : "quicklook"}});
    applyAppearance();
    if (const auto token = std::exchange(pendingContainerRefresh_, std::nullopt)) {
        containerAction(InboundType::containerRefresh, {{"token", *token}});
    } else if (const auto file = std::exchange(pending_, std::nullopt)) {
        const auto container = std::exchange(pendingContainerToken_, std::nullopt);
        const auto name = std::exchange(pendingDisplayName_, std::nullopt);
        open(*file, container, name);
    }
    platform_.executors.main().post(weakly(weak_from_this(), [](QuillmereDelegate& self) {
        if (self.lifecycle_)
            self.lifecycle_->showFirstRunIfNeeded();
    }));
}

void QuillmereDelegate::cancelPreview() {
    const Ticket ticket = nextRequest();
    containerGeneration_->raise();
    currentGrant_.reset();
    sendError(ticket, std::nullopt, "Preview cancelled.");
}

void QuillmereDelegate::copyToClipboard(const JsonObject& body) {
    const auto text = stringField(body, "text");
    const bool success = isCopyable(text) && platform_.pasteboard.setString(*text);
    const auto* identity = body.if_contains("copyRequestId");
    send({{"type", "clipboard-result"},
          {"success", success},
          {"copyRequestId", identity ? *identity : json::value(nullptr)}});
}

void QuillmereDelegate::openSample(const JsonObject& body) {
    const auto name = stringField(body, "name");
    const auto file = name ? sampleFileName(*name) : std::nullopt;
    if (file)
        open(resources_.appending("samples").appending(*file), std::nullopt, std::nullopt);
}

void QuillmereDelegate::send(JsonObject message, const WrittenListing* container) {
    assertMainThread();
    addContainerToken(message, currentContainerToken_);
    if (!ready_)
        return;
    const auto script =
        container ? pageCall("receive", message, "container", *container) : pageCall("receive", message);
    if (script)
        web_->web().evaluate(*script);
}

void QuillmereDelegate::sendError(Ticket ticket, const std::optional<std::string>& name, const std::string& text) {
    JsonObject message{{"type", "error"}, {"message", text}, {"requestId", ticket}};
    if (name)
        message["name"] = *name;
    send(std::move(message));
}

} // namespace quillmere
