#include "platform/gtk/desktop/X11Clipboard.h"

#include "platform/gtk/glib/Signals.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <deque>
#include <glib-unix.h>
#include <vector>

namespace quillmere::platform::gtk {

namespace {

constexpr size_t pieceSize = size_t{64} * 1024; // below any server's largest request
constexpr size_t mostTransfers = 16;            // the oldest is given up for another
using Text = std::shared_ptr<const std::string>;

struct DisplayClose {
    void operator()(Display* display) const noexcept { XCloseDisplay(display); }
};

/// A text on its way in pieces; the receiver asks for the next one by deleting the property.
struct Transfer {
    ::Window receiver{};
    Atom property{};
    Atom type{};
    Text text;
    size_t offset = 0;
};

} // namespace

class X11Clipboard::Connection {
public:
    explicit Connection(Display* display)
        : display_(display), window_(XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 1, 1, 0, 0, 0)) {
        XSelectInput(display, window_, PropertyChangeMask);
        const auto ready = +[](int, GIOCondition, gpointer self) -> gboolean {
            guarded([&] { static_cast<Connection*>(self)->takeEvents(); });
            return G_SOURCE_CONTINUE;
        };
        source_ = g_unix_fd_add(ConnectionNumber(display), G_IO_IN, ready, this);
    }
    ~Connection() { g_source_remove(source_); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool own(std::string text) {
        text_ = std::make_shared<const std::string>(std::move(text));
        isAscii_ = std::ranges::all_of(*text_, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
        since_ = serverTime();
        XSetSelectionOwner(display_.get(), clipboard_, window_, since_);
        const bool ours = XGetSelectionOwner(display_.get(), clipboard_) == window_;
        if (!ours)
            text_.reset();
        takeEvents(); // those that the calls above have read already
        return ours;
    }

private:
    Atom atom(const char* name) const { return XInternAtom(display_.get(), name, False); }

    /// The server's clock, by which owners of a selection are compared.
    Time serverTime() {
        XChangeProperty(display_.get(), window_, timeProperty_, XA_INTEGER, 8, PropModeAppend, nullptr, 0);
        XEvent event{};
        XWindowEvent(display_.get(), window_, PropertyChangeMask, &event);
        return event.xproperty.time;
    }

    void takeEvents() {
        while (XPending(display_.get()) > 0) {
            XEvent event{};
            XNextEvent(display_.get(), &event);
            if (event.type == SelectionRequest)
                answer(event.xselectionrequest);
            else if (event.type == SelectionClear)
                text_.reset();
            else if (event.type == PropertyNotify && event.xproperty.state == PropertyDelete)
                sendPiece(event.xproperty.window, event.xproperty.atom);
        }
        XFlush(display_.get());
    }

    void answer(const XSelectionRequestEvent& request) {
        XEvent event{};
        auto& notice = event.xselection;
        notice.type = SelectionNotify;
        notice.requestor = request.requestor;
        notice.selection = request.selection;
        notice.target = request.target;
        notice.time = request.time;
        const Atom property = request.property != None ? request.property : request.target; // as old programs expect
        notice.property = text_ && put(request.requestor, property, request.target) ? property : None;
        XSendEvent(display_.get(), request.requestor, False, NoEventMask, &event);
    }

    bool put(::Window receiver, Atom property, Atom target) {
        if (target == targets_) {
            std::vector<Atom> offered{targets_, timestamp_, utf8_, plain_};
            if (isAscii_)
                offered.push_back(XA_STRING); // which is Latin-1
            change(receiver, property, XA_ATOM, 32, offered.data(), offered.size());
            return true;
        }
        if (target == timestamp_) {
            change(receiver, property, XA_INTEGER, 32, &since_, 1);
            return true;
        }
        if (target != utf8_ && target != plain_ && !(target == XA_STRING && isAscii_))
            return false;
        if (text_->size() <= pieceSize) {
            change(receiver, property, target, 8, text_->data(), text_->size());
            return true;
        }
        std::erase_if(transfers_,
                      [&](const auto& old) { return old.receiver == receiver && old.property == property; });
        if (transfers_.size() >= mostTransfers)
            transfers_.pop_front();
        XSelectInput(display_.get(), receiver, PropertyChangeMask);
        const long size = static_cast<long>(text_->size());
        change(receiver, property, incremental_, 32, &size, 1);
        transfers_.push_back({.receiver = receiver, .property = property, .type = target, .text = text_});
        return true;
    }

    void sendPiece(::Window receiver, Atom property) {
        const auto isMeant = [&](const auto& each) { return each.receiver == receiver && each.property == property; };
        const auto transfer = std::ranges::find_if(transfers_, isMeant);
        if (transfer == transfers_.end())
            return;
        const size_t size = std::min(pieceSize, transfer->text->size() - transfer->offset);
        change(receiver, property, transfer->type, 8, transfer->text->data() + transfer->offset, size);
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
    ::Window window_;
    guint source_ = 0;
    const Atom clipboard_ = atom("CLIPBOARD"), targets_ = atom("TARGETS"), timestamp_ = atom("TIMESTAMP"),
               utf8_ = atom("UTF8_STRING"), plain_ = atom("text/plain;charset=utf-8"), incremental_ = atom("INCR"),
               timeProperty_ = atom("_QUILLMERE_TIME");
    Text text_;
    bool isAscii_ = false;
    Time since_ = CurrentTime;
    std::deque<Transfer> transfers_;
};

std::unique_ptr<X11Clipboard> X11Clipboard::open(const char* display) {
    Display* const opened = XOpenDisplay(display);
    if (!opened)
        return nullptr;
    return std::unique_ptr<X11Clipboard>(new X11Clipboard(std::make_unique<Connection>(opened)));
}

X11Clipboard::X11Clipboard(std::unique_ptr<Connection> connection) : connection_(std::move(connection)) {}

X11Clipboard::~X11Clipboard() = default;

bool X11Clipboard::setText(std::string text) {
    return connection_->own(std::move(text));
}

} // namespace quillmere::platform::gtk
