#include "platform/gtk/media/MediaResolver.h"

#include "base/WeakCallback.h"
#include "platform/gtk/media/MediaProtocol.h"

#include <fcntl.h>
#include <gio/gunixfdlist.h>
#include <map>
#include <sys/stat.h>

namespace quillmere::platform::gtk {

// The questions that wait for their file. Workers know a question by its number only, so that messages are touched and
// let go on the main thread alone.
class MediaResolver::Answers : public std::enable_shared_from_this<Answers> {
public:
    Answers(const SchemeHandler& handler, Executors& executors) : handler_(handler), executors_(executors) {}

    bool reported() const noexcept { return reported_; }

    bool receive(WebKitUserMessage* message) {
        const std::string name = webkit_user_message_get_name(message);
        if (name == media::readyMessage) {
            reported_ = true;
            return true;
        }
        if (name != media::openMessage)
            return false;
        GVariant* parameters = webkit_user_message_get_parameters(message);
        const bool isText = parameters && g_variant_is_of_type(parameters, G_VARIANT_TYPE_STRING);
        const uint64_t question = ++last_;
        waiting_.emplace(question, GObjectRef<WebKitUserMessage>::share(message));
        if (isText)
            open(question, g_variant_get_string(parameters, nullptr));
        else
            reply(question, {});
        return true;
    }

private:
    void open(uint64_t question, std::string url) {
        executors_.userInitiated().submit([this_ = weak_from_this(), &handler = handler_, &main = executors_.main(),
                                           question, url = std::move(url)] {
            std::optional<FileUrl> file;
            try {
                file = handler.fileFor(url);
            } catch (const std::exception&) {
                file.reset(); // refused like any other address that names no file
            }
            const auto opened = std::make_shared<FileDescriptor>(file ? openMedia(*file) : FileDescriptor());
            main.post(weakly(this_, [question, opened](Answers& self) { self.reply(question, std::move(*opened)); }));
        });
    }

    void reply(uint64_t question, FileDescriptor file) {
        const auto found = waiting_.find(question);
        if (found == waiting_.end())
            return;
        const auto message = found->second;
        waiting_.erase(found);
        if (!file) {
            webkit_user_message_send_reply(message.get(), webkit_user_message_new(media::openMessage, nullptr));
            return;
        }
        const int descriptor = file.release(); // the list closes it
        const auto list = GObjectRef<GUnixFDList>::adopt(g_unix_fd_list_new_from_array(&descriptor, 1));
        webkit_user_message_send_reply(message.get(),
                                       webkit_user_message_new_with_fd_list(media::openMessage, nullptr, list.get()));
    }

    const SchemeHandler& handler_;
    Executors& executors_;
    bool reported_ = false;
    uint64_t last_ = 0;
    std::map<uint64_t, GObjectRef<WebKitUserMessage>> waiting_;
};

MediaResolver::MediaResolver(WebKitWebContext* context, const FileUrl& extensions, const SchemeHandler& handler,
                             Executors& executors)
    : answers_(std::make_shared<Answers>(handler, executors)) {
    webkit_web_context_set_web_process_extensions_directory(context, extensions.path().c_str());
    received_ = connect(context, "user-message-received",
                        [answers = answers_](WebKitWebContext*, WebKitUserMessage* message) -> gboolean {
                            return answers->receive(message);
                        });
}

MediaResolver::~MediaResolver() = default;

bool MediaResolver::extensionReported() const noexcept {
    return answers_->reported();
}

FileDescriptor MediaResolver::openMedia(const FileUrl& file) noexcept {
    FileDescriptor descriptor(::open(file.path().c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status{};
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    return descriptor;
}

} // namespace quillmere::platform::gtk
