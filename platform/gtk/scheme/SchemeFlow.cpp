#include "platform/gtk/scheme/SchemeFlow.h"

#include <algorithm>

namespace quillmere::platform::gtk {

namespace {

constexpr uint64_t step = uint64_t{1024} * 1024; // bytes between two questions

// A page that waits for the whole of an answer before it does anything else cannot confirm a part of it.
constexpr std::chrono::seconds patience{5};

} // namespace

void SchemeFlow::sent(size_t count) {
    sent_ += count;
    if (sent_ - asked_ >= step)
        ask();
}

void SchemeFlow::whenOpen(std::function<void()> action) {
    waiting_.push_back(std::move(action));
    if (!patience_.pending())
        patience_.after(patience, [this] { confirm(sent_); });
}

void SchemeFlow::ask() {
    asked_ = sent_;
    const auto page = page_.lock();
    if (!page)
        return confirm(sent_);
    struct Question {
        std::shared_ptr<SchemeFlow> flow;
        uint64_t count;
    };
    // No one handles the message. That the page says so is all that is wanted.
    const auto answered = +[](GObject* object, GAsyncResult* result, gpointer data) {
        const std::unique_ptr<Question> question(static_cast<Question*>(data));
        const auto reply = GObjectRef<WebKitUserMessage>::adopt(
            webkit_web_view_send_message_to_page_finish(WEBKIT_WEB_VIEW(object), result, nullptr));
        guarded([&] { question->flow->confirm(question->count); });
    };
    webkit_web_view_send_message_to_page(page.get(), webkit_user_message_new("quillmere.received", nullptr), nullptr,
                                         answered, new Question{shared_from_this(), sent_});
}

void SchemeFlow::confirm(uint64_t count) {
    confirmed_ = std::max(confirmed_, count);
    if (!isOpen())
        return;
    patience_.cancel();
    for (const auto& action : std::exchange(waiting_, {}))
        action();
}

} // namespace quillmere::platform::gtk
