#include "containers/PreviewCache.h"

#include "base/Errors.h"
#include "base/FolderAccess.h"
#include "base/Uuid.h"
#include "containers/ContainerLimits.h"
#include "containers/ContainerMessages.h"
#include "containers/FileFacts.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <vector>

namespace quillmere {

namespace {

constexpr mode_t folderMode = 0700;
constexpr mode_t fileMode = 0600;
constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// Names in an open folder; none when it cannot be read.
std::vector<std::string> namesIn(int folder) {
    std::vector<std::string> names;
    if (const OpenFolder entries = readFolder(FileDescriptor(::openat(folder, ".", folderFlags))))
        while (const auto name = nextName(entries))
            names.emplace_back(*name);
    return names;
}

/// Removes what is under this name, a folder with all that is in it; links are removed, not followed.
void removeTree(int folder, const std::string& name) {
    if (::unlinkat(folder, name.c_str(), 0) == 0 || errno == ENOENT)
        return;
    const FileDescriptor inside(::openat(folder, name.c_str(), folderFlags));
    if (inside)
        for (const auto& child : namesIn(inside.get()))
            removeTree(inside.get(), child);
    ::unlinkat(folder, name.c_str(), AT_REMOVEDIR);
}

/// Whether nobody else can change what the folder holds.
bool isOurs(const FileDescriptor& folder) {
    struct stat status{};
    return ::fstat(folder.get(), &status) == 0 && isPrivateFolder(status);
}

/// The folder of this name in an open one, made if it is missing.
FileDescriptor enter(const FileDescriptor& parent, const std::string& name, const FileUrl& named) {
    if (::mkdirat(parent.get(), name.c_str(), folderMode) != 0 && errno != EEXIST)
        throwFileError(errno, named.path());
    FileDescriptor folder(::openat(parent.get(), name.c_str(), folderFlags));
    if (!folder)
        throwFileError(errno, named.path());
    if (!isOurs(folder))
        throw ContainerError(messages::cacheNotCreated);
    return folder;
}

FileDescriptor openExisting(const FileUrl& folder) {
    FileDescriptor opened(::open(folder.path().c_str(), folderFlags));
    return opened && isOurs(opened) ? std::move(opened) : FileDescriptor();
}

} // namespace

std::string entryFileName(std::string_view entryName) {
    if (entryName.size() <= limits::entryNameBytes)
        return std::string(entryName);
    const std::string extension = extensionOfName(entryName);
    size_t end = 0;
    for (size_t characters = 0; end < extension.size(); ++end) {
        const bool startsCharacter = (static_cast<unsigned char>(extension[end]) & 0xC0U) != 0x80;
        if (startsCharacter && ++characters > limits::shortExtensionCharacters)
            break;
    }
    return "preview." + extension.substr(0, end);
}

bool PreviewCache::sweep(WallTime now, const CancellationTest& cancelled) const noexcept {
    try {
        const FileDescriptor folder = openExisting(folder_);
        if (!folder)
            return true;
        const auto oldest =
            std::chrono::duration_cast<std::chrono::nanoseconds>((now - cacheAgeLimit).time_since_epoch());
        for (const auto& name : namesIn(folder.get())) {
            if (cancelled())
                return false;
            struct stat status{};
            if (!isUuid(name) || ::fstatat(folder.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
                continue;
            const auto modified =
                std::chrono::seconds(status.st_mtim.tv_sec) + std::chrono::nanoseconds(status.st_mtim.tv_nsec);
            if (modified < oldest)
                removeTree(folder.get(), name);
        }
    } catch (const std::exception&) {
        // What could not be removed now is removed at another start.
    }
    return true;
}

void PreviewCache::removeSession(std::string_view token) const noexcept {
    try {
        // The page knows tokens; nothing that is not one may name a folder here.
        const FileDescriptor folder = isUuid(token) ? openExisting(folder_) : FileDescriptor();
        if (folder)
            removeTree(folder.get(), std::string(token));
    } catch (const std::exception&) {
        // The sweep removes it later.
    }
}

PreviewCache::EntryFile PreviewCache::createEntry(const std::string& token, const std::string& id,
                                                  std::string_view entryName) const {
    // What lies above the cache is the user's affair and may well be reached through links.
    const FileUrl above = folder_.parent();
    makePrivateFolders(above);
    const FileDescriptor parent(::open(above.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!parent)
        throwFileError(errno, above.path());
    const FileDescriptor cache = enter(parent, folder_.lastPathComponent(), folder_);
    FileDescriptor session = enter(cache, token, folder_.appending(token));
    const FileUrl entryFolder = folder_.appending(token).appending(id);
    const FileDescriptor entry = enter(session, id, entryFolder);

    const std::string name = entryFileName(entryName);
    // A file that was extracted before and cannot be read any more makes room.
    ::unlinkat(entry.get(), name.c_str(), 0);
    FileDescriptor file(
        ::openat(entry.get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, fileMode));
    if (!file)
        throw ContainerError(messages::cacheNotCreated);
    return {entryFolder.appending(name), std::move(session), id, std::move(file)};
}

FileDescriptor PreviewCache::entryPlace(const FileUrl& entryFile) const {
    const FileDescriptor cache = openExisting(folder_);
    if (!cache)
        throw ContainerError(messages::itemReplaced);
    const std::string relative = entryFile.path().substr(folder_.path().size() + 1);
    return fileFacts::openBelow(cache, relative, fileFacts::Handle::place, entryFile);
}

PreviewCache::EntryFile::~EntryFile() {
    if (!file_)
        return;
    file_.reset();
    try {
        removeTree(session_.get(), id_);
    } catch (const std::exception&) {
        // It goes with its session.
    }
}

void PreviewCache::EntryFile::write(std::string_view bytes) {
    if (!writeAll(file_.get(), bytes))
        throwFileError(errno, url_.path());
}

FileUrl PreviewCache::EntryFile::keep() {
    file_.reset();
    return url_;
}

} // namespace quillmere
