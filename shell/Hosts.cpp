#include "shell/QuillmereDelegate.h"

// What the parts need of each other.

namespace quillmere {

void QuillmereDelegate::evaluate(const std::string& script) {
    web_->web().evaluate(script);
}

void QuillmereDelegate::openContainer(const OpenRequest& request) {
    containerWork_->browse(request);
}

void QuillmereDelegate::didLeaveListing(bool inContainer) {
    containerWork_->leaveListing(inContainer);
}

void QuillmereDelegate::showInTitle(const std::string& name, std::optional<FileUrl> file) {
    mainWindow_->showInTitle(name, std::move(file));
}

bool QuillmereDelegate::showPreview(const FileUrl& file, double top) {
    return mainWindow_->showPreview(file, top);
}

void QuillmereDelegate::removePreview() {
    mainWindow_->removePreview();
}

LocalFiles& QuillmereDelegate::localFiles() {
    return *localFiles_;
}

void QuillmereDelegate::willBrowse() {
    documents_->leave();
}

void QuillmereDelegate::openDocument(OpenRequest request) {
    documents_->open(std::move(request));
}

void QuillmereDelegate::didShowListing(const std::string& name, const std::optional<FileUrl>& root) {
    documents_->setCurrentDisplayName(name);
    mainWindow_->showInTitle(name, root);
}

std::optional<std::string> QuillmereDelegate::currentDisplayName() const {
    return documents_->currentDisplayName();
}

BackgroundView* QuillmereDelegate::background() {
    return mainWindow_ ? &mainWindow_->background() : nullptr;
}

platform::Window& QuillmereDelegate::window() {
    return mainWindow_->window();
}

bool QuillmereDelegate::pageIsReady() const {
    return channel_.ready();
}

std::string QuillmereDelegate::grant(const FileUrl& file) {
    return localFiles_->grant(file);
}

void QuillmereDelegate::applyPlatformPreferences(const JsonObject& preferences) {
    channel_.applyPlatformPreferences(preferences);
}

void QuillmereDelegate::closeSettings() {
    settings_->close();
}

platform::Window* QuillmereDelegate::settingsWindow() {
    return mainWindow_ ? &mainWindow_->window() : nullptr;
}

view::ViewRef QuillmereDelegate::settingsAnchor() {
    return mainWindow_->settingsButton();
}

AppearancePreferences QuillmereDelegate::currentPreferences() const {
    return appearance_->preferences();
}

void QuillmereDelegate::preferencesChanged(const AppearancePreferences& preferences) {
    appearance_->setPreferences(preferences);
}

void QuillmereDelegate::pickBackground() {
    appearance_->pickBackground();
}

void QuillmereDelegate::chooseDefaultType() {
    if (lifecycle_ && !lifecycle_->removing())
        lifecycle_->chooseDefaultType();
}

void QuillmereDelegate::confirmUninstall() {
    if (lifecycle_)
        lifecycle_->confirmUninstall();
}

} // namespace quillmere
