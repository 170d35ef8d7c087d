#pragma once

#include "platform/Dialogs.h"
#include "platform/gtk/glib/Signals.h"
#include "platform/gtk/view/ViewRenderer.h"

#include <gtk/gtk.h>

#include <deque>

namespace quillmere::platform::gtk {

/// Shows alerts and panels of the program's own as sheets inside the window: a card over a scrim that takes the pointer
/// and the keyboard from everything else in the window. One at a time; a further alert waits until the first is
/// answered.
class SheetHost : private ViewRenderer::Host {
public:
    using Completion = std::function<void(size_t button)>;

    /// `body` is the window's topmost overlay.
    SheetHost(GtkWindow* window, GtkOverlay* body) : window_(window), body_(body), renderer_(*this) {}

    void present(AlertSpec alert, Completion completion);
    bool isShowing() const noexcept { return scrim_ != nullptr; }
    /// Whether a sheet is shown or about to be.
    bool isBusy() const noexcept { return isShowing() || !requests_.empty(); }

    /// Shows a panel until `endPanel`; nothing while another sheet is there.
    void beginPanel(const SheetSpec& panel);
    void endPanel();
    void refreshSizes() { renderer_.refreshSizes(); }

private:
    struct Request {
        AlertSpec alert;
        Completion completion;
    };
    void tintChanged(const view::Color&) override {}
    void nativeMounted(GtkWidget*) override {}
    bool showsDesktop() const override { return false; }

    void showNext();
    void showCard(GtkWidget* card);
    void removeCard();
    void addPanelKeys(GtkWidget* card, const view::ViewRef& content);
    GtkWidget* makeCard();
    GtkWidget* addButtons(GtkWidget* card);
    void addKeys(GtkWidget* card, GtkWidget* first, GtkWidget* last);
    void choose(size_t button);
    void setRestFocusable(bool focusable);

    GtkWindow* window_;
    GtkOverlay* body_;
    std::deque<Request> requests_;     // the first one is shown
    GtkWidget* scrim_ = nullptr;       // owned by the overlay
    std::vector<GtkWidget*> silenced_; // children of the overlay that could have the focus before
    GObjectWeak<GtkWidget> focusBefore_;
    LoopTimer answering_;
    ViewRenderer renderer_; // of a panel
    bool isPanel_ = false;  // what is shown is a panel
};

} // namespace quillmere::platform::gtk
