#pragma once

#include "platform/gtk/glib/Signals.h"

#include <gtk/gtk.h>

#include <memory>
#include <vector>

// The event of the display's protocol, whose header has macros for plain words.
union _XEvent; // NOLINT(bugprone-reserved-identifier)

namespace quillmere::platform::gtk {

/// Hands what this program has put into the clipboard or selected over to the other programs of an X11 display, in
/// place of the toolkit. The toolkit cannot hand over more than some 256 KiB: larger data goes in pieces (the INCR
/// transfer of the ICCCM), and waiting for the second piece it stops the main loop for good. The ownership of the
/// selections stays with the toolkit. Main thread only; needs the main loop to answer.
class X11Clipboard {
public:
    /// On a connection of its own to this display; nothing when it is none of X11's.
    static std::unique_ptr<X11Clipboard> open(GdkDisplay* display);
    ~X11Clipboard();
    X11Clipboard(const X11Clipboard&) = delete;
    X11Clipboard& operator=(const X11Clipboard&) = delete;

private:
    class Handover;
    X11Clipboard(GdkDisplay* display, std::shared_ptr<Handover> handover);
    void look(const ::_XEvent& event);

    GdkDisplay* display_;
    std::shared_ptr<Handover> handover_;
    std::vector<gulong> toolkitHandlers_; // of the display's signal
    gulong hook_ = 0;
    bool taken_ = false; // the event that goes round is ours
    SignalConnection requests_;
};

} // namespace quillmere::platform::gtk
