#pragma once

#include <compare>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

/// An absolute file URL, kept as the bytes of its path: any name that the file system allows, valid UTF-8 or not.
/// A plain value. Two URLs are equal when their path bytes are.
class FileUrl {
public:
    /// From a path; a relative one is taken against the current folder. A trailing slash is dropped.
    explicit FileUrl(const std::filesystem::path& path);

    /// From the text of a URL (RFC 8089). Nothing unless it is a "file" URL of this host with an absolute path that
    /// holds no NUL.
    static std::optional<FileUrl> fromUri(std::string_view uri);

    const std::string& path() const noexcept { return path_; }
    std::filesystem::path filesystemPath() const { return path_; }

    /// Bytes after the last slash; "/" for the root.
    std::string lastPathComponent() const;
    /// Text after the last dot of the last component; empty when there is none, when nothing stands before that dot
    /// (".profile") or nothing after it.
    std::string pathExtension() const;
    /// The same in lower case.
    std::string lowerExtension() const;
    FileUrl appending(std::string_view relativePath) const;
    FileUrl parent() const;

    /// Single dots dropped and ".." taken back, without asking the file system.
    FileUrl standardized() const;
    /// Single dots dropped and ".." taken as the kernel takes it: after a link, back from where the link leads. What
    /// stands before a ".." and is no folder stays, and so does the "..".
    FileUrl resolvingDots() const;
    /// Every symbolic link on the path replaced by its target, as far as the path exists; what is missing stays.
    FileUrl resolvingSymlinks() const;

    /// "file://" and the percent-encoded path.
    std::string uri() const;

    auto operator<=>(const FileUrl&) const = default;

private:
    std::string path_;
};

/// The extension rule of FileUrl::pathExtension for a bare name.
std::string extensionOfName(std::string_view name);

} // namespace quillmere
