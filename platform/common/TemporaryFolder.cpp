#include "platform/common/TemporaryFolder.h"

#include "base/Clock.h"
#include "base/Errors.h"
#include "base/FolderAccess.h"
#include "base/Uuid.h"

#include <cerrno>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <set>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace quillmere::platform {

namespace fs = std::filesystem;

namespace {

/// How long a killed program that is not yet gone may go on filling a folder, and how long the end of the program waits
/// for what workers are removing.
constexpr auto patience = std::chrono::seconds(2);
constexpr auto pause = std::chrono::milliseconds(5);

struct Folders {
    std::mutex mutex;
    std::condition_variable isRemoved;
    std::set<std::string> living;
    std::set<std::string> leaving; // being removed by their owners
    bool isEnding = false;
};

/// Never destroyed: workers may still hold folders when the program ends.
Folders& folders() {
    static auto* const all = new Folders;
    return *all;
}

void removeTree(const std::string& path) noexcept {
    try {
        const SteadyTime deadline = steadyNow() + patience;
        for (;;) {
            std::error_code error;
            fs::remove_all(path, error);
            // Other errors stay: what is left is removed with the cache's other old entries.
            const bool isFilledMeanwhile =
                error == std::errc::directory_not_empty || error == std::errc::no_such_file_or_directory;
            if (!isFilledMeanwhile || steadyNow() >= deadline)
                return;
            std::this_thread::sleep_for(pause);
        }
    } catch (...) {
        // Out of memory: as above.
    }
}

} // namespace

std::shared_ptr<const TemporaryFolder> TemporaryFolder::makeInside(const FileUrl& parent) {
    makePrivateFolders(parent);
    const FileUrl url = parent.appending(newUuid());
    if (::mkdir(url.path().c_str(), 0700) != 0)
        throwFileError(errno, parent.path());
    return std::shared_ptr<const TemporaryFolder>(new TemporaryFolder(url));
}

TemporaryFolder::TemporaryFolder(FileUrl url) : url_(std::move(url)) {
    auto& all = folders();
    const std::lock_guard lock(all.mutex);
    if (all.isEnding) {
        ::rmdir(url_.path().c_str());
        throwFileError(EAGAIN, url_.path());
    }
    all.living.insert(url_.path());
}

TemporaryFolder::~TemporaryFolder() {
    auto& all = folders();
    {
        const std::lock_guard lock(all.mutex);
        if (all.living.erase(url_.path()) == 0)
            return; // the end of the program removes it
        all.leaving.insert(url_.path());
    }
    removeTree(url_.path());
    const std::lock_guard lock(all.mutex);
    all.leaving.erase(url_.path());
    all.isRemoved.notify_all();
}

void TemporaryFolder::removeAll() noexcept {
    auto& all = folders();
    std::unique_lock lock(all.mutex);
    all.isEnding = true;
    const auto ours = std::exchange(all.living, {});
    lock.unlock();
    for (const auto& path : ours)
        removeTree(path);
    lock.lock();
    all.isRemoved.wait_for(lock, patience, [&all] { return all.leaving.empty(); });
}

} // namespace quillmere::platform
