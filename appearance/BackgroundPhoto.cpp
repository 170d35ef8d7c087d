#include "appearance/BackgroundPhoto.h"

#include "base/Uuid.h"

#include <filesystem>
#include <sys/stat.h>

namespace quillmere {

namespace fs = std::filesystem;

bool BackgroundPhoto::exists() const {
    std::error_code error;
    return fs::exists(file().filesystemPath(), error);
}

double BackgroundPhoto::changedSeconds() const {
    struct stat facts{};
    if (::stat(file().path().c_str(), &facts) != 0)
        return 0;
    return static_cast<double>(facts.st_mtim.tv_sec) + static_cast<double>(facts.st_mtim.tv_nsec) / 1e9;
}

bool BackgroundPhoto::replace(const FileUrl& source, platform::ImageCodec& images) const {
    // Two choices may be at work at once, and a failed one must not cost the photo that is there.
    const FileUrl fresh = support.appending("background-" + newUuid() + ".png");
    std::error_code error;
    if (images.writeThumbnail(source, fresh, longestSide) == platform::ImageOutcome::written) {
        fs::rename(fresh.filesystemPath(), file().filesystemPath(), error);
        if (!error)
            return true;
    }
    fs::remove(fresh.filesystemPath(), error);
    return false;
}

} // namespace quillmere
