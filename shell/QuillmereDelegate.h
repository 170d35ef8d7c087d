#pragma once

#include "appearance/AppearancePreferences.h"
#include "appearance/BackgroundView.h"
#include "bridge/ContainerGeneration.h"
#include "bridge/InboundMessage.h"
#include "bridge/OutboundMessage.h"
#include "containers/ContainerBrowser.h"
#include "files/LocalFiles.h"
#include "lifecycle/AppLifecycleController.h"
#include "platform/Platform.h"
#include "prepare/FilePreparation.h"
#include "shell/FileWebView.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quillmere {

/// Controls everything that lives as long as the process: the window, the page in it, the document or container that it
/// shows, and the requests under way. Everything meets here, on the main thread; decisions are taken by the functions
/// and parts beside it. Its sources stand with their subjects: shell/, bridge/, appearance/.
class QuillmereDelegate final : public platform::ApplicationClient,
                                public platform::WindowClient,
                                public FileWebView::Host,
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
    void open(const FileUrl& url, const std::optional<std::string>& containerToken,
              const std::optional<std::string>& displayName);

private:
    using Ticket = int64_t;
    using ContainerOperation = std::function<ContainerOpenResult(ContainerBrowser&, const CancellationTest&)>;

    QuillmereDelegate(const platform::Platform& platform, Parts parts);

    // shell/Launch.cpp
    void buildWindow();
    void buildWebView();
    void buildToolbar();
    void takeCommandLine();
    void cleanCache();

    // shell/WindowHost.cpp
    void openDialog();
    void showSettings();
    void showStartupLoading();
    void hideStartupLoading();
    void showStartupError(const std::string& description);

    // bridge/Dispatch.cpp
    void dispatch(const InboundMessage& message);
    void pageIsReady();
    void cancelPreview();
    void copyToClipboard(const JsonObject& body);
    void openSample(const JsonObject& body);
    /// Every message to the page; `container` becomes its member of that name.
    void send(JsonObject message, const WrittenListing* container = nullptr);
    void sendError(Ticket ticket, const std::optional<std::string>& name, const std::string& text);

    // bridge/Documents.cpp
    void openContainer(const FileUrl& url, const std::optional<std::string>& token);
    /// `identity` is that of the file that was checked when it was chosen from a container.
    void open(const FileUrl& url, const std::optional<std::string>& containerToken,
              const std::optional<std::string>& displayName, const std::optional<FileIdentity>& identity);
    void openFile(const FileUrl& url, const std::optional<std::string>& token,
                  const std::optional<FileIdentity>& identity);
    void sendFile(const PreparedFile& prepared, const FileUrl& original, Ticket ticket,
                  const std::optional<FileIdentity>& identity);
    void showQuickLook(const FileUrl& url, Ticket ticket);
    void transcodeMedia(const JsonObject& body);
    void removePreview();
    void showInTitle(const std::string& name, std::optional<FileUrl> file);

    // bridge/ContainerOperations.cpp
    void runContainerOperation(const std::string& name, const std::optional<std::string>& token,
                               ContainerOperation operation);
    void showListing(const WrittenListing& listing, const std::string& operationName, Ticket ticket);
    void containerAction(InboundType type, const JsonObject& body);

    // appearance/DelegateAppearance.cpp
    void applyAppearance();
    void pickBackground();
    void clearBackground();

    void assertMainThread() const;
    Ticket nextRequest();
    FileUrl cacheRoot() const;
    std::shared_ptr<ContainerBrowser> containers();

    platform::Platform platform_;
    Parts parts_;

    std::shared_ptr<platform::Window> window_;
    std::shared_ptr<FileWebView> web_;
    std::optional<BackgroundView> background_;
    view::ViewRef toolbar_;
    view::ViewRef settingsButton_;
    std::shared_ptr<AppLifecycleController> lifecycle_;
    view::ViewRef preview_;
    view::ViewRef startupLoading_;
    bool ready_ = false;
    Ticket requestID_ = 0;
    std::optional<std::string> currentGrant_;
    std::optional<FileUrl> currentOriginal_;
    bool mediaFallbackAttempted_ = false;
    std::optional<FileUrl> pending_;
    std::optional<std::string> pendingContainerToken_;
    std::optional<std::string> pendingDisplayName_;
    std::optional<std::string> pendingContainerRefresh_;
    std::optional<std::string> currentContainerToken_;
    std::optional<FileUrl> currentContainerRoot_;
    std::optional<std::string> currentDisplayName_;
    bool showingContainer_ = false;
    std::shared_ptr<ContainerBrowser> containers_; // made on first use
    std::unique_ptr<platform::Executor> containerQueue_;
    std::shared_ptr<ContainerGeneration> containerGeneration_;
    AppearancePreferences preferences_;
    FileUrl resources_;
    std::shared_ptr<LocalFiles> localFiles_;
    FileUrl support_;

    view::ViewRef content_; // root of the window's content
};

} // namespace quillmere
