#include "helpers/web-process/ShellLink.h"

#include "platform/gtk/glib/GObjectRef.h"
#include "platform/gtk/media/MediaProtocol.h"

#include <gio/gunixfdlist.h>
#include <sys/stat.h>

namespace quillmere::platform::gtk::shell {

namespace {

using Answer = std::function<void(FileDescriptor)>;

WebKitWebProcessExtension* extensionObject = nullptr;

FileDescriptor descriptorOf(WebKitUserMessage* reply) {
    GUnixFDList* list = reply ? webkit_user_message_get_fd_list(reply) : nullptr;
    if (!list || g_unix_fd_list_get_length(list) != 1)
        return {};
    FileDescriptor file(g_unix_fd_list_get(list, 0, nullptr)); // a duplicate, closed on exec
    struct stat status{};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    return file;
}

void received(GObject* extension, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Answer> answer(static_cast<Answer*>(data));
    const auto reply = GObjectRef<WebKitUserMessage>::adopt(webkit_web_process_extension_send_message_to_context_finish(
        WEBKIT_WEB_PROCESS_EXTENSION(extension), result, nullptr));
    (*answer)(descriptorOf(reply.get()));
}

} // namespace

void connectTo(WebKitWebProcessExtension* extension) {
    extensionObject = extension;
}

void reportReady() {
    webkit_web_process_extension_send_message_to_context(
        extensionObject, webkit_user_message_new(media::readyMessage, nullptr), nullptr, nullptr, nullptr);
}

void askForFile(const std::string& address, Answer answer) {
    auto* question = webkit_user_message_new(media::openMessage, g_variant_new_string(address.c_str()));
    webkit_web_process_extension_send_message_to_context(extensionObject, question, nullptr, received,
                                                         new Answer(std::move(answer)));
}

} // namespace quillmere::platform::gtk::shell
