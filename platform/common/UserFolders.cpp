#include "platform/common/UserFolders.h"

#include <cstdlib>
#include <pwd.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace quillmere::platform {

namespace {

std::optional<FileUrl> folderNamedBy(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value == '/' ? std::optional(FileUrl(value)) : std::nullopt;
}

std::optional<FileUrl> home() {
    if (auto folder = folderNamedBy("HOME"))
        return folder;
    std::vector<char> buffer(16'384);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found || !found->pw_dir ||
        *found->pw_dir != '/')
        return std::nullopt;
    return FileUrl(found->pw_dir);
}

std::optional<FileUrl> baseFolder(const char* variable, const char* belowHome) {
    if (auto folder = folderNamedBy(variable))
        return folder;
    const auto folder = home();
    return folder ? std::optional(folder->appending(belowHome)) : std::nullopt;
}

} // namespace

Directories userDirectories() {
    return {.home = home().value_or(FileUrl("/")),
            .caches = baseFolder("XDG_CACHE_HOME", ".cache"),
            .applicationSupport = baseFolder("XDG_DATA_HOME", ".local/share")};
}

std::optional<FileUrl> userDefaultsFile() {
    const auto folder = baseFolder("XDG_CONFIG_HOME", ".config");
    return folder ? std::optional(folder->appending("app.quillmere.viewer.plist")) : std::nullopt;
}

} // namespace quillmere::platform
