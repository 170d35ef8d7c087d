#pragma once

#include "platform/Application.h"
#include "platform/gtk/desktop/DesktopMenu.h"
#include "platform/gtk/desktop/PreviewService.h"
#include "platform/gtk/desktop/SingleInstance.h"
#include "platform/gtk/glib/Signals.h"

namespace quillmere::platform::gtk {

class DesktopWindow;

/// The process as a desktop application: event loop, files from second starts, menu, signals of the system.
/// Main thread only.
class DesktopApplication final : public Application, private PreviewService::Host {
public:
    struct About {
        std::string name;
        std::string version;
    };

    DesktopApplication(std::vector<std::string> arguments, InstanceRole role, About about);
    ~DesktopApplication() override;
    DesktopApplication(const DesktopApplication&) = delete;
    DesktopApplication& operator=(const DesktopApplication&) = delete;

    /// An exception of the launch ends the loop and comes out here.
    int run(ApplicationClient& client) override;
    void terminate() override;
    void activate() override;
    void setMainMenu(MenuSpec menu) override;
    const std::vector<std::string>& arguments() const override { return arguments_; }

    GtkApplication* handle() const { return application_.get(); }
    /// The window that the menu's window actions mean; null when there is none.
    void setWindow(DesktopWindow* window);
    /// The user has closed the window.
    void windowClosed();
    /// The window shows this file now.
    void fileShown(const FileUrl& file);

private:
    void openPreview(const FileUrl& file) override;
    void closePreview() override;

    void servePreviews();
    void launchOrReopen();
    void openHandedOver(GFile** files, int count);
    void perform(const MenuItem& item);
    void performOwn(MenuAction action);
    void showAbout();
    void toggleMenu();
    void showMenuInWindow();
    bool handToPrimary();

    std::vector<std::string> arguments_;
    About about_;
    GObjectRef<GtkApplication> application_;
    SignalConnections connections_;
    ApplicationClient* client_ = nullptr;
    DesktopWindow* window_ = nullptr;
    std::unique_ptr<DesktopMenu> menu_;
    std::vector<guint> systemSignals_;
    bool launched_ = false;
    std::exception_ptr launchFailure_;
    PreviewService preview_{*this};
};

} // namespace quillmere::platform::gtk
