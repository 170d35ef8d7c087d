#include "platform/gtk/desktop/ContentBytes.h"

#include "platform/gtk/glib/Signals.h"

namespace quillmere::platform::gtk {

namespace {

struct FormatsUnref {
    void operator()(GdkContentFormats* formats) const noexcept { gdk_content_formats_unref(formats); }
};
using Formats = std::unique_ptr<GdkContentFormats, FormatsUnref>;

class Value {
public:
    explicit Value(GType type) { g_value_init(&value_, type); }
    ~Value() { g_value_unset(&value_); }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    GValue* get() { return &value_; }

private:
    GValue value_ = G_VALUE_INIT;
};

struct Reading {
    GObjectRef<GOutputStream> stream;
    std::function<void(std::optional<std::string>)> done;
    gboolean (*finish)(GObject*, GAsyncResult*, GError**);
};

void finished(GObject* source, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Reading> reading(static_cast<Reading*>(data));
    guarded([&] {
        if (!reading->finish(source, result, nullptr))
            return reading->done(std::nullopt);
        auto* stream = G_MEMORY_OUTPUT_STREAM(reading->stream.get());
        const auto* bytes = static_cast<const char*>(g_memory_output_stream_get_data(stream));
        const size_t size = g_memory_output_stream_get_data_size(stream);
        reading->done(size > 0 ? std::string(bytes, size) : std::string());
    });
}

} // namespace

void readContent(GdkContentProvider* content, const char* mimeType,
                 std::function<void(std::optional<std::string>)> done) {
    const char* type = gdk_intern_mime_type(mimeType);
    if (!type)
        return done(std::nullopt);
    auto reading = std::make_unique<Reading>();
    reading->stream = GObjectRef<GOutputStream>::adopt(g_memory_output_stream_new_resizable());
    auto* stream = reading->stream.get();
    const Formats offered(gdk_content_provider_ref_formats(content));
    if (gdk_content_formats_contain_mime_type(offered.get(), type)) {
        reading->done = std::move(done);
        reading->finish = [](GObject* source, GAsyncResult* result, GError** error) {
            return gdk_content_provider_write_mime_type_finish(GDK_CONTENT_PROVIDER(source), result, error);
        };
        gdk_content_provider_write_mime_type_async(content, type, stream, G_PRIORITY_DEFAULT, nullptr, finished,
                                                   reading.release());
        return;
    }
    const Formats wanted(gdk_content_formats_union_serialize_gtypes(gdk_content_formats_new(&type, 1)));
    const GType valueType = gdk_content_formats_match_gtype(offered.get(), wanted.get());
    if (valueType == G_TYPE_INVALID)
        return done(std::nullopt);
    Value value(valueType);
    if (!gdk_content_provider_get_value(content, value.get(), nullptr))
        return done(std::nullopt);
    reading->done = std::move(done);
    reading->finish = [](GObject*, GAsyncResult* result, GError** error) {
        return gdk_content_serialize_finish(result, error);
    };
    gdk_content_serialize_async(stream, type, value.get(), G_PRIORITY_DEFAULT, nullptr, finished, reading.release());
}

} // namespace quillmere::platform::gtk
