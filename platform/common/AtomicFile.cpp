#include "platform/common/AtomicFile.h"

#include "base/Errors.h"
#include "base/FileDescriptor.h"
#include "base/Uuid.h"
#include "platform/common/TemporaryFolder.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace quillmere::platform {

namespace {

void writeAll(const FileDescriptor& descriptor, std::string_view contents, const std::string& path) {
    while (!contents.empty()) {
        const ssize_t written = ::write(descriptor.get(), contents.data(), contents.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            throwFileError(errno, path);
        contents.remove_prefix(static_cast<size_t>(written));
    }
    if (::fsync(descriptor.get()) != 0)
        throwFileError(errno, path);
}

} // namespace

void replaceFile(const FileUrl& file, std::string_view contents) {
    const FileUrl folder = file.parent();
    makePrivateFolders(folder);
    const std::string temporary = file.path() + "." + newUuid();
    try {
        const FileDescriptor descriptor(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (!descriptor)
            throwFileError(errno, file.path());
        writeAll(descriptor, contents, file.path());
        if (::rename(temporary.c_str(), file.path().c_str()) != 0)
            throwFileError(errno, file.path());
    } catch (...) {
        ::unlink(temporary.c_str());
        throw;
    }
    // The new name reaches the disk with the folder. A file system that cannot flush folders keeps its own order.
    if (const FileDescriptor opened(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)); opened)
        ::fsync(opened.get());
}

} // namespace quillmere::platform
