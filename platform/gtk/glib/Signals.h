#pragma once

#include "platform/gtk/glib/GObjectRef.h"

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace quillmere::platform::gtk {

/// Reports an exception that reached the edge of the toolkit. It is a fault of ours; the program goes on.
void reportStray(const std::exception* error) noexcept;

/// Runs `action`; an exception must not travel through the toolkit's C frames, so it ends here with `fallback`.
template <typename Result, typename Action>
Result guarded(Result fallback, Action&& action) noexcept {
    try {
        return std::forward<Action>(action)();
    } catch (const std::exception& error) {
        reportStray(&error);
    } catch (...) {
        reportStray(nullptr);
    }
    return fallback;
}
template <typename Action>
void guarded(Action&& action) noexcept {
    guarded(0, [&] {
        std::forward<Action>(action)();
        return 0;
    });
}

/// Ends the connection when it is destroyed, whether or not the emitting object still lives.
class SignalConnection {
public:
    SignalConnection() = default;
    SignalConnection(gpointer instance, gulong handler);
    SignalConnection(SignalConnection&&) noexcept = default;
    SignalConnection& operator=(SignalConnection&& other) noexcept;
    ~SignalConnection() { disconnect(); }

    void disconnect() noexcept;

private:
    std::unique_ptr<GObjectWeak<GObject>> instance_;
    gulong handler_ = 0;
};

/// The connections that an object has made; they end with it.
using SignalConnections = std::vector<SignalConnection>;

namespace detail {

template <typename Handler, typename Signature>
struct Trampoline;

template <typename Handler, typename Result, typename... Arguments>
struct Trampoline<Handler, Result (Handler::*)(Arguments...) const> {
    static Result call(Arguments... arguments, gpointer data) {
        const auto& handler = *static_cast<Handler*>(data);
        if constexpr (std::is_void_v<Result>)
            guarded([&] { handler(arguments...); });
        else
            return guarded(Result{}, [&] { return handler(arguments...); });
    }
    static void destroy(gpointer data, GClosure*) { delete static_cast<Handler*>(data); }
};

} // namespace detail

/// Connects a lambda whose parameters are exactly those of the C signal handler without the user data. It lives as long
/// as the emitting object, so it must not capture anything that may go earlier.
template <typename Handler>
gulong connectForLife(gpointer instance, const char* signal, Handler handler) {
    using Call = detail::Trampoline<Handler, decltype(&Handler::operator())>;
    return g_signal_connect_data(instance, signal, G_CALLBACK(&Call::call), new Handler(std::move(handler)),
                                 &Call::destroy, GConnectFlags{});
}

/// The same, for as long as the returned connection lives.
template <typename Handler>
[[nodiscard]] SignalConnection connect(gpointer instance, const char* signal, Handler handler) {
    return SignalConnection(instance, connectForLife(instance, signal, std::move(handler)));
}

/// A callback on the main loop, once or again and again, that ends with this object. Main thread only.
class LoopTimer {
public:
    LoopTimer() = default;
    LoopTimer(const LoopTimer&) = delete;
    LoopTimer& operator=(const LoopTimer&) = delete;
    ~LoopTimer() { cancel(); }

    /// Runs `action` once after `delay`; a pending one is replaced.
    void after(std::chrono::milliseconds delay, std::function<void()> action);
    void every(std::chrono::milliseconds interval, std::function<void()> action);
    void cancel() noexcept;
    bool pending() const noexcept { return source_ != 0; }

private:
    void start(std::chrono::milliseconds delay);
    std::function<void()> action_;
    bool repeats_ = false;
    guint source_ = 0;
};

} // namespace quillmere::platform::gtk
