#pragma once

#include "platform/gtk/glib/GObjectRef.h"
#include "platform/gtk/glib/Signals.h"

#include <webkit/webkit.h>

#include <functional>
#include <vector>

namespace quillmere::platform::gtk {

/// How far the answers of a web view may run ahead of its page. The engine takes whatever a stream gives and queues it
/// in this process, without bound, while the page is busy. So the page is asked now and then to confirm what it got:
/// messages to it keep their order with the data. Main thread only.
class SchemeFlow : public std::enable_shared_from_this<SchemeFlow> {
public:
    /// Bytes that may be on their way.
    static constexpr uint64_t window = uint64_t{8} * 1024 * 1024;

    void setPage(WebKitWebView* page) { page_.set(page); }

    bool isOpen() const noexcept { return sent_ - confirmed_ < window; }
    void sent(size_t count);
    /// Runs the action, once, when the flow is open again.
    void whenOpen(std::function<void()> action);
    /// The page is gone, and all that was on its way with it.
    void reset() { confirm(sent_); }

private:
    void ask();
    void confirm(uint64_t count);

    GObjectWeak<WebKitWebView> page_;
    uint64_t sent_ = 0;
    uint64_t asked_ = 0;
    uint64_t confirmed_ = 0;
    std::vector<std::function<void()>> waiting_;
    LoopTimer patience_;
};

} // namespace quillmere::platform::gtk
