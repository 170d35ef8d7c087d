#pragma once

#include "platform/gtk/view/ViewRenderer.h"

namespace quillmere::platform::gtk {

/// Shows a view tree on a surface of its own below a widget of the window. It closes when the user presses into the
/// window or the Escape key, and stays while another window is used. Main thread only.
class PopoverHost final : private ViewRenderer::Host {
public:
    /// `body` is the window's topmost overlay.
    PopoverHost(GtkWindow* window, GtkOverlay* body);
    ~PopoverHost() override;
    PopoverHost(const PopoverHost&) = delete;
    PopoverHost& operator=(const PopoverHost&) = delete;

    void show(view::ViewRef content, GtkWidget* anchor);
    void close();
    bool isShown() const;
    void refreshSizes() { renderer_.refreshSizes(); }

private:
    void tintChanged(const view::Color&) override {}
    void nativeMounted(GtkWidget*) override {}
    bool showsDesktop() const override { return false; }

    void closeOnPress(GtkOverlay* body);
    void takeKeys(GtkWidget* widget);
    bool performAccelerator(guint key, GdkModifierType modifiers) const;
    void remove();

    GtkWindow* window_;
    ViewRenderer renderer_;
    GObjectRef<GtkWidget> popover_; // none while none is shown
    GObjectWeak<GtkWidget> focusBefore_;
    GtkWidget* anchor_ = nullptr;
    LoopTimer removing_;
};

} // namespace quillmere::platform::gtk
