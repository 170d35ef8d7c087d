#include "base/RegularFile.h"

#include "base/Errors.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace quillmere {

RegularFile::RegularFile(const FileUrl& file) : file_(file) {
    // Without O_NONBLOCK a pipe would wait for its writer.
    const int descriptor = ::open(file.path().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        throwFileError(errno, file.path());
    descriptor_.reset(descriptor);
    struct stat facts{};
    if (::fstat(descriptor, &facts) != 0)
        throwFileError(errno, file.path());
    if (S_ISDIR(facts.st_mode))
        throwFileError(EISDIR, file.path());
    if (!S_ISREG(facts.st_mode))
        throwFileError(EINVAL, file.path());
    identity_ = {.device = facts.st_dev, .file = facts.st_ino};
}

uint64_t RegularFile::size() const {
    struct stat facts{};
    if (::fstat(descriptor_.get(), &facts) != 0)
        throwFileError(errno, file_.path());
    return static_cast<uint64_t>(facts.st_size);
}

size_t RegularFile::read(uint64_t offset, std::byte* buffer, size_t count) const {
    for (;;) {
        const ssize_t got = ::pread(descriptor_.get(), buffer, count, static_cast<off_t>(offset));
        if (got >= 0)
            return static_cast<size_t>(got);
        if (errno != EINTR)
            throwFileError(errno, file_.path());
    }
}

} // namespace quillmere
