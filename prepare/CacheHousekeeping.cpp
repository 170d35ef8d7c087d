#include "prepare/CacheHousekeeping.h"

#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <vector>

namespace quillmere {

namespace fs = std::filesystem;

namespace {

constexpr const char* containerCache = "ContainerPreviews";

WallTime modificationTime(const fs::path& entry, WallTime fallback) {
    struct stat info{};
    if (::lstat(entry.c_str(), &info) != 0)
        return fallback;
    return WallTime(std::chrono::seconds(info.st_mtim.tv_sec) + std::chrono::nanoseconds(info.st_mtim.tv_nsec));
}

} // namespace

void cleanPreviewCache(const FileUrl& cache, WallTime now) noexcept {
    try {
        std::error_code error;
        if (fs::symlink_status(cache.filesystemPath(), error).type() != fs::file_type::directory)
            return;
        std::vector<fs::path> old;
        for (fs::directory_iterator entry(cache.filesystemPath(), error), end; !error && entry != end;
             entry.increment(error)) {
            const fs::path& path = entry->path();
            if (path.filename() != containerCache && modificationTime(path, now) < now - cacheAgeLimit)
                old.push_back(path);
        }
        for (const auto& path : old)
            fs::remove_all(path, error);
    } catch (...) {
        // Out of memory: the next launch cleans.
    }
}

} // namespace quillmere
