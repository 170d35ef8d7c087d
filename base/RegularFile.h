#pragma once

#include "base/FileDescriptor.h"
#include "base/FileIdentity.h"
#include "base/FileUrl.h"

#include <cstddef>
#include <cstdint>

namespace quillmere {

/// A regular file, open for reading. Pipes, sockets, devices and folders are refused at once instead of waited for.
/// Errors are those of the file system, thrown. Any thread, one at a time.
class RegularFile {
public:
    explicit RegularFile(const FileUrl& file);

    uint64_t size() const;
    FileIdentity identity() const noexcept { return identity_; }
    /// Reads up to `count` bytes at `offset`; 0 at the end of the file.
    size_t read(uint64_t offset, std::byte* buffer, size_t count) const;

private:
    FileDescriptor descriptor_;
    FileUrl file_;
    FileIdentity identity_;
};

} // namespace quillmere
