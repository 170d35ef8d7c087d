#include "platform/headless/HeadlessPlatform.h"

namespace quillmere::platform {

void HeadlessApplication::launch(ApplicationClient& client) {
    client_ = &client;
    if (!filesAtLaunch.empty())
        client.applicationOpenFiles(filesAtLaunch);
    client.applicationDidFinishLaunching();
}

int HeadlessApplication::run(ApplicationClient& client) {
    launch(client);
    while (!terminated)
        main_.runUntil([this] { return terminated; });
    main_.end();
    return 0;
}

bool HeadlessApplication::choose(const std::string& title) {
    for (const auto& part : menu.menus)
        for (const auto& entry : part.entries)
            if (entry && entry->title == title && entry->target == MenuTarget::delegate) {
                client_->performMenuAction(entry->action);
                return true;
            }
    return false;
}

void HeadlessApplication::lastWindowClosed() {
    if (client_ && client_->applicationShouldTerminateAfterLastWindowClosed())
        terminate();
}

std::unique_ptr<Window> HeadlessToolkit::makeWindow(const WindowSpec& spec) {
    auto made = std::make_unique<HeadlessWindow>(spec, [this] { application_.lastWindowClosed(); });
    window = made.get();
    return made;
}

std::unique_ptr<WebView> HeadlessToolkit::makeWebView(const WebViewConfiguration& configuration) {
    auto made = std::make_unique<HeadlessWebView>(configuration);
    web = made.get();
    return made;
}

view::ViewRef HeadlessToolkit::makeFilePreview(const FileUrl& file) {
    if (!canPreviewFiles)
        return nullptr;
    previews.push_back(file);
    return view::View::make(view::Native{.handle = std::make_shared<view::NativeView>()});
}

HeadlessPlatform::HeadlessPlatform(const FileUrl& root)
    : bundle(root.appending("Quillmere.app")), directories{.home = root.appending("home"),
                                                           .caches = root.appending("home/.cache"),
                                                           .applicationSupport = root.appending("home/.local/share")} {}

Platform HeadlessPlatform::platform() {
    return {.application = application,
            .executors = executors,
            .toolkit = toolkit,
            .dialogs = dialogs,
            .defaults = defaults,
            .pasteboard = pasteboard,
            .workspace = workspace,
            .contentTypes = contentTypes,
            .bundle = bundle,
            .images = images,
            .mediaExporter = mediaExporter,
            .directories = directories};
}

} // namespace quillmere::platform
