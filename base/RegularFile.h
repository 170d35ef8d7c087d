#pragma once

#include "base/FileDescriptor.h"
#include "base/FileIdentity.h"
#include "base/FileUrl.h"

#include <cstddef>
#include <cstdint>

namespace quillmere {

/// A regular file, open for reading: the one way to open what somebody else chose. Pipes, sockets, devices and folders
/// are refused at once instead of waited for. What is asked of it is asked of the open file, so that no other can take
/// its name between check and use. Errors are those of the file system, thrown. Any thread, one at a time.
class RegularFile {
public:
    explicit RegularFile(const FileUrl& file);

    const FileUrl& url() const noexcept { return file_; }
    FileIdentity identity() const noexcept { return identity_; }
    /// As it is now.
    uint64_t size() const;
    /// Reads up to `count` bytes at `offset`; 0 at the end of the file.
    size_t read(uint64_t offset, std::byte* buffer, size_t count) const;

    /// Still owned by this object.
    int descriptor() const noexcept { return descriptor_.get(); }
    /// The open file itself; nothing but `url` and `identity` may be asked afterwards.
    FileDescriptor release() noexcept { return std::move(descriptor_); }

private:
    FileDescriptor descriptor_;
    FileUrl file_;
    FileIdentity identity_;
};

} // namespace quillmere
