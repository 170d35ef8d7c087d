#include "platform/gtk/scheme/SchemeStream.h"

#include <algorithm>
#include <cstring>

namespace quillmere::platform::gtk {

namespace {

// The web view sends the page one message per read. A message of up to 4 KiB, headers included, goes through the socket
// as it is; for a larger one the engine makes, maps and unmaps shared memory, which costs several times the copy.
constexpr size_t readLimit = 4096 - 128;

// The stream object. A stream has one read under way at most, so it also stands for the result of that read: a chunk of
// 256 KiB is taken in dozens of reads, and this way none of them allocates.
struct StreamObject {
    GInputStream parent;
    std::shared_ptr<SchemeStream>* body;
};
struct StreamObjectClass {
    GInputStreamClass parent;
};

gpointer parentClass = nullptr;

StreamObject* streamOf(gpointer object) {
    return static_cast<StreamObject*>(object);
}

void initStream(GTypeInstance* object, gpointer) {
    streamOf(object)->body = new std::shared_ptr<SchemeStream>();
}

void finalize(GObject* object) {
    guarded([&] { (*streamOf(object)->body)->stop(); }); // nobody can read it any more
    delete streamOf(object)->body;
    G_OBJECT_CLASS(parentClass)->finalize(object);
}

gssize readNow(GInputStream*, void*, gsize, GCancellable*, GError** error) {
    g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_NOT_SUPPORTED, "This stream is read asynchronously.");
    return -1;
}

void readAsync(GInputStream* stream, void* buffer, gsize count, int, GCancellable* cancellable,
               GAsyncReadyCallback callback, gpointer data) {
    guarded([&] {
        (*streamOf(stream)->body)
            ->beginRead({.stream = stream,
                         .buffer = static_cast<std::byte*>(buffer),
                         .count = count,
                         .callback = callback,
                         .data = data},
                        cancellable);
    });
}

gssize readFinish(GInputStream* stream, GAsyncResult*, GError** error) {
    return (*streamOf(stream)->body)->endRead(error);
}

void initClass(gpointer type, gpointer) {
    parentClass = g_type_class_peek_parent(type);
    G_OBJECT_CLASS(type)->finalize = finalize;
    auto* stream = G_INPUT_STREAM_CLASS(type);
    stream->read_fn = readNow;
    stream->read_async = readAsync;
    stream->read_finish = readFinish;
}

void initResult(gpointer interface, gpointer) {
    auto* result = static_cast<GAsyncResultIface*>(interface);
    result->get_user_data = [](GAsyncResult*) -> gpointer { return nullptr; };
    result->get_source_object = [](GAsyncResult* self) { return G_OBJECT(g_object_ref(self)); };
}

GType streamType() {
    static const GType type = [] {
        const GType made =
            g_type_register_static_simple(G_TYPE_INPUT_STREAM, "QuillmereSchemeStream", sizeof(StreamObjectClass),
                                          initClass, sizeof(StreamObject), initStream, G_TYPE_FLAG_FINAL);
        constexpr GInterfaceInfo result{initResult, nullptr, nullptr};
        g_type_add_interface_static(made, G_TYPE_ASYNC_RESULT, &result);
        return made;
    }();
    return type;
}

} // namespace

std::shared_ptr<SchemeStream> SchemeStream::make(std::shared_ptr<SchemeFlow> flow) {
    return std::shared_ptr<SchemeStream>(new SchemeStream(std::move(flow)));
}

GObjectRef<GInputStream> SchemeStream::makeInputStream() {
    auto* object = static_cast<StreamObject*>(g_object_new(streamType(), nullptr));
    *object->body = shared_from_this();
    return GObjectRef<GInputStream>::adopt(G_INPUT_STREAM(object));
}

void SchemeStream::push(Chunk chunk) {
    if (end_ != End::none || chunk.size == 0)
        return;
    chunk_ = std::move(chunk);
    taken_ = 0;
    pump();
}

void SchemeStream::fail(const std::string& message) {
    if (end_ == End::none)
        message_ = message;
    end(End::failed);
}

void SchemeStream::end(End how) {
    if (end_ != End::none)
        return;
    end_ = how;
    pump();
}

void SchemeStream::stop() {
    const bool wasStopped = std::exchange(end_, End::stopped) == End::stopped;
    chunk_ = {};
    if (wasStopped)
        return;
    if (read_)
        pumpSoon();
    if (const auto action = std::exchange(onStop_, nullptr))
        action();
    tellReady();
}

void SchemeStream::whenReady(std::function<void()> action) {
    onReady_ = std::move(action);
    if (!chunk_.bytes)
        tellReady();
}

void SchemeStream::tellReady() {
    if (const auto action = std::exchange(onReady_, nullptr))
        action();
}

void SchemeStream::beginRead(const Read& read, GCancellable* cancellable) {
    read_ = read;
    if (cancellable && !std::exchange(watched_, true)) {
        if (g_cancellable_is_cancelled(cancellable))
            stop();
        cancelled_ = connect(cancellable, "cancelled", [weak = weak_from_this()](GCancellable*) {
            if (const auto self = weak.lock())
                self->stop();
        });
    }
    if (chunk_.bytes || end_ != End::none)
        pumpSoon();
}

gssize SchemeStream::endRead(GError** error) {
    if (readResult_ >= 0)
        return readResult_;
    if (end_ == End::failed)
        g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_FAILED, message_.c_str());
    else
        g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_CANCELLED, "The request was stopped.");
    return -1;
}

gssize SchemeStream::take(const Read& read) {
    if (!chunk_.bytes)
        return end_ == End::finished ? 0 : -1;
    const size_t count = std::min({read.count, readLimit, chunk_.size - taken_});
    std::memcpy(read.buffer, chunk_.bytes.get() + taken_, count);
    taken_ += count;
    flow_->sent(count);
    if (taken_ == chunk_.size) {
        chunk_ = {};
        tellReady();
    }
    return static_cast<gssize>(count);
}

bool SchemeStream::canRead() {
    if (!read_ || (!chunk_.bytes && end_ == End::none))
        return false;
    if (!chunk_.bytes || flow_->isOpen())
        return true;
    if (!std::exchange(waiting_, true)) {
        flow_->whenOpen([weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->waiting_ = false;
                self->pump();
            }
        });
    }
    return false;
}

// Completes one read after the other for as long as there is something to give: the web view asks for the next one from
// within the callback of the last, and a turn of the main loop for each would halve the throughput.
void SchemeStream::pump() {
    if (pumping_)
        return;
    const auto self = shared_from_this();
    pumping_ = true;
    while (canRead()) {
        const Read read = *std::exchange(read_, std::nullopt);
        const auto stream = GObjectRef<GInputStream>::share(read.stream);
        readResult_ = take(read);
        read.callback(G_OBJECT(stream.get()), G_ASYNC_RESULT(stream.get()), read.data);
    }
    pumping_ = false;
}

// A read is never completed before the call that began it has returned.
void SchemeStream::pumpSoon() {
    if (pumping_)
        return;
    const auto run = +[](gpointer data) -> gboolean {
        const auto& self = *static_cast<std::shared_ptr<SchemeStream>*>(data);
        guarded([&] { self->pump(); });
        return G_SOURCE_REMOVE;
    };
    const auto forget = +[](gpointer data) { delete static_cast<std::shared_ptr<SchemeStream>*>(data); };
    g_idle_add_full(G_PRIORITY_DEFAULT, run, new std::shared_ptr<SchemeStream>(shared_from_this()), forget);
}

} // namespace quillmere::platform::gtk
