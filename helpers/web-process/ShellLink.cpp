#include "helpers/web-process/ShellLink.h"

#include "platform/gtk/glib/GObjectRef.h"
#include "platform/gtk/reads/ReadProtocol.h"

#include <gio/gunixfdlist.h>
#include <memory>

namespace quillmere::platform::gtk::shell {

namespace {

using Answer = std::function<void(WebKitUserMessage* reply)>;

WebKitWebProcessExtension* extensionObject = nullptr;

FileDescriptor descriptorOf(WebKitUserMessage* reply) {
    GUnixFDList* list = reply ? webkit_user_message_get_fd_list(reply) : nullptr;
    if (!list || g_unix_fd_list_get_length(list) != 1)
        return {};
    return FileDescriptor(g_unix_fd_list_get(list, 0, nullptr)); // a duplicate, closed on exec
}

void received(GObject* extension, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Answer> answer(static_cast<Answer*>(data));
    const auto reply = GObjectRef<WebKitUserMessage>::adopt(webkit_web_process_extension_send_message_to_context_finish(
        WEBKIT_WEB_PROCESS_EXTENSION(extension), result, nullptr));
    (*answer)(reply.get());
}

void ask(WebKitUserMessage* question, Answer answer) {
    webkit_web_process_extension_send_message_to_context(extensionObject, question, nullptr, received,
                                                         new Answer(std::move(answer)));
}

} // namespace

void connectTo(WebKitWebProcessExtension* extension) {
    extensionObject = extension;
}

void askForRange(const std::string& address, uint64_t offset, uint64_t length,
                 std::function<void(FileDescriptor)> answer) {
    ask(webkit_user_message_new(reads::rangeMessage,
                                g_variant_new("(stt)", address.c_str(), guint64{offset}, guint64{length})),
        [answer = std::move(answer)](WebKitUserMessage* reply) { answer(descriptorOf(reply)); });
}

void askForChannel(const std::string& address, std::function<void(FileDescriptor, uint64_t)> answer) {
    ask(webkit_user_message_new(reads::channelMessage, g_variant_new("(s)", address.c_str())),
        [answer = std::move(answer)](WebKitUserMessage* reply) {
            guint64 size = 0;
            GVariant* facts = reply ? webkit_user_message_get_parameters(reply) : nullptr;
            if (facts && g_variant_is_of_type(facts, G_VARIANT_TYPE("(t)")))
                g_variant_get(facts, "(t)", &size);
            answer(descriptorOf(reply), size);
        });
}

} // namespace quillmere::platform::gtk::shell
