#include "platform/gtk/glib/Signals.h"

namespace quillmere::platform::gtk {

void reportStray(const std::exception* error) noexcept {
    g_warning("Unexpected failure in an event handler: %s", error ? error->what() : "unknown");
}

SignalConnection::SignalConnection(gpointer instance, gulong handler)
    : instance_(std::make_unique<GObjectWeak<GObject>>()), handler_(handler) {
    instance_->set(static_cast<GObject*>(instance));
}

SignalConnection& SignalConnection::operator=(SignalConnection&& other) noexcept {
    if (this != &other) {
        disconnect();
        instance_ = std::move(other.instance_);
        handler_ = std::exchange(other.handler_, 0);
    }
    return *this;
}

void SignalConnection::disconnect() noexcept {
    if (!instance_)
        return;
    if (const auto instance = instance_->lock())
        g_signal_handler_disconnect(instance.get(), handler_);
    instance_.reset();
}

void LoopTimer::after(std::chrono::milliseconds delay, std::function<void()> action) {
    cancel();
    action_ = std::move(action);
    repeats_ = false;
    start(delay);
}

void LoopTimer::every(std::chrono::milliseconds interval, std::function<void()> action) {
    cancel();
    action_ = std::move(action);
    repeats_ = true;
    start(interval);
}

void LoopTimer::start(std::chrono::milliseconds delay) {
    const auto fire = +[](gpointer data) -> gboolean {
        auto& self = *static_cast<LoopTimer*>(data);
        if (self.repeats_) {
            const auto action = self.action_; // it may cancel or destroy the timer
            guarded(action);
            return G_SOURCE_CONTINUE;
        }
        self.source_ = 0;
        const auto action = std::exchange(self.action_, nullptr);
        guarded(action);
        return G_SOURCE_REMOVE;
    };
    source_ = g_timeout_add(static_cast<guint>(delay.count()), fire, this);
}

void LoopTimer::cancel() noexcept {
    if (source_ != 0)
        g_source_remove(std::exchange(source_, 0));
    action_ = nullptr;
}

} // namespace quillmere::platform::gtk
