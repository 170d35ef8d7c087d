#pragma once

#include "platform/Window.h"
#include "platform/gtk/desktop/DesktopApplication.h"
#include "platform/gtk/panels/SheetHost.h"
#include "platform/gtk/view/StyleSheet.h"
#include "platform/gtk/view/ViewRenderer.h"
#include "platform/gtk/window/BlurBehind.h"
#include "platform/gtk/window/PopoverHost.h"
#include "platform/gtk/window/ResizeEdges.h"
#include "platform/gtk/window/TitleControls.h"
#include "platform/gtk/window/WindowDrag.h"
#include "platform/gtk/window/WindowPlacement.h"

namespace quillmere::platform::gtk {

/// The one window: transparent and rounded where the desktop composes windows, its content reaching to the edges, with
/// window controls of its own at the leading side. Main thread only.
class DesktopWindow final : public Window, private ViewRenderer::Host {
public:
    struct Environment {
        DesktopApplication& application; // outlives the window
        UserDefaults& defaults;
    };

    DesktopWindow(const WindowSpec& spec, Environment environment);
    ~DesktopWindow() override;
    DesktopWindow(const DesktopWindow&) = delete;
    DesktopWindow& operator=(const DesktopWindow&) = delete;

    void setClient(std::weak_ptr<WindowClient> client) override { client_ = std::move(client); }
    void setContent(view::ViewRef content) override;
    void setTitle(std::string title) override;
    void setRepresentedFile(std::optional<FileUrl> file) override;
    void center() override;
    void makeKeyAndOrderFront() override;
    bool isFullScreen() const override;
    void toggleFullScreen() override;
    void miniaturize() override;
    void performClose() override;
    void performDrag() override { drag_.arm(); }
    double contentHeight() const override;
    std::optional<double> screenHeight() const override;
    void showPopover(view::ViewRef content, const view::ViewRef& anchor) override;
    void closePopover() override { popover_.close(); }
    bool isPopoverShown() const override { return popover_.isShown(); }

    GtkWindow* handle() const { return window_.get(); }
    SheetHost& sheets() { return sheets_; }
    const SheetHost& sheets() const { return sheets_; }
    /// Keeps a size that changed a moment ago.
    void saveSize() { size_.flush(); }
    void setMenu(GMenuModel* menu) { controls_.setMenu(menu); }
    void toggleMenu() { controls_.toggleMenu(); }
    /// What has the keyboard, or had it before the menu took it; may be none.
    GObjectRef<GtkWidget> editingFocus() { return focus_.lock(); }

private:
    void tintChanged(const view::Color& tint) override;
    void nativeMounted(GtkWidget* widget) override;
    bool showsDesktop() const override;

    void watch();
    void watchGround();
    void groundChanged();
    void keyStateSettled();
    gboolean closeRequested();

    Environment environment_;
    GObjectRef<GtkWindow> window_;
    GtkOverlay* body_ = nullptr; // owned by the window
    TitleControls controls_;
    FullScreenSwitch fullScreenSwitch_;
    GtkWidget* native_ = nullptr; // the web view, or whatever takes the keyboard first; owned by the window
    GObjectWeak<GtkWidget> focus_;
    StyleSheet style_;
    BlurBehind blur_;
    std::optional<view::Color> tint_;
    SizeMemory size_;
    WindowDrag drag_;
    ResizeEdges edges_;
    SheetHost sheets_;
    ViewRenderer renderer_;
    PopoverHost popover_;
    std::weak_ptr<WindowClient> client_;
    LoopTimer keySettling_;
    bool key_ = false;
    bool fullScreen_ = false;
    SignalConnections connections_;
};

} // namespace quillmere::platform::gtk
