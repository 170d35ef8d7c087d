#include "platform/common/FolderBundle.h"

#include "platform/common/PropertyList.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace quillmere::platform {

namespace fs = std::filesystem;

FolderBundle::FolderBundle(FileUrl bundle) : bundle_(std::move(bundle)) {}

FolderBundle FolderBundle::ofRunningProgram() {
    const FileUrl folder = FileUrl(fs::read_symlink("/proc/self/exe")).parent();
    const FileUrl contents = folder.parent();
    const bool isInside = folder.lastPathComponent() == "MacOS" && contents.lastPathComponent() == "Contents";
    return FolderBundle(isInside ? contents.parent() : folder);
}

std::optional<std::string> FolderBundle::identifier() const {
    const PropertyList list = readPropertyList(bundle_.appending("Contents/Info.plist"));
    return list ? stringValue(plist_dict_get_item(list.get(), "CFBundleIdentifier")) : std::nullopt;
}

std::optional<FileUrl> FolderBundle::resources() const {
    const FileUrl folder = bundle_.appending("Contents/Resources");
    std::error_code error;
    return fs::is_directory(folder.filesystemPath(), error) ? std::optional(folder) : std::nullopt;
}

FileUrl FolderBundle::helper(const std::string& name) const {
    return bundle_.appending("Contents/Helpers/" + name);
}

std::optional<JsonObject> FolderBundle::propertyList() const {
    const PropertyList list = readPropertyList(bundle_.appending("Contents/Info.plist"));
    return list ? std::optional(jsonObject(list.get())) : std::nullopt;
}

} // namespace quillmere::platform
