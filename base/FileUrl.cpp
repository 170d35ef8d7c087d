#include "base/FileUrl.h"

#include "base/Text.h"

#include <system_error>

namespace quillmere {

namespace fs = std::filesystem;

namespace {

std::string absoluteBytes(const fs::path& path) {
    std::error_code error;
    std::string bytes = path.is_absolute() ? path.native() : fs::absolute(path, error).native();
    if (bytes.empty())
        bytes = "/";
    while (bytes.size() > 1 && bytes.back() == '/')
        bytes.pop_back();
    return bytes;
}

} // namespace

FileUrl::FileUrl(const fs::path& path) : path_(absoluteBytes(path)) {}

std::optional<FileUrl> FileUrl::fromUri(std::string_view uri) {
    constexpr std::string_view prefix = "file://";
    if (uri.size() <= prefix.size() || asciiLower(uri.substr(0, prefix.size())) != prefix)
        return std::nullopt;
    uri.remove_prefix(prefix.size());
    uri = uri.substr(0, uri.find_first_of("?#"));
    const auto slash = uri.find('/');
    if (slash == std::string_view::npos)
        return std::nullopt;
    const std::string host = asciiLower(uri.substr(0, slash));
    if (!host.empty() && host != "localhost")
        return std::nullopt;
    auto path = percentDecode(uri.substr(slash));
    if (!path || path->find('\0') != std::string::npos)
        return std::nullopt;
    return FileUrl(fs::path(*path));
}

std::string FileUrl::lastPathComponent() const {
    return path_ == "/" ? path_ : path_.substr(path_.rfind('/') + 1);
}

std::string extensionOfName(std::string_view name) {
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size())
        return {};
    return std::string(name.substr(dot + 1));
}

std::string FileUrl::pathExtension() const {
    return extensionOfName(lastPathComponent());
}

std::string FileUrl::lowerExtension() const {
    return lowercase(pathExtension());
}

FileUrl FileUrl::appending(std::string_view relativePath) const {
    std::string joined = path_;
    if (!relativePath.empty()) {
        if (joined.back() != '/' && relativePath.front() != '/')
            joined += '/';
        joined += relativePath;
    }
    return FileUrl(fs::path(std::move(joined)));
}

FileUrl FileUrl::parent() const {
    return FileUrl(filesystemPath().parent_path());
}

FileUrl FileUrl::standardized() const {
    return FileUrl(filesystemPath().lexically_normal());
}

FileUrl FileUrl::resolvingDots() const {
    fs::path resolved = "/";
    for (const auto& part : filesystemPath().relative_path()) {
        std::error_code error;
        if (part == "..") {
            if (fs::is_symlink(resolved, error))
                resolved = fs::canonical(resolved, error);
            if (error || !fs::is_directory(resolved, error))
                return *this;
            resolved = resolved.parent_path();
        } else if (part != "." && !part.empty()) {
            resolved /= part;
        }
    }
    return FileUrl(resolved);
}

FileUrl FileUrl::resolvingSymlinks() const {
    std::error_code error;
    auto resolved = fs::weakly_canonical(filesystemPath(), error);
    return error ? *this : FileUrl(resolved);
}

std::string FileUrl::uri() const {
    return "file://" + percentEncodePath(path_);
}

} // namespace quillmere
