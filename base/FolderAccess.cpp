#include "base/FolderAccess.h"

#include "base/Errors.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace quillmere {

OpenFolder readFolder(FileDescriptor folder) noexcept {
    OpenFolder opened(::fdopendir(folder.get()));
    if (opened)
        folder.release(); // the folder owns it now
    return opened;
}

std::optional<std::string_view> nextName(const OpenFolder& folder) noexcept {
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(folder.get());
        if (!entry)
            return std::nullopt;
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            return name;
    }
}

bool isPrivateFolder(const struct stat& facts) noexcept {
    return S_ISDIR(facts.st_mode) && facts.st_uid == ::geteuid() && (facts.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

void makePrivateFolders(const FileUrl& folder) {
    constexpr mode_t ownerOnly = 0700;
    if (::mkdir(folder.path().c_str(), ownerOnly) == 0)
        return;
    if (errno == ENOENT && folder.path() != "/") {
        makePrivateFolders(folder.parent());
        if (::mkdir(folder.path().c_str(), ownerOnly) == 0)
            return;
    }
    const int error = errno;
    struct stat info{};
    if (error != EEXIST || ::stat(folder.path().c_str(), &info) != 0)
        throwFileError(error, folder.path());
    if (!S_ISDIR(info.st_mode))
        throwFileError(EEXIST, folder.path());
}

} // namespace quillmere
