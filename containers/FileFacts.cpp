#include "containers/FileFacts.h"

#include "base/Errors.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quillmere::fileFacts {

namespace {

int flagsOf(Handle handle) {
    // Without O_NONBLOCK a pipe that took the file's place would hold us up.
    constexpr int reading = O_RDONLY | O_NONBLOCK | O_NOCTTY;
    switch (handle) {
    case Handle::place:
        return O_CLOEXEC | O_PATH;
    case Handle::contents:
        return O_CLOEXEC | reading;
    case Handle::folder:
        return O_CLOEXEC | reading | O_DIRECTORY;
    }
    return O_CLOEXEC | O_PATH;
}

int openSafely(int folder, const char* path, int flags) {
    open_how how{};
    how.flags = static_cast<decltype(how.flags)>(flags);
    how.resolve = RESOLVE_NO_SYMLINKS | RESOLVE_BENEATH;
    return static_cast<int>(::syscall(SYS_openat2, folder, path, &how, sizeof how));
}

/// One component, which must not be a link.
FileDescriptor openComponent(int folder, const std::string& name, int flags, const FileUrl& named) {
    FileDescriptor opened(::openat(folder, name.c_str(), flags | O_NOFOLLOW));
    if (!opened) {
        const int error = errno;
        struct stat status{};
        // A link in place of a folder is called no folder.
        const bool isLink = error == ENOTDIR && ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                            S_ISLNK(status.st_mode);
        throwFileError(isLink ? ELOOP : error, named.path());
    }
    // A handle that only names a file may name a link itself.
    if ((flags & O_PATH) != 0 && S_ISLNK(statusOf(opened, named).st_mode))
        throwFileError(ELOOP, named.path());
    return opened;
}

} // namespace

FileIdentity identity(const struct stat& status) {
    return {.device = status.st_dev, .file = status.st_ino};
}

std::string fingerprint(const struct stat& status) {
    std::tm utc{};
    char date[64] = "";
    if (::gmtime_r(&status.st_mtim.tv_sec, &utc))
        date[std::strftime(date, sizeof date, "%F %T +0000", &utc)] = '\0';
    return std::to_string(status.st_ino) + "|" + std::to_string(status.st_size) + "|" + date;
}

struct stat statusOf(const FileUrl& file) {
    struct stat status{};
    if (::lstat(file.path().c_str(), &status) != 0)
        throwFileError(errno, file.path());
    return status;
}

struct stat statusOf(const FileDescriptor& handle, const FileUrl& file) {
    struct stat status{};
    if (::fstat(handle.get(), &status) != 0)
        throwFileError(errno, file.path());
    return status;
}

FileDescriptor openWithoutLinks(const FileUrl& file, Handle handle) {
    const FileDescriptor root(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!root)
        throwFileError(errno, "/");
    return openBelow(root, file.path().substr(1), handle, file);
}

FileDescriptor openBelow(const FileDescriptor& folder, const std::string& relative, Handle handle,
                         const FileUrl& named) {
    const char* path = relative.empty() ? "." : relative.c_str();
    FileDescriptor opened(openSafely(folder.get(), path, flagsOf(handle)));
    if (opened)
        return opened;
    // Older kernels lack the call; some sandboxes refuse it.
    if (errno == ENOSYS || errno == EPERM)
        return walkBelow(folder, relative, handle, named);
    throwFileError(errno == EXDEV ? ELOOP : errno, named.path());
}

FileDescriptor walkBelow(const FileDescriptor& folder, const std::string& relative, Handle handle,
                         const FileUrl& named) {
    FileDescriptor current(::openat(folder.get(), ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!current)
        throwFileError(errno, named.path());
    std::string rest = relative.empty() ? "." : relative;
    for (auto slash = rest.find('/'); slash != std::string::npos; slash = rest.find('/')) {
        current = openComponent(current.get(), rest.substr(0, slash), O_PATH | O_CLOEXEC, named);
        rest.erase(0, slash + 1);
    }
    return openComponent(current.get(), rest, flagsOf(handle), named);
}

} // namespace quillmere::fileFacts
