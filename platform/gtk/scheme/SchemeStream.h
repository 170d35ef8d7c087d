#pragma once

#include "platform/Scheme.h"
#include "platform/gtk/glib/GObjectRef.h"
#include "platform/gtk/glib/Signals.h"
#include "platform/gtk/scheme/SchemeFlow.h"

#include <functional>
#include <optional>

namespace quillmere::platform::gtk {

/// The body of one answer: a stream that the web view reads a few kilobytes at a time, fed one chunk at a time. The web
/// view sends the headers when its first read returns, so the stream is handed over at once, with nothing in it, and
/// its first read stays pending until there is something to say. Main thread only.
class SchemeStream : public std::enable_shared_from_this<SchemeStream> {
public:
    static std::shared_ptr<SchemeStream> make(std::shared_ptr<SchemeFlow> flow);

    /// A new stream object for the web view. It keeps this body alive.
    GObjectRef<GInputStream> makeInputStream();

    /// Runs once, on the main thread, when the web view no longer wants the answer.
    void onStop(std::function<void()> action) { onStop_ = std::move(action); }

    void push(Chunk chunk);
    void finish() { end(End::finished); }
    void fail(const std::string& message);
    /// Ends the answer as if the web view had stopped it.
    void stop();

    /// Runs the action once, as soon as the last chunk was taken or the answer has ended.
    void whenReady(std::function<void()> action);

    // What the stream object forwards.
    struct Read {
        GInputStream* stream = nullptr; // alive until the callback has run
        std::byte* buffer = nullptr;
        size_t count = 0;
        GAsyncReadyCallback callback = nullptr;
        gpointer data = nullptr;
    };
    void beginRead(const Read& read, GCancellable* cancellable);
    gssize endRead(GError** error);

private:
    enum class End { none, finished, failed, stopped };

    explicit SchemeStream(std::shared_ptr<SchemeFlow> flow) : flow_(std::move(flow)) {}
    bool canRead();
    void end(End how);
    void pump();
    void pumpSoon();
    gssize take(const Read& read);
    void tellReady();

    const std::shared_ptr<SchemeFlow> flow_;
    std::function<void()> onStop_;
    SignalConnection cancelled_;
    bool watched_ = false;
    std::optional<Read> read_;
    gssize readResult_ = 0;
    Chunk chunk_;
    size_t taken_ = 0;
    End end_ = End::none;
    std::string message_;
    bool pumping_ = false;
    bool waiting_ = false; // for the flow to open
    std::function<void()> onReady_;
};

} // namespace quillmere::platform::gtk
