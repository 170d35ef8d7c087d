#include "helpers/web-process/MediaSource.h"

#include "helpers/web-process/MediaFile.h"
#include "platform/gtk/reads/ReadProtocol.h"

#include <array>
#include <gst/base/gstbasesrc.h>
#include <span>

namespace quillmere::platform::gtk {

namespace {

constexpr guint blockSize = 128 * 1024;

struct MediaSource {
    GstBaseSrc parent;
    std::shared_ptr<MediaFile>* file;
};
struct MediaSourceClass {
    GstBaseSrcClass parent;
};

gpointer parentClass = nullptr;

MediaFile& fileOf(gpointer element) {
    return **static_cast<MediaSource*>(element)->file;
}

void initSource(GTypeInstance* source, gpointer) {
    static_cast<MediaSource*>(static_cast<gpointer>(source))->file =
        new std::shared_ptr<MediaFile>(std::make_shared<MediaFile>());
    gst_base_src_set_format(GST_BASE_SRC(source), GST_FORMAT_BYTES);
    gst_base_src_set_blocksize(GST_BASE_SRC(source), blockSize);
}

void finalize(GObject* object) {
    delete static_cast<MediaSource*>(static_cast<gpointer>(object))->file;
    G_OBJECT_CLASS(parentClass)->finalize(object);
}

GstStateChangeReturn changeState(GstElement* element, GstStateChange change) {
    const auto result = GST_ELEMENT_CLASS(parentClass)->change_state(element, change);
    if (change == GST_STATE_CHANGE_READY_TO_NULL)
        fileOf(element).forget();
    return result;
}

gboolean start(GstBaseSrc* source) {
    return fileOf(source).start();
}

gboolean stop(GstBaseSrc* source) {
    fileOf(source).stop();
    return TRUE;
}

gboolean unlock(GstBaseSrc* source) {
    fileOf(source).setFlow(MediaFile::Flow::flushing);
    return TRUE;
}

gboolean unlockStop(GstBaseSrc* source) {
    fileOf(source).setFlow(MediaFile::Flow::running);
    return TRUE;
}

gboolean isSeekable(GstBaseSrc*) {
    return TRUE;
}

// Called with locks of the base class held, so it gives only what is known.
gboolean getSize(GstBaseSrc* source, guint64* size) {
    const auto known = fileOf(source).sizeNow();
    if (known)
        *size = *known;
    return known.has_value();
}

void report(GstBaseSrc* source, MediaFile::Outcome outcome) {
    if (outcome == MediaFile::Outcome::refused && fileOf(source).takeRefusal())
        GST_ELEMENT_ERROR(source, RESOURCE, NOT_FOUND, ("The file is not available."), (nullptr));
    if (outcome == MediaFile::Outcome::failed)
        GST_ELEMENT_ERROR(source, RESOURCE, READ, ("The file could not be read."), (nullptr));
}

// Demuxers ask for the duration first and take any answer for one in time, so only bytes may be answered here.
gboolean answerDuration(GstBaseSrc* source, GstQuery* query) {
    GstFormat format = GST_FORMAT_UNDEFINED;
    gst_query_parse_duration(query, &format, nullptr);
    if (format != GST_FORMAT_BYTES)
        return FALSE;
    const auto outcome = fileOf(source).await();
    report(source, outcome);
    const auto size = outcome == MediaFile::Outcome::ready ? fileOf(source).sizeNow() : std::nullopt;
    if (size)
        gst_query_set_duration(query, format, static_cast<gint64>(*size));
    return size.has_value();
}

gboolean answer(GstBaseSrc* source, GstQuery* query) {
    if (GST_QUERY_TYPE(query) == GST_QUERY_DURATION)
        return answerDuration(source, query);
    return GST_BASE_SRC_CLASS(parentClass)->query(source, query);
}

GstFlowReturn fill(GstBaseSrc* source, guint64 offset, guint count, GstBuffer* buffer) {
    GstMapInfo map{};
    if (!gst_buffer_map(buffer, &map, GST_MAP_WRITE))
        return GST_FLOW_ERROR;
    const auto result = fileOf(source).read(offset, std::as_writable_bytes(std::span(map.data, count)));
    gst_buffer_unmap(buffer, &map);
    report(source, result.outcome);
    switch (result.outcome) {
    case MediaFile::Outcome::ready:
        break;
    case MediaFile::Outcome::interrupted:
        return GST_FLOW_FLUSHING;
    case MediaFile::Outcome::refused:
    case MediaFile::Outcome::failed:
        return GST_FLOW_ERROR;
    }
    if (result.count == 0)
        return GST_FLOW_EOS;
    gst_buffer_set_size(buffer, static_cast<gssize>(result.count));
    GST_BUFFER_OFFSET(buffer) = offset;
    GST_BUFFER_OFFSET_END(buffer) = offset + result.count;
    return GST_FLOW_OK;
}

void initClass(gpointer type, gpointer) {
    parentClass = g_type_class_peek_parent(type);
    static GstStaticPadTemplate output =
        GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS_ANY);
    G_OBJECT_CLASS(type)->finalize = finalize;
    auto* element = GST_ELEMENT_CLASS(type);
    element->change_state = changeState;
    gst_element_class_add_static_pad_template(element, &output);
    gst_element_class_set_static_metadata(element, "Granted file", "Source/File",
                                          "Reads a file that was granted to the page", "Quillmere");
    auto* base = GST_BASE_SRC_CLASS(type);
    base->start = start;
    base->stop = stop;
    base->unlock = unlock;
    base->unlock_stop = unlockStop;
    base->get_size = getSize;
    base->is_seekable = isSeekable;
    base->query = answer;
    base->fill = fill;
}

const gchar* const* protocols(GType) {
    static constexpr std::array<const gchar*, 2> list{reads::scheme, nullptr};
    return list.data();
}

gchar* getUri(GstURIHandler* handler) {
    const auto address = fileOf(handler).address();
    return address ? g_strdup(address->c_str()) : nullptr;
}

gboolean setUri(GstURIHandler* handler, const gchar* address, GError** error) {
    if (GST_STATE(handler) > GST_STATE_READY) {
        g_set_error_literal(error, GST_URI_ERROR, GST_URI_ERROR_BAD_STATE, "The source is in use.");
        return FALSE;
    }
    fileOf(handler).setAddress(address ? std::optional<std::string>(address) : std::nullopt);
    return TRUE;
}

void initUriHandler(gpointer interface, gpointer) {
    auto* handler = static_cast<GstURIHandlerInterface*>(interface);
    handler->get_type = [](GType) { return GST_URI_SRC; };
    handler->get_protocols = protocols;
    handler->get_uri = getUri;
    handler->set_uri = setUri;
}

GType sourceType() {
    static const GType type = [] {
        const GType made =
            g_type_register_static_simple(GST_TYPE_BASE_SRC, "QuillmereMediaSource", sizeof(MediaSourceClass),
                                          initClass, sizeof(MediaSource), initSource, G_TYPE_FLAG_FINAL);
        constexpr GInterfaceInfo handler{initUriHandler, nullptr, nullptr};
        g_type_add_interface_static(made, GST_TYPE_URI_HANDLER, &handler);
        return made;
    }();
    return type;
}

} // namespace

bool registerMediaSource() {
    return gst_init_check(nullptr, nullptr, nullptr) &&
           gst_element_register(nullptr, "quillmeresrc", GST_RANK_PRIMARY, sourceType());
}

} // namespace quillmere::platform::gtk
