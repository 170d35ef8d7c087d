#include "platform/common/TemporaryFolder.h"

#include "base/Errors.h"
#include "base/Uuid.h"

#include <cerrno>
#include <mutex>
#include <set>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace quillmere::platform {

namespace fs = std::filesystem;

namespace {

struct LivingFolders {
    std::mutex mutex;
    std::set<std::string> paths;
};

/// Never destroyed: workers may still hold folders when the program ends.
LivingFolders& livingFolders() {
    static auto* const folders = new LivingFolders;
    return *folders;
}

void removeTree(const std::string& path) noexcept {
    try {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    } catch (...) {
        // Out of memory: what is left is removed with the cache's other old entries.
    }
}

} // namespace

void makePrivateFolders(const FileUrl& folder) {
    if (::mkdir(folder.path().c_str(), 0700) == 0)
        return;
    if (errno == ENOENT && folder.path() != "/") {
        makePrivateFolders(folder.parent());
        if (::mkdir(folder.path().c_str(), 0700) == 0)
            return;
    }
    const int error = errno;
    struct stat info{};
    if (error != EEXIST || ::stat(folder.path().c_str(), &info) != 0)
        throwFileError(error, folder.path());
    if (!S_ISDIR(info.st_mode))
        throwFileError(EEXIST, folder.path());
}

std::shared_ptr<const TemporaryFolder> TemporaryFolder::makeInside(const FileUrl& parent) {
    makePrivateFolders(parent);
    const FileUrl url = parent.appending(newUuid());
    if (::mkdir(url.path().c_str(), 0700) != 0)
        throwFileError(errno, parent.path());
    return std::shared_ptr<const TemporaryFolder>(new TemporaryFolder(url));
}

TemporaryFolder::TemporaryFolder(FileUrl url) : url_(std::move(url)) {
    auto& living = livingFolders();
    const std::lock_guard lock(living.mutex);
    living.paths.insert(url_.path());
}

TemporaryFolder::~TemporaryFolder() {
    removeTree(url_.path());
    auto& living = livingFolders();
    const std::lock_guard lock(living.mutex);
    living.paths.erase(url_.path());
}

void TemporaryFolder::removeAll() noexcept {
    auto& living = livingFolders();
    const std::lock_guard lock(living.mutex);
    for (const auto& path : living.paths)
        removeTree(path);
    living.paths.clear();
}

} // namespace quillmere::platform
