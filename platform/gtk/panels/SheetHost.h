#pragma once

#include "platform/Dialogs.h"
#include "platform/gtk/glib/Signals.h"

#include <gtk/gtk.h>

#include <deque>

namespace quillmere::platform::gtk {

/// Shows alerts as sheets inside the window: a card over a scrim that takes the pointer and the keyboard from
/// everything else in the window. One at a time; a further one waits until the first is answered.
class SheetHost {
public:
    using Completion = std::function<void(size_t button)>;

    /// `body` is the window's topmost overlay.
    SheetHost(GtkWindow* window, GtkOverlay* body) : window_(window), body_(body) {}

    void present(AlertSpec alert, Completion completion);
    bool isShowing() const noexcept { return scrim_ != nullptr; }

private:
    struct Request {
        AlertSpec alert;
        Completion completion;
    };
    void showNext();
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
};

} // namespace quillmere::platform::gtk
