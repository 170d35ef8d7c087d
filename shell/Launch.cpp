#include "base/CommandLine.h"
#include "base/FolderAccess.h"
#include "base/RegularFile.h"
#include "base/Text.h"
#include "base/WeakCallback.h"
#include "files/AppAddress.h"
#include "lifecycle/ApplicationRegistration.h"
#include "prepare/CacheHousekeeping.h"
#include "shell/MainMenu.h"
#include "shell/QuillmereDelegate.h"

#include <array>

namespace quillmere {

namespace {

/// The script that prepares the page for this shell; the page runs without it when it cannot be read.
std::optional<std::string> readUserScript(const FileUrl& resources) {
    try {
        const RegularFile file(resources.appending("mac-shell.js"));
        std::array<std::byte, size_t{16} * 1024> piece;
        std::string text;
        while (const size_t got = file.read(text.size(), piece.data(), piece.size()))
            text.append(reinterpret_cast<const char*>(piece.data()), got);
        return isValidUtf8(text) ? std::optional(text) : std::nullopt;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

/// Later users of a folder that could not be made report their own failures.
void createFolder(const FileUrl& folder) {
    try {
        makePrivateFolders(folder);
    } catch (const std::exception&) {
        return;
    }
}

} // namespace

void QuillmereDelegate::applicationDidFinishLaunching() {
    assertMainThread();
    ApplicationRegistration::refreshInstalledBundle({.bundle = platform_.bundle,
                                                     .workspace = platform_.workspace,
                                                     .executors = platform_.executors,
                                                     .home = platform_.directories.home,
                                                     .log = parts_.log});
    createFolder(support_);
    createFolder(cacheRoot());
    cleanCache();
    platform_.application.setMainMenu(mainMenu());
    localFiles_ = std::make_shared<LocalFiles>(resources_, platform_.executors, platform_.contentTypes);
    buildWindow();
    mainWindow_->showStartupLoading();
    lifecycle_ = std::make_shared<AppLifecycleController>(
        mainWindow_->weakWindow(), AppLifecycleController::Host{.application = platform_.application,
                                                                .executors = platform_.executors,
                                                                .toolkit = platform_.toolkit,
                                                                .dialogs = platform_.dialogs,
                                                                .defaults = platform_.defaults,
                                                                .workspace = platform_.workspace,
                                                                .contentTypes = platform_.contentTypes,
                                                                .bundle = platform_.bundle,
                                                                .home = platform_.directories.home});
    appearance_->applyAppearance();
    window().makeKeyAndOrderFront();
    platform_.application.activate();
    web_->web().load(appIndex, std::chrono::seconds(60));
    if (!documents_->hasPendingFile())
        takeCommandLine();
}

void QuillmereDelegate::cleanCache() {
    platform_.executors.utility().submit([cache = cacheRoot()] { cleanPreviewCache(cache, wallNow()); });
}

void QuillmereDelegate::buildWindow() {
    mainWindow_.emplace(platform_, weak_from_this());
    web_ = FileWebView::make(platform_.toolkit.makeWebView({.scheme = appScheme,
                                                            .host = appHost,
                                                            .schemeHandler = localFiles_.get(),
                                                            .messageHandler = "quillMere",
                                                            .userScript = readUserScript(resources_),
                                                            .javaScriptCanOpenWindows = false,
                                                            .mediaPlaybackNeedsUserAction = false}),
                             weak_from_this());
    web_->onDrop = weakly(weak_from_this(), [](QuillmereDelegate& self, const FileUrl& file) { self.open(file); });
    mainWindow_->addPage(web_->web().view());
    mainWindow_->addToolbar(
        {.openDialog = weakly(weak_from_this(), [](QuillmereDelegate& self) { self.openDialog(); }),
         .showSettings = weakly(weak_from_this(), [](QuillmereDelegate& self) { self.showSettings(); })});
    settings_ = std::make_shared<SettingsPopover>(static_cast<SettingsPopover::Host&>(*this),
                                                  SettingsPopover::Services{.defaults = platform_.defaults,
                                                                            .dialogs = platform_.dialogs,
                                                                            .resources = platform_.bundle.resources()});
}

void QuillmereDelegate::takeCommandLine() {
    if (const auto file = namedFile(platform_.application.arguments()))
        documents_->keep(OpenRequest{.file = *file});
}

} // namespace quillmere
