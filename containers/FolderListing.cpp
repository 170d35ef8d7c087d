#include "containers/FolderListing.h"

#include "base/Errors.h"
#include "base/FolderAccess.h"
#include "containers/ConfinedFolder.h"
#include "containers/ContainerLimits.h"
#include "containers/ContainerMessages.h"

#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace quillmere {

namespace {

OpenFolder openFolder(const FileUrl& root, const std::string& path) {
    ConfinedPlace place = confinedPlace(root, path, fileFacts::Handle::folder);
    OpenFolder folder = readFolder(std::move(place.handle));
    if (!folder)
        throwFileError(errno, place.url.path());
    return folder;
}

std::vector<std::string> namesIn(const OpenFolder& folder, const FileUrl& url) {
    std::vector<std::string> names;
    while (const auto name = nextName(folder)) {
        if (names.size() == limits::folderEntries)
            throw ContainerError(messages::folderTooLarge);
        names.emplace_back(*name);
    }
    if (errno != 0)
        throwFileError(errno, url.path());
    return names;
}

/// Facts of the entry itself, never of a link's target.
void describe(Node& node, int folder, const std::string& name) {
    struct statx status{};
    constexpr unsigned wanted = STATX_TYPE | STATX_SIZE | STATX_MTIME;
    const bool isKnown = ::statx(folder, name.c_str(), AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, wanted, &status) == 0;
    node.blocked = isKnown ? nullptr : messages::blockedUnavailable;
    node.directory = S_ISDIR(status.stx_mode);
    node.size = node.directory ? 0 : static_cast<int64_t>(status.stx_size);
    node.modified =
        static_cast<double>(status.stx_mtime.tv_sec) * 1000 + static_cast<double>(status.stx_mtime.tv_nsec) / 1'000'000;
    if (!isKnown)
        return; // nothing was filled in
    if (S_ISLNK(status.stx_mode))
        node.blocked = messages::blockedLink;
    else if (!node.directory && !S_ISREG(status.stx_mode))
        node.blocked = messages::blockedSpecial;
}

} // namespace

std::vector<const Node*> listFolder(Session& session, const std::string& path, const WorkWatch& watch) {
    const OpenFolder folder = openFolder(session.source, path);
    const std::vector<std::string> names = namesIn(folder, session.source.appending(path));

    std::vector<std::pmr::string> paths;
    paths.reserve(names.size());
    for (const auto& name : names) {
        watch.check();
        std::pmr::string relative(path);
        if (!relative.empty())
            relative += '/';
        relative += name;
        const auto place = session.nodes.try_emplace(relative).first;
        place->second.path = place->first;
        describe(place->second, ::dirfd(folder.get()), name);
        paths.push_back(std::move(relative));
    }

    // Built aside: until it is complete the session stays as it was.
    Session::Index byID;
    std::vector<const Node*> listed;
    std::vector<Nodes::const_iterator> places;
    listed.reserve(paths.size());
    places.reserve(paths.size());
    for (const auto& relative : paths) {
        const auto place = session.nodes.find(relative);
        if (!Session::identify(place->second, byID))
            continue; // a folder that changes may name an entry twice
        listed.push_back(&place->second);
        places.push_back(place);
    }
    Nodes kept;
    kept.reserve(places.size());
    for (const auto& place : places)
        kept.insert(session.nodes.extract(place));
    session.nodes = std::move(kept);
    session.byID = std::move(byID);
    return listed;
}

} // namespace quillmere
