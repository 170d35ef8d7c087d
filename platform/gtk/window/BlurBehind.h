#pragma once

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

/// Has the desktop blur what is behind a window, where it can. Where it cannot, a translucent window would leave other
/// windows' text legible through its own. Main thread only.
class BlurBehind {
public:
    explicit BlurBehind(GtkWindow* window) : window_(window) {}

    /// Whether transparent pixels of the window as it stands now show the desktop, blurred.
    bool isOffered() const;
    /// Asks for the blur behind this part of the window, the content without its shadow, or for none.
    void ask(GtkWidget* content) const;

private:
    GtkWindow* window_;
};

/// Whether the window fills its place from edge to edge: then it has no more than its own content to show.
bool fillsItsPlace(GdkToplevelState state);

} // namespace quillmere::platform::gtk
