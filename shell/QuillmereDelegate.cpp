#include "shell/QuillmereDelegate.h"

#include "base/Fatal.h"
#include "platform/MainThread.h"

#include <limits>

namespace quillmere {

namespace {

constexpr const char* productFolder = "Quillmere";

FileUrl required(const std::optional<FileUrl>& folder, const char* reason) {
    if (!folder)
        fatalStop(reason);
    return *folder;
}

} // namespace

QuillmereDelegate::QuillmereDelegate(const platform::Platform& platform, Parts parts)
    : platform_(platform), parts_(std::move(parts)),
      containerQueue_(platform.executors.makeSerial("app.quillmere.containers")),
      containerGeneration_(std::make_shared<ContainerGeneration>()),
      preferences_(AppearancePreferences::load(platform.defaults)),
      resources_(required(platform.bundle.resources(), "the bundle has no resources")),
      support_(required(platform.directories.applicationSupport, "there is no folder for application support")
                   .appending(productFolder)) {}

std::shared_ptr<QuillmereDelegate> QuillmereDelegate::make(const platform::Platform& platform, Parts parts) {
    platform::assertMainThread(platform.executors.main());
    return std::shared_ptr<QuillmereDelegate>(new QuillmereDelegate(platform, std::move(parts)));
}

platform::OpenReply QuillmereDelegate::applicationOpenFiles(const std::vector<FileUrl>& files) {
    assertMainThread();
    if (!files.empty())
        open(files.front(), std::nullopt, std::nullopt);
    return platform::OpenReply::success;
}

bool QuillmereDelegate::applicationShouldHandleReopen(bool) {
    assertMainThread();
    if (window_)
        window_->makeKeyAndOrderFront();
    return true;
}

void QuillmereDelegate::assertMainThread() const {
    platform::assertMainThread(platform_.executors.main());
}

QuillmereDelegate::Ticket QuillmereDelegate::nextRequest() {
    if (requestID_ == std::numeric_limits<Ticket>::max())
        fatalStop("the request number has overflowed");
    return ++requestID_;
}

FileUrl QuillmereDelegate::cacheRoot() const {
    return required(platform_.directories.caches, "there is no folder for caches").appending(productFolder);
}

std::shared_ptr<ContainerBrowser> QuillmereDelegate::containers() {
    assertMainThread();
    if (!containers_)
        containers_ = parts_.makeContainerBrowser(cacheRoot());
    return containers_;
}

} // namespace quillmere
