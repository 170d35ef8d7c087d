#include "prepare/CacheHousekeeping.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

namespace quillmere {

namespace fs = std::filesystem;

namespace {

constexpr const char* containerCache = "ContainerPreviews";

/// Whether the entry was last written before the limit. Compared as the file system keeps dates: those of a few
/// centuries ahead do not fit into our clock.
bool isOlder(const fs::path& entry, WallTime limit) {
    struct stat info{};
    if (::lstat(entry.c_str(), &info) != 0)
        return false;
    const auto seconds = std::chrono::floor<std::chrono::seconds>(limit.time_since_epoch());
    static_assert(std::is_same_v<WallTime::period, std::nano>);
    const auto rest = limit.time_since_epoch() - seconds;
    return std::pair(info.st_mtim.tv_sec, info.st_mtim.tv_nsec) < std::pair(seconds.count(), rest.count());
}

} // namespace

void cleanPreviewCache(const FileUrl& cache, WallTime now) noexcept {
    try {
        std::error_code error;
        std::vector<fs::path> old;
        for (fs::directory_iterator entry(cache.filesystemPath(), error), end; !error && entry != end;
             entry.increment(error)) {
            const fs::path& path = entry->path();
            if (path.filename() != containerCache && isOlder(path, now - cacheAgeLimit))
                old.push_back(path);
        }
        for (const auto& path : old)
            fs::remove_all(path, error);
    } catch (...) {
        // Out of memory: the next launch cleans.
    }
}

} // namespace quillmere
