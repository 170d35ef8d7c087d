#include "platform/common/AtomicFile.h"

#include "base/Errors.h"
#include "base/FileDescriptor.h"
#include "base/FolderAccess.h"
#include "base/Uuid.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace quillmere::platform {

void replaceFile(const FileUrl& file, std::string_view contents) {
    const FileUrl folder = file.parent();
    makePrivateFolders(folder);
    const std::string temporary = file.path() + "." + newUuid();
    try {
        const FileDescriptor descriptor(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (!descriptor)
            throwFileError(errno, file.path());
        if (!writeAll(descriptor.get(), contents) || ::fsync(descriptor.get()) != 0 ||
            ::rename(temporary.c_str(), file.path().c_str()) != 0)
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
