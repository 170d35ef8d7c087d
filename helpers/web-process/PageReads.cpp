#include "helpers/web-process/PageReads.h"

#include "helpers/web-process/ShellLink.h"
#include "platform/gtk/glib/GObjectRef.h"
#include "platform/gtk/reads/ReadProtocol.h"

#include <algorithm>
#include <cerrno>
#include <glib-unix.h>
#include <jsc/jsc.h>
#include <memory>
#include <unistd.h>

namespace quillmere::platform::gtk {

namespace {

constexpr size_t mostPerTurn = size_t{1024} * 1024; // of the main thread
constexpr double exactUpTo = 9007199254740992.0;    // whole numbers of the page
constexpr double refused = -1;

/// One range on its way into a buffer of the page. The engine takes no memory of ours for a buffer, so the page brings
/// one; and the engine can never move or hand on a buffer whose address was asked for, so the page keeps it.
class Arrival {
public:
    Arrival(JSCValue* buffer, JSCValue* done)
        : buffer_(GObjectRef<JSCValue>::share(buffer)), done_(GObjectRef<JSCValue>::share(done)) {}

    /// False when that many bytes do not fit.
    bool reserve(double length) {
        gsize size = 0;
        if (jsc_value_is_array_buffer(buffer_.get()))
            memory_ = static_cast<char*>(jsc_value_array_buffer_get_data(buffer_.get(), &size));
        if (!memory_ || !(length >= 0 && length <= static_cast<double>(size)))
            return false;
        wanted_ = static_cast<size_t>(length);
        return true;
    }
    size_t wanted() const noexcept { return wanted_; }

    /// Takes the bytes as they come; the arrival ends with the last one.
    static void begin(std::shared_ptr<Arrival> arrival, FileDescriptor pipe) {
        if (!pipe)
            return arrival->finish(refused);
        const int descriptor = pipe.get();
        arrival->pipe_ = std::move(pipe);
        using Self = std::shared_ptr<Arrival>;
        const auto readable = +[](int, GIOCondition, gpointer data) -> gboolean {
            return (*static_cast<Self*>(data))->take() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
        };
        const auto forget = +[](gpointer data) { delete static_cast<Self*>(data); };
        g_unix_fd_add_full(G_PRIORITY_DEFAULT, descriptor, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR),
                           readable, new Self(std::move(arrival)), forget);
    }

    void finish(double count) const {
        const auto nothing =
            GObjectRef<JSCValue>::adopt(jsc_value_function_call(done_.get(), G_TYPE_DOUBLE, count, G_TYPE_NONE));
    }

private:
    /// Whether there is more to come.
    bool take() {
        const size_t stop = std::min(wanted_, got_ + mostPerTurn);
        while (got_ < stop) {
            const ssize_t count = ::read(pipe_.get(), memory_ + got_, stop - got_);
            if (count > 0) {
                got_ += static_cast<size_t>(count);
                continue;
            }
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0 && errno == EAGAIN)
                return true;
            finish(count == 0 ? static_cast<double>(got_) : refused); // the page has taken its memory away
            return false;
        }
        if (got_ < wanted_)
            return true;
        finish(static_cast<double>(got_));
        return false;
    }

    const GObjectRef<JSCValue> buffer_; // keeps the memory
    const GObjectRef<JSCValue> done_;
    FileDescriptor pipe_;
    char* memory_ = nullptr;
    size_t wanted_ = 0;
    size_t got_ = 0;
};

void read(const char* url, double offset, double length, JSCValue* buffer, JSCValue* done, gpointer) {
    if (!jsc_value_is_function(done))
        return;
    auto arrival = std::make_shared<Arrival>(buffer, done);
    if (!url || !(offset >= 0 && offset < exactUpTo) || !arrival->reserve(length))
        return arrival->finish(refused);
    const uint64_t wanted = arrival->wanted();
    shell::askForRange(url, static_cast<uint64_t>(offset), wanted,
                       [arrival](FileDescriptor pipe) { Arrival::begin(arrival, std::move(pipe)); });
}

void offer(WebKitScriptWorld* world, WebKitWebPage*, WebKitFrame* frame, gpointer) {
    const char* url = webkit_frame_get_uri(frame);
    if (!webkit_frame_is_main_frame(frame) || !url || !g_str_has_prefix(url, reads::pagePrefix))
        return;
    const auto context = GObjectRef<JSCContext>::adopt(webkit_frame_get_js_context_for_script_world(frame, world));
    const auto function = GObjectRef<JSCValue>::adopt(
        jsc_value_new_function(context.get(), reads::rangeFunction, G_CALLBACK(read), nullptr, nullptr, G_TYPE_NONE, 5,
                               G_TYPE_STRING, G_TYPE_DOUBLE, G_TYPE_DOUBLE, JSC_TYPE_VALUE, JSC_TYPE_VALUE));
    jsc_context_set_value(context.get(), reads::rangeFunction, function.get());
}

} // namespace

void offerPageReads() {
    g_signal_connect(webkit_script_world_get_default(), "window-object-cleared", G_CALLBACK(offer), nullptr);
}

} // namespace quillmere::platform::gtk
