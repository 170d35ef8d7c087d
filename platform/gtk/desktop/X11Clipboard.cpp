#include "platform/gtk/desktop/X11Clipboard.h"

#include "platform/gtk/desktop/ContentBytes.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <deque>
#include <gdk/x11/gdkx.h>
#include <glib-unix.h>
#include <optional>
#include <utility>

namespace quillmere::platform::gtk {

namespace {

constexpr size_t pieceSize = size_t{64} * 1024; // below any server's largest request
constexpr size_t mostTransfers = 16;            // the oldest is given up for another
constexpr long mostConversions = 256;           // of one request for several
constexpr const char* plainText = "text/plain;charset=utf-8";
using Bytes = std::shared_ptr<const std::string>;

struct DisplayClose {
    void operator()(Display* display) const noexcept { XCloseDisplay(display); }
};
struct XDelete {
    void operator()(void* memory) const noexcept { XFree(memory); }
};

/// Data on their way in pieces; the receiver asks for the next one by deleting the property.
struct Transfer {
    ::Window receiver{};
    Atom property{};
    Atom type{};
    Bytes data;
    size_t offset = 0;
};

/// One request under way; for several targets at once it has several conversions.
struct Request {
    struct Conversion {
        Atom target{};
        Atom property{};
    };
    XSelectionRequestEvent asked{};
    std::vector<Conversion> conversions;
    size_t open = 0;
};

/// Text in the one encoding that old programs know; nothing when it does not fit and `fallback` is null.
std::optional<std::string> latin1(const std::string& text, const char* fallback) {
    gsize written = 0;
    const auto size = static_cast<gssize>(text.size());
    const GlibText converted(
        fallback
            ? g_convert_with_fallback(text.data(), size, "ISO-8859-1", "UTF-8", fallback, nullptr, &written, nullptr)
            : g_convert(text.data(), size, "ISO-8859-1", "UTF-8", nullptr, &written, nullptr));
    return converted ? std::optional(std::string(converted.get(), written)) : std::nullopt;
}

} // namespace

class X11Clipboard::Handover : public std::enable_shared_from_this<Handover> {
public:
    explicit Handover(Display* display) : display_(display) {
        const auto ready = +[](int, GIOCondition, gpointer self) -> gboolean {
            guarded([&] { static_cast<Handover*>(self)->takeEvents(); });
            return G_SOURCE_CONTINUE;
        };
        source_ = g_unix_fd_add(ConnectionNumber(display), G_IO_IN, ready, this);
    }
    ~Handover() { g_source_remove(source_); }
    Handover(const Handover&) = delete;
    Handover& operator=(const Handover&) = delete;

    /// Whether this event of the toolkit's connection is a request for data, and so ours.
    bool takes(GdkDisplay* display, const XEvent& event) {
        if (event.type != SelectionRequest)
            return false;
        const auto& asked = event.xselectionrequest;
        const Atom target = asked.target;
        GdkClipboard* const selection = asked.selection == clipboard_   ? gdk_display_get_clipboard(display)
                                        : asked.selection == XA_PRIMARY ? gdk_display_get_primary_clipboard(display)
                                                                        : nullptr;
        GdkContentProvider* const content = selection ? gdk_clipboard_get_content(selection) : nullptr;
        if (!content || target == targets_ || target == timestamp_ || target == saveTargets_ || target == delete_)
            return false;
        auto request = std::make_shared<Request>();
        request->asked = asked;
        if (asked.property == None)
            request->asked.property = target; // as old programs expect
        if (target == multiple_)
            request->conversions = severalOf(request->asked);
        else
            request->conversions.push_back({.target = target, .property = request->asked.property});
        begin(request, content);
        return true;
    }

private:
    Atom atom(const char* name) const { return XInternAtom(display_.get(), name, False); }

    std::vector<Request::Conversion> severalOf(const XSelectionRequestEvent& asked) {
        Atom type{};
        int format = 0;
        unsigned long count = 0, rest = 0;
        unsigned char* data = nullptr;
        if (XGetWindowProperty(display_.get(), asked.requestor, asked.property, 0, 2 * mostConversions, False,
                               AnyPropertyType, &type, &format, &count, &rest, &data) != Success)
            return {};
        const std::unique_ptr<unsigned char, XDelete> owned(data);
        std::vector<Request::Conversion> several;
        const auto* atoms = reinterpret_cast<const Atom*>(data);
        for (unsigned long at = 0; format == 32 && at + 1 < count; at += 2)
            several.push_back({.target = atoms[at], .property = atoms[at + 1]});
        return several;
    }

    void begin(const std::shared_ptr<Request>& request, GdkContentProvider* content) {
        request->open = request->conversions.size();
        if (request->open == 0)
            return answer(*request);
        const auto count = request->conversions.size();
        for (size_t index = 0; index < count; ++index)
            readContent(content, mimeTypeOf(request->conversions[index].target).c_str(),
                        [weak = weak_from_this(), request, index](std::optional<std::string> data) {
                            if (const auto self = weak.lock())
                                self->converted(*request, index, std::move(data));
                        });
    }

    /// A name that is no MIME type for a target that is none of ours.
    std::string mimeTypeOf(Atom target) const {
        if (target == utf8_ || target == text_ || target == XA_STRING || target == compound_)
            return plainText;
        const std::unique_ptr<char, XDelete> name(XGetAtomName(display_.get(), target));
        return name ? name.get() : "";
    }

    void converted(Request& request, size_t index, std::optional<std::string> data) {
        auto& conversion = request.conversions[index];
        Atom type = conversion.target == text_ ? utf8_ : conversion.target;
        if (data && (type == XA_STRING || type == compound_))
            data = latin1(*data, type == XA_STRING ? "?" : nullptr);
        if (data)
            put(request.asked.requestor, conversion.property, type,
                std::make_shared<const std::string>(std::move(*data)));
        else
            conversion.property = None;
        if (--request.open == 0)
            answer(request);
    }

    void answer(const Request& request) {
        const auto& asked = request.asked;
        bool given = !request.conversions.empty();
        if (asked.target == multiple_) {
            std::vector<Atom> pairs;
            for (const auto& conversion : request.conversions)
                pairs.insert(pairs.end(), {conversion.target, conversion.property});
            change(asked.requestor, asked.property, pair_, 32, pairs.data(), pairs.size());
        } else {
            given = given && request.conversions.front().property != None;
        }
        XEvent event{};
        auto& notice = event.xselection;
        notice.type = SelectionNotify;
        notice.requestor = asked.requestor;
        notice.selection = asked.selection;
        notice.target = asked.target;
        notice.time = asked.time;
        notice.property = given ? asked.property : None;
        XSendEvent(display_.get(), asked.requestor, False, NoEventMask, &event);
        takeEvents(); // those that the calls above have read already
    }

    void put(::Window receiver, Atom property, Atom type, Bytes data) {
        if (data->size() <= pieceSize)
            return change(receiver, property, type, 8, data->data(), data->size());
        std::erase_if(transfers_,
                      [&](const auto& old) { return old.receiver == receiver && old.property == property; });
        if (transfers_.size() >= mostTransfers)
            transfers_.pop_front();
        XSelectInput(display_.get(), receiver, PropertyChangeMask);
        const long size = static_cast<long>(data->size());
        change(receiver, property, incremental_, 32, &size, 1);
        transfers_.push_back({.receiver = receiver, .property = property, .type = type, .data = std::move(data)});
    }

    void takeEvents() {
        while (XPending(display_.get()) > 0) {
            XEvent event{};
            XNextEvent(display_.get(), &event);
            if (event.type == PropertyNotify && event.xproperty.state == PropertyDelete)
                sendPiece(event.xproperty.window, event.xproperty.atom);
        }
        XFlush(display_.get());
    }

    void sendPiece(::Window receiver, Atom property) {
        const auto isMeant = [&](const auto& each) { return each.receiver == receiver && each.property == property; };
        const auto transfer = std::ranges::find_if(transfers_, isMeant);
        if (transfer == transfers_.end())
            return;
        const size_t size = std::min(pieceSize, transfer->data->size() - transfer->offset);
        change(receiver, property, transfer->type, 8, transfer->data->data() + transfer->offset, size);
        transfer->offset += size;
        if (size > 0)
            return;
        transfers_.erase(transfer); // the empty piece is the end
        if (std::ranges::none_of(transfers_, [&](const auto& each) { return each.receiver == receiver; }))
            XSelectInput(display_.get(), receiver, NoEventMask);
    }

    /// A receiver that is gone makes an error, which the toolkit's handler drops for connections that are not its own.
    void change(::Window receiver, Atom property, Atom type, int format, const void* data, size_t count) {
        XChangeProperty(display_.get(), receiver, property, type, format, PropModeReplace,
                        static_cast<const unsigned char*>(data), static_cast<int>(count));
    }

    std::unique_ptr<Display, DisplayClose> display_;
    guint source_ = 0;
    const Atom clipboard_ = atom("CLIPBOARD"), targets_ = atom("TARGETS"), timestamp_ = atom("TIMESTAMP"),
               saveTargets_ = atom("SAVE_TARGETS"), delete_ = atom("DELETE"), multiple_ = atom("MULTIPLE"),
               pair_ = atom("ATOM_PAIR"), incremental_ = atom("INCR"), utf8_ = atom("UTF8_STRING"),
               text_ = atom("TEXT"), compound_ = atom("COMPOUND_TEXT");
    std::deque<Transfer> transfers_;
};

std::unique_ptr<X11Clipboard> X11Clipboard::open(GdkDisplay* display) {
    if (!GDK_IS_X11_DISPLAY(display))
        return nullptr;
    Display* const opened = XOpenDisplay(gdk_display_get_name(display));
    if (!opened)
        return nullptr;
    return std::unique_ptr<X11Clipboard>(new X11Clipboard(display, std::make_shared<Handover>(opened)));
}

// The toolkit's own handlers are older than any of ours. A hook comes before them, but cannot end the round; so it sets
// them aside for an event that is ours.
X11Clipboard::X11Clipboard(GdkDisplay* display, std::shared_ptr<Handover> handover)
    : display_(display), handover_(std::move(handover)),
      requests_(
          connect(display, "xevent", [this](GdkX11Display*, gpointer) -> gboolean { return taken_ ? TRUE : FALSE; })) {
    for (GdkClipboard* const selection :
         {gdk_display_get_clipboard(display), gdk_display_get_primary_clipboard(display)})
        if (const gulong handler =
                g_signal_handler_find(display, G_SIGNAL_MATCH_DATA, 0, 0, nullptr, nullptr, selection))
            toolkitHandlers_.push_back(handler);
    const auto hook = +[](GSignalInvocationHint*, guint, const GValue* values, gpointer self) -> gboolean {
        guarded([&] {
            auto& clipboard = *static_cast<X11Clipboard*>(self);
            if (g_value_get_object(values) == clipboard.display_)
                clipboard.look(*static_cast<const XEvent*>(g_value_get_pointer(values + 1)));
        });
        return TRUE;
    };
    hook_ = g_signal_add_emission_hook(g_signal_lookup("xevent", GDK_TYPE_X11_DISPLAY), 0, hook, this, nullptr);
}

X11Clipboard::~X11Clipboard() {
    g_signal_remove_emission_hook(g_signal_lookup("xevent", GDK_TYPE_X11_DISPLAY), hook_);
}

void X11Clipboard::look(const ::_XEvent& event) {
    const bool takes = handover_->takes(display_, event);
    if (std::exchange(taken_, takes) == takes)
        return;
    for (const gulong handler : toolkitHandlers_)
        takes ? g_signal_handler_block(display_, handler) : g_signal_handler_unblock(display_, handler);
}

} // namespace quillmere::platform::gtk
