#pragma once

#include "platform/Platform.h"
#include "platform/common/NullMediaExporter.h"
#include "platform/headless/HeadlessExecutors.h"
#include "platform/headless/HeadlessServices.h"
#include "platform/headless/HeadlessWebView.h"
#include "platform/headless/HeadlessWindow.h"

namespace quillmere::platform {

/// An application without a desktop.
class HeadlessApplication : public Application {
public:
    explicit HeadlessApplication(HeadlessMain& main) : main_(main) {}

    int run(ApplicationClient& client) override;
    void terminate() override { terminated = true; }
    void activate() override { ++activations; }
    void setMainMenu(MenuSpec spec) override { menu = std::move(spec); }
    const std::vector<std::string>& arguments() const override { return commandLine; }

    /// What `run` does before its loop.
    void launch(ApplicationClient& client);
    /// The user picks the item of this title; false when there is none or it is not the delegate's.
    bool choose(const std::string& title);
    void lastWindowClosed();

    std::vector<std::string> commandLine = {"Quillmere"};
    std::vector<FileUrl> filesAtLaunch;
    MenuSpec menu;
    int activations = 0;
    bool terminated = false;

private:
    HeadlessMain& main_;
    ApplicationClient* client_ = nullptr;
};

class HeadlessToolkit : public Toolkit {
public:
    explicit HeadlessToolkit(HeadlessApplication& application) : application_(application) {}

    std::unique_ptr<Window> makeWindow(const WindowSpec& spec) override;
    std::unique_ptr<WebView> makeWebView(const WebViewConfiguration& configuration) override;
    view::ViewRef makeFilePreview(const FileUrl& file) override;
    bool hasSymbol(const std::string&) const override { return true; }

    // The last that were made; their owner is whoever asked for them.
    HeadlessWindow* window = nullptr;
    HeadlessWebView* web = nullptr;

    bool canPreviewFiles = false;
    std::vector<FileUrl> previews;

private:
    HeadlessApplication& application_;
};

/// Everything of a platform, in memory and in one folder; what the unit tests run on. It works like the real ones and
/// can be driven like a desktop with a user before it.
class HeadlessPlatform {
public:
    /// Home, caches, application support and the bundle are folders below `root`.
    explicit HeadlessPlatform(const FileUrl& root);

    Platform platform();

    HeadlessExecutors executors;
    HeadlessApplication application{executors.main()};
    HeadlessToolkit toolkit{application};
    HeadlessDialogs dialogs{executors.main()};
    HeadlessDefaults defaults;
    HeadlessPasteboard pasteboard;
    HeadlessWorkspace workspace;
    HeadlessContentTypes contentTypes;
    HeadlessBundle bundle;
    HeadlessImageCodec images;
    NullMediaExporter mediaExporter;
    Directories directories;
};

} // namespace quillmere::platform
