#include "platform/gtk/reads/FileReads.h"

#include "base/WeakCallback.h"
#include "platform/gtk/reads/FilePour.h"
#include "platform/gtk/reads/MediaChannel.h"
#include "platform/gtk/reads/ReadProtocol.h"

#include <gio/gunixfdlist.h>
#include <map>
#include <vector>

namespace quillmere::platform::gtk {

namespace {

constexpr size_t rangeCapacity = size_t{1024} * 1024;
// Far beyond what a page needs. One that has been taken over must not use up the program's descriptors.
constexpr size_t mostFiles = 256;

} // namespace

// The questions that wait for their answer. Workers know a question by its number only, so that messages are touched
// and let go on the main thread alone.
class FileReads::Answers : public std::enable_shared_from_this<Answers> {
public:
    Answers(const SchemeHandler& handler, Executors& executors) : handler_(handler), executors_(executors) {}

    bool receive(WebKitUserMessage* message) {
        const std::string name = webkit_user_message_get_name(message);
        const bool isRange = name == reads::rangeMessage;
        if (!isRange && name != reads::channelMessage)
            return false;
        const uint64_t question = ++last_;
        waiting_.emplace(question, GObjectRef<WebKitUserMessage>::share(message));
        std::erase_if(files_, [](const auto& file) { return file.expired(); });
        GVariant* parameters = webkit_user_message_get_parameters(message);
        if (!parameters || waiting_.size() + files_.size() > mostFiles ||
            !g_variant_is_of_type(parameters, G_VARIANT_TYPE(isRange ? "(stt)" : "(s)")))
            reply(question, {});
        else if (isRange)
            pour(question, parameters);
        else
            converse(question, parameters);
        return true;
    }

private:
    using File = std::shared_ptr<const RegularFile>;

    // Sent before the pipe is full. The worker goes on while the page reads.
    void pour(uint64_t question, GVariant* parameters) {
        const char* url = nullptr;
        FilePour::Range range;
        guint64 offset = 0, length = 0;
        g_variant_get(parameters, "(&stt)", &url, &offset, &length);
        range = {.offset = offset, .length = length};
        ask(question, url,
            [question, range](const std::weak_ptr<Answers>& self, const File& file, Executors& executors) {
                const auto pour = FilePour::make(file, range, rangeCapacity, executors);
                auto end = std::make_shared<FileDescriptor>(pour->takeReadEnd());
                executors.main().post(weakly(self, [question, end = std::move(end), file](Answers& answers) {
                    answers.files_.push_back(file);
                    answers.reply(question, std::move(*end));
                }));
                pour->run();
            });
    }

    void converse(uint64_t question, GVariant* parameters) {
        const char* url = nullptr;
        g_variant_get(parameters, "(&s)", &url);
        ask(question, url, [question](const std::weak_ptr<Answers>& self, const File& file, Executors& executors) {
            const uint64_t size = file->size();
            executors.main().post(weakly(self, [question, file, size, &executors](Answers& answers) {
                FileDescriptor theirs;
                guarded([&] { theirs = MediaChannel::open(file, executors); });
                answers.files_.push_back(file);
                answers.reply(question, std::move(theirs), g_variant_new("(t)", guint64{size}));
            }));
        });
    }

    /// Opens the file on a worker and does `action` with it there; a failure of either is a refusal.
    template <typename Action>
    void ask(uint64_t question, std::string url, Action action) {
        executors_.userInitiated().submit([self = weak_from_this(), &handler = handler_, &executors = executors_,
                                           question, url = std::move(url), action = std::move(action)] {
            try {
                action(self, std::make_shared<const RegularFile>(handler.open(url)), executors);
            } catch (const std::exception&) {
                executors.main().post(weakly(self, [question](Answers& answers) { answers.reply(question, {}); }));
            }
        });
    }

    void reply(uint64_t question, FileDescriptor descriptor, GVariant* facts = nullptr) {
        const auto parameters = facts ? GlibVariant(g_variant_ref_sink(facts)) : GlibVariant();
        const auto found = waiting_.find(question);
        if (found == waiting_.end())
            return;
        const auto message = found->second;
        waiting_.erase(found);
        const char* name = webkit_user_message_get_name(message.get());
        if (!descriptor) {
            webkit_user_message_send_reply(message.get(), webkit_user_message_new(name, nullptr));
            return;
        }
        const int number = descriptor.release(); // the list closes it
        const auto list = GObjectRef<GUnixFDList>::adopt(g_unix_fd_list_new_from_array(&number, 1));
        webkit_user_message_send_reply(message.get(),
                                       webkit_user_message_new_with_fd_list(name, parameters.get(), list.get()));
    }

    const SchemeHandler& handler_;
    Executors& executors_;
    uint64_t last_ = 0;
    std::map<uint64_t, GObjectRef<WebKitUserMessage>> waiting_;
    std::vector<std::weak_ptr<const RegularFile>> files_; // those that are open for the web process
};

FileReads::FileReads(WebKitWebContext* context, const FileUrl& extensions, const SchemeHandler& handler,
                     Executors& executors)
    : answers_(std::make_shared<Answers>(handler, executors)) {
    webkit_web_context_set_web_process_extensions_directory(context, extensions.path().c_str());
    received_ = connect(context, "user-message-received",
                        [answers = answers_](WebKitWebContext*, WebKitUserMessage* message) -> gboolean {
                            return answers->receive(message);
                        });
}

FileReads::~FileReads() = default;

} // namespace quillmere::platform::gtk
