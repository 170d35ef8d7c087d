#pragma once

#include <memory>
#include <string>

namespace quillmere::platform::gtk {

/// Owns the clipboard of an X11 display with one text of any size. The toolkit itself cannot hand over more than some
/// 256 KiB there: larger data goes in pieces (the INCR transfer of the ICCCM), which it begins and never continues.
/// Main thread only; needs the main loop to answer.
class X11Clipboard {
public:
    /// On a connection of its own to the display with this name; nothing when there is no such display.
    static std::unique_ptr<X11Clipboard> open(const char* display);
    ~X11Clipboard();
    X11Clipboard(const X11Clipboard&) = delete;
    X11Clipboard& operator=(const X11Clipboard&) = delete;

    /// Takes the clipboard with this UTF-8 text; whether it is ours now. It stays until another program takes it.
    bool setText(std::string text);

private:
    class Connection;
    explicit X11Clipboard(std::unique_ptr<Connection> connection);
    std::unique_ptr<Connection> connection_;
};

} // namespace quillmere::platform::gtk
