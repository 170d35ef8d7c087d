#include "platform/common/FontFolders.h"

#include <filesystem>
#include <fontconfig/fontconfig.h>
#include <memory>
#include <system_error>

namespace quillmere::platform {

namespace {

struct Release {
    void operator()(FcConfig* configuration) const { FcConfigDestroy(configuration); }
    void operator()(FcStrList* list) const { FcStrListDone(list); }
};

bool holds(const FileUrl& folder, const FileUrl& inner) {
    const std::string& path = folder.path();
    return path == "/" || inner == folder ||
           (inner.path().starts_with(path) && inner.path().size() > path.size() && inner.path()[path.size()] == '/');
}

} // namespace

std::vector<FileUrl> fontFolders(const FileUrl& home) {
    std::vector<FileUrl> folders;
    const std::unique_ptr<FcConfig, Release> configuration(FcInitLoadConfig());
    if (!configuration)
        return folders;
    const std::unique_ptr<FcStrList, Release> list(FcConfigGetFontDirs(configuration.get()));
    while (const FcChar8* name = list ? FcStrListNext(list.get()) : nullptr) {
        const FileUrl folder{std::filesystem::path(reinterpret_cast<const char*>(name))};
        std::error_code error;
        if (std::filesystem::is_directory(folder.filesystemPath(), error) && !holds(folder.resolvingSymlinks(), home))
            folders.push_back(folder);
    }
    return folders;
}

} // namespace quillmere::platform
