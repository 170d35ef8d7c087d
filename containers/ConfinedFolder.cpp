#include "containers/ConfinedFolder.h"

#include "base/Errors.h"
#include "containers/ContainerMessages.h"

#include <filesystem>
#include <system_error>

namespace quillmere {

FileUrl confinedUrl(const FileUrl& folder, std::string_view relative) {
    FileUrl candidate = FileUrl(folder.path() + "/" + std::string(relative)).standardized();
    const std::string prefix = folder.path() == "/" ? "/" : folder.path() + "/";
    if (candidate != folder && !candidate.path().starts_with(prefix))
        throw ContainerError(messages::linksOutside);
    return candidate;
}

ConfinedPlace confinedPlace(const FileUrl& folder, std::string_view relative, fileFacts::Handle handle) {
    FileUrl url = confinedUrl(folder, relative);
    const size_t prefix = folder.path() == "/" ? 1 : folder.path().size() + 1;
    const std::string below = url == folder ? "" : url.path().substr(prefix);
    try {
        const FileDescriptor root = fileFacts::openWithoutLinks(folder, fileFacts::Handle::place);
        FileDescriptor opened = fileFacts::openBelow(root, below, handle, url);
        return {std::move(url), std::move(opened)};
    } catch (const std::filesystem::filesystem_error& error) {
        if (error.code() == std::errc::too_many_symbolic_link_levels)
            throw ContainerError(messages::linksOutside);
        throw;
    }
}

} // namespace quillmere
