#pragma once

#include "platform/Window.h"
#include "platform/gtk/desktop/DesktopApplication.h"
#include "platform/gtk/panels/SheetHost.h"
#include "platform/gtk/view/StyleSheet.h"
#include "platform/gtk/view/ViewRenderer.h"
#include "platform/gtk/window/ResizeEdges.h"
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

    GtkWindow* handle() const { return window_.get(); }
    SheetHost& sheets() { return sheets_; }
    /// Where the main menu opens: the leading end of the title strip.
    GtkWidget* menuAnchor() const { return controls_; }

private:
    void tintChanged(const view::Color& tint) override;
    void nativeMounted(GtkWidget* widget) override;
    bool showsDesktop() const override;

    void watch();
    void keyStateSettled();
    gboolean closeRequested();

    Environment environment_;
    GObjectRef<GtkWindow> window_;
    GtkOverlay* body_ = nullptr; // owned by the window, as are the next two
    GtkWidget* controls_ = nullptr;
    GtkWidget* native_ = nullptr; // the web view, or whatever takes the keyboard first
    StyleSheet style_;
    SizeMemory size_;
    WindowDrag drag_;
    ResizeEdges edges_;
    SheetHost sheets_;
    ViewRenderer renderer_;
    std::weak_ptr<WindowClient> client_;
    LoopTimer keySettling_;
    bool key_ = false;
    bool fullScreen_ = false;
    SignalConnections connections_;
};

} // namespace quillmere::platform::gtk
