#include "shell/QuillmereDelegate.h"

#include "base/Fatal.h"
#include "base/WeakCallback.h"
#include "files/AppAddress.h"
#include "platform/MainThread.h"

namespace quillmere {

using platform::MenuAction;
using platform::NavigationDecision;

namespace {

constexpr const char* productFolder = "Quillmere";

FileUrl required(const std::optional<FileUrl>& folder, const char* reason) {
    if (!folder)
        fatalStop(reason);
    return *folder;
}

} // namespace

QuillmereDelegate::QuillmereDelegate(const platform::Platform& platform, Parts parts)
    : platform_(platform), parts_(std::move(parts)),
      resources_(required(platform.bundle.resources(), "the bundle has no resources")),
      support_(required(platform.directories.applicationSupport, "there is no folder for application support")
                   .appending(productFolder)),
      channel_(*this),
      documents_(std::make_shared<DocumentOpening>(static_cast<DocumentOpening::Host&>(*this),
                                                   DocumentOpening::Services{.channel = channel_,
                                                                             .requests = requests_,
                                                                             .executors = platform_.executors,
                                                                             .preparation = parts_.preparation,
                                                                             .cache = cacheRoot()})),
      containerWork_(std::make_shared<ContainerWork>(
          static_cast<ContainerWork::Host&>(*this),
          ContainerWork::Services{.channel = channel_,
                                  .requests = requests_,
                                  .executors = platform_.executors,
                                  .makeBrowser = [this] { return parts_.makeContainerBrowser(cacheRoot()); }})),
      appearance_(std::make_shared<WindowAppearance>(static_cast<WindowAppearance::Host&>(*this),
                                                     WindowAppearance::Services{.defaults = platform_.defaults,
                                                                                .dialogs = platform_.dialogs,
                                                                                .executors = platform_.executors,
                                                                                .images = platform_.images,
                                                                                .support = support_})) {}

std::shared_ptr<QuillmereDelegate> QuillmereDelegate::make(const platform::Platform& platform, Parts parts) {
    platform::assertMainThread(platform.executors.main());
    return std::shared_ptr<QuillmereDelegate>(new QuillmereDelegate(platform, std::move(parts)));
}

platform::OpenReply QuillmereDelegate::applicationOpenFiles(const std::vector<FileUrl>& files) {
    assertMainThread();
    if (!files.empty())
        open(files.front());
    return platform::OpenReply::success;
}

bool QuillmereDelegate::applicationShouldHandleReopen(bool) {
    assertMainThread();
    if (mainWindow_)
        mainWindow_->window().makeKeyAndOrderFront();
    return true;
}

void QuillmereDelegate::performMenuAction(MenuAction action) {
    assertMainThread();
    switch (action) {
    case MenuAction::openDialog:
        return openDialog();
    case MenuAction::showSettings:
        return showSettings();
    case MenuAction::about:
    case MenuAction::hide:
    case MenuAction::quit:
    case MenuAction::closeWindow:
    case MenuAction::undo:
    case MenuAction::redo:
    case MenuAction::cut:
    case MenuAction::copy:
    case MenuAction::paste:
    case MenuAction::selectAll:
    case MenuAction::toggleFullScreen:
    case MenuAction::minimize:
        return; // the first responder's
    }
}

void QuillmereDelegate::windowDidEnterFullScreen() {
    channel_.send({{"type", "state"}, {"maximized", true}});
}

void QuillmereDelegate::windowDidExitFullScreen() {
    channel_.send({{"type", "state"}, {"maximized", false}});
}

void QuillmereDelegate::windowDidBecomeKey() {
    channel_.send({{"type", "active"}, {"value", true}});
    if (channel_.ready() && lifecycle_)
        lifecycle_->showFirstRunIfNeeded();
}

void QuillmereDelegate::windowDidResignKey() {
    channel_.send({{"type", "active"}, {"value", false}});
}

NavigationDecision QuillmereDelegate::decideNavigation(const std::optional<std::string>& url) {
    return url && isAppAddress(*url) ? NavigationDecision::allow : NavigationDecision::cancel;
}

void QuillmereDelegate::didFailProvisionalNavigation(const std::string& description) {
    assertMainThread();
    mainWindow_->showStartupError(description);
}

void QuillmereDelegate::contentProcessDidTerminate() {
    assertMainThread();
    if (!documents_->hasPendingFile()) {
        const auto listing = containerWork_->shown();
        documents_->keep(listing ? PendingOpen(*listing) : documents_->shown());
    }
    requests_.abandon();
    documents_->dropGrant();
    channel_.setReady(false);
    mainWindow_->showStartupLoading();
    web_->web().reload();
}

void QuillmereDelegate::open(const FileUrl& url) {
    assertMainThread();
    documents_->open({.file = url});
}

void QuillmereDelegate::openDialog() {
    closeSettings();
    platform_.dialogs.openPanel(
        window(),
        {.title = "Open File or Folder", .files = true, .folders = true, .types = platform::AllowedTypes::all},
        weakly(weak_from_this(), [](QuillmereDelegate& self, const std::optional<FileUrl>& chosen) {
            if (chosen)
                self.open(*chosen);
        }));
}

void QuillmereDelegate::showSettings() {
    settings_->toggle();
}

void QuillmereDelegate::assertMainThread() const {
    platform::assertMainThread(platform_.executors.main());
}

FileUrl QuillmereDelegate::cacheRoot() const {
    return required(platform_.directories.caches, "there is no folder for caches").appending(productFolder);
}

} // namespace quillmere
