#pragma once

#include "appearance/SettingsPopover.h"
#include "appearance/WindowAppearance.h"
#include "bridge/ContainerWork.h"
#include "bridge/DocumentOpening.h"
#include "bridge/InboundMessage.h"
#include "bridge/PageChannel.h"
#include "bridge/Requests.h"
#include "files/LocalFiles.h"
#include "lifecycle/AppLifecycleController.h"
#include "platform/Platform.h"
#include "shell/FileWebView.h"
#include "shell/MainWindow.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quillmere {

/// Everything that lives as long as the process meets here, on the main thread: what the application, the window, the
/// engine and the page say is passed on to the parts that do the work, and what these need of each other goes through
/// it. State belongs to the parts, decisions to the functions beside them.
class QuillmereDelegate final : public platform::ApplicationClient,
                                public platform::WindowClient,
                                public FileWebView::Host,
                                private PageChannel::Host,
                                private DocumentOpening::Host,
                                private ContainerWork::Host,
                                private WindowAppearance::Host,
                                private SettingsPopover::Host,
                                public std::enable_shared_from_this<QuillmereDelegate> {
public:
    /// What it works with besides the platform. The functions are called on the main thread, but for `log`.
    struct Parts {
        std::shared_ptr<const FilePreparation> preparation;
        std::function<std::shared_ptr<ContainerBrowser>(const FileUrl& cache)> makeContainerBrowser;
        std::function<void(const std::string&)> log; // any thread
    };

    /// The platform and what it refers to outlive the delegate.
    static std::shared_ptr<QuillmereDelegate> make(const platform::Platform& platform, Parts parts);

    void applicationDidFinishLaunching() override;
    platform::OpenReply applicationOpenFiles(const std::vector<FileUrl>& files) override;
    bool applicationShouldHandleReopen(bool hasVisibleWindows) override;
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
    void performMenuAction(platform::MenuAction action) override;

    void windowDidEnterFullScreen() override;
    void windowDidExitFullScreen() override;
    void windowDidBecomeKey() override;
    void windowDidResignKey() override;

    platform::NavigationDecision decideNavigation(const std::optional<std::string>& url) override;
    void didFailProvisionalNavigation(const std::string& description) override;
    void contentProcessDidTerminate() override;
    void didReceiveScriptMessage(const platform::ScriptMessage& message) override;

    /// Opens a file, a folder or an archive, or keeps it until the page is ready.
    void open(const FileUrl& url);

private:
    QuillmereDelegate(const platform::Platform& platform, Parts parts);

    // Launch.cpp
    void buildWindow();
    void takeCommandLine();
    void cleanCache();

    // Dispatch.cpp, one for each thing that the page may ask for
    void handle(const inbound::Ready& message);
    void handle(const inbound::OpenDialog& message);
    void handle(const inbound::ContainerOpen& message);
    void handle(const inbound::ContainerUp& message);
    void handle(const inbound::ContainerRefresh& message);
    void handle(const inbound::CancelPreview& message);
    void handle(const inbound::CopyText& message);
    void handle(const inbound::MacSettings& message);
    void handle(const inbound::PickBackground& message);
    void handle(const inbound::ClearBackground& message);
    void handle(const inbound::Minimize& message);
    void handle(const inbound::Maximize& message);
    void handle(const inbound::Close& message);
    void handle(const inbound::DefaultApps& message);
    void handle(const inbound::Uninstall& message);
    void handle(const inbound::Drag& message);
    void handle(const inbound::OpenSample& message);
    void handle(const inbound::TranscodeMedia& message);
    void resumePending();

    void openDialog();
    void showSettings();

    // What the parts need, in Hosts.cpp
    void evaluate(const std::string& script) override;
    void openContainer(const OpenRequest& request) override;
    void didLeaveListing(bool inContainer) override;
    void showInTitle(const std::string& name, std::optional<FileUrl> file) override;
    bool showPreview(const FileUrl& file, double top) override;
    void removePreview() override;
    LocalFiles& localFiles() override;
    void willBrowse() override;
    void openDocument(OpenRequest request) override;
    void didShowListing(const std::string& name, const std::optional<FileUrl>& root) override;
    std::optional<std::string> currentDisplayName() const override;
    BackgroundView* background() override;
    platform::Window& window() override;
    bool pageIsReady() const override;
    std::string grant(const FileUrl& file) override;
    void applyPlatformPreferences(const JsonObject& preferences) override;
    void closeSettings() override;
    platform::Window* settingsWindow() override;
    view::ViewRef settingsAnchor() override;
    AppearancePreferences currentPreferences() const override;
    void preferencesChanged(const AppearancePreferences& preferences) override;
    void pickBackground() override;
    void chooseDefaultType() override;
    void confirmUninstall() override;

    void assertMainThread() const;
    FileUrl cacheRoot() const;

    platform::Platform platform_;
    Parts parts_;
    FileUrl resources_;
    FileUrl support_;
    PageChannel channel_;
    Requests requests_;
    std::shared_ptr<DocumentOpening> documents_;
    std::shared_ptr<ContainerWork> containerWork_;
    std::shared_ptr<WindowAppearance> appearance_;
    std::shared_ptr<LocalFiles> localFiles_;
    std::optional<MainWindow> mainWindow_;
    std::shared_ptr<SettingsPopover> settings_;
    std::shared_ptr<FileWebView> web_;
    std::shared_ptr<AppLifecycleController> lifecycle_;
};

} // namespace quillmere
