#include "base/WeakCallback.h"
#include "shell/QuillmereDelegate.h"

namespace quillmere {

void QuillmereDelegate::didReceiveScriptMessage(const platform::ScriptMessage& message) {
    assertMainThread();
    if (const auto accepted = acceptMessage(message))
        std::visit([this](const auto& asked) { handle(asked); }, *accepted);
}

void QuillmereDelegate::handle(const inbound::Ready&) {
    channel_.setReady(true);
    mainWindow_->hideStartupLoading();
    channel_.send({{"type", "init"},
                   {"maximized", window().isFullScreen()},
                   {"platform", "macos"},
                   {"showDefaultPrompt", false},
                   {"office", parts_.preparation->libreOffice() ? "libreoffice" : "quicklook"}});
    appearance_->applyAppearance();
    resumePending();
    platform_.executors.main().post(weakly(weak_from_this(), [](QuillmereDelegate& self) {
        if (self.lifecycle_)
            self.lifecycle_->showFirstRunIfNeeded();
    }));
}

void QuillmereDelegate::resumePending() {
    auto pending = documents_->takePending();
    if (const auto* listing = std::get_if<ContainerToRefresh>(&pending))
        containerWork_->containerAction(inbound::ContainerRefresh{.token = listing->token});
    else if (auto* request = std::get_if<OpenRequest>(&pending))
        documents_->open(std::move(*request));
}

void QuillmereDelegate::handle(const inbound::OpenDialog&) {
    openDialog();
}

void QuillmereDelegate::handle(const inbound::ContainerOpen& message) {
    containerWork_->containerAction(message);
}

void QuillmereDelegate::handle(const inbound::ContainerUp& message) {
    containerWork_->containerAction(message);
}

void QuillmereDelegate::handle(const inbound::ContainerRefresh& message) {
    containerWork_->containerAction(message);
}

void QuillmereDelegate::handle(const inbound::CancelPreview&) {
    const auto ticket = requests_.abandon();
    documents_->dropGrant();
    channel_.sendError(ticket, std::nullopt, "Preview cancelled.");
}

void QuillmereDelegate::handle(const inbound::CopyText& message) {
    const bool success = isCopyable(message.text) && platform_.pasteboard.setString(*message.text);
    channel_.send({{"type", "clipboard-result"}, {"success", success}, {"copyRequestId", message.copyRequestId}});
}

void QuillmereDelegate::handle(const inbound::MacSettings&) {
    showSettings();
}

void QuillmereDelegate::handle(const inbound::PickBackground&) {
    pickBackground();
}

void QuillmereDelegate::handle(const inbound::ClearBackground&) {
    appearance_->clearBackground();
}

void QuillmereDelegate::handle(const inbound::Minimize&) {
    window().miniaturize();
}

void QuillmereDelegate::handle(const inbound::Maximize&) {
    window().toggleFullScreen();
}

void QuillmereDelegate::handle(const inbound::Close&) {
    window().performClose();
}

void QuillmereDelegate::handle(const inbound::DefaultApps&) {
    chooseDefaultType();
}

void QuillmereDelegate::handle(const inbound::Uninstall&) {
    confirmUninstall();
}

void QuillmereDelegate::handle(const inbound::Drag&) {
    window().performDrag();
}

void QuillmereDelegate::handle(const inbound::OpenSample& message) {
    const auto file = message.name ? sampleFileName(*message.name) : std::nullopt;
    if (file)
        open(resources_.appending("samples").appending(*file));
}

void QuillmereDelegate::handle(const inbound::TranscodeMedia& message) {
    documents_->transcodeMedia(message);
}

} // namespace quillmere
