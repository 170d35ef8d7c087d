#pragma once

#include <cerrno>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace quillmere {

/// Owns one open file descriptor; movable, closed on destruction (errors of the close are ignored).
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other)
            reset(std::exchange(other.descriptor_, -1));
        return *this;
    }
    ~FileDescriptor() { reset(); }

    int get() const noexcept { return descriptor_; }
    explicit operator bool() const noexcept { return descriptor_ >= 0; }
    int release() noexcept { return std::exchange(descriptor_, -1); }
    void reset(int descriptor = -1) noexcept {
        if (descriptor_ >= 0)
            ::close(descriptor_);
        descriptor_ = descriptor;
    }

private:
    int descriptor_ = -1;
};

/// Writes everything, whatever signals and short writes come in between. False, with `errno`, when that fails.
[[nodiscard]] inline bool writeAll(int descriptor, std::string_view bytes) noexcept {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written >= 0)
            bytes.remove_prefix(static_cast<size_t>(written));
        else if (errno != EINTR)
            return false;
    }
    return true;
}

} // namespace quillmere
