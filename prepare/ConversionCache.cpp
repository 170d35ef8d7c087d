#include "prepare/ConversionCache.h"

#include "base/FileDescriptor.h"
#include "base/FolderAccess.h"
#include "base/RegularFile.h"
#include "base/Sha256.h"
#include "base/Text.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace quillmere {

namespace {

/// A file that goes on changing is shown as it was at the last attempt.
constexpr int attempts = 2;
/// With less left on the disk, a converter may have run out of it.
constexpr uint64_t leastRoom = uint64_t{64} * 1024;

std::string sentence(int errorNumber, const FileUrl& original) {
    const std::string name = "“" + displayText(original.lastPathComponent()) + "”";
    if (errorNumber == ENOSPC || errorNumber == EDQUOT)
        return "There is not enough free space on the disk to convert " + name + ".";
    return name + " could not be converted because the folder for converted files cannot be used.";
}

/// What another user could put there would be shown as this user's documents.
void requireOwn(const FileUrl& folder, const FileUrl& original) {
    struct stat info{};
    if (::stat(folder.path().c_str(), &info) != 0)
        return; // it is made when it is needed
    if (!S_ISDIR(info.st_mode))
        throw UnusableCache(ENOTDIR, original);
    if (!isPrivateFolder(info))
        throw UnusableCache(EPERM, original);
}

void requireRoom(const FileUrl& folder, const FileUrl& original) {
    struct statvfs info{};
    if (::statvfs(folder.path().c_str(), &info) != 0)
        return;
    const auto blocks = ::geteuid() == 0 ? info.f_bfree : info.f_bavail;
    if (uint64_t{blocks} * info.f_frsize < leastRoom)
        throw UnusableCache(ENOSPC, original);
}

std::optional<FileIdentity> regularFileAt(const FileUrl& file) {
    struct stat info{};
    if (::lstat(file.path().c_str(), &info) != 0 || !S_ISREG(info.st_mode) || info.st_size == 0)
        return std::nullopt;
    return FileIdentity{.device = info.st_dev, .file = info.st_ino};
}

bool isThere(const FileUrl& file) {
    struct stat info{};
    return ::lstat(file.path().c_str(), &info) == 0;
}

/// Moves what a converter has left to its place. A link in its stead would lead to any file of the user.
void keep(const FileUrl& produced, const FileUrl& out, const FileUrl& original, const Converter& converter) {
    requireRoom(out.parent(), original);
    const auto identity = regularFileAt(produced);
    if (!identity)
        throw FileFailure(converter.failure());
    const RegularFile file(produced);
    if (file.identity() != identity || !isWhole(file, converter.format()))
        throw FileFailure(converter.failure());
    if (::fsync(file.descriptor()) != 0 || std::rename(produced.path().c_str(), out.path().c_str()) != 0)
        throwFileError(errno, original.path());
    if (regularFileAt(out) != identity) {
        ::unlink(out.path().c_str());
        throw FileFailure(converter.failure());
    }
    // The new name reaches the disk with the folder. A file system that cannot flush folders keeps its own order.
    if (const FileDescriptor folder(::open(out.parent().path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)); folder)
        ::fsync(folder.get());
}

WorkFolder makeWorkFolder(const FileUrl& folder, const FileUrl& original) {
    try {
        const auto work = platform::TemporaryFolder::makeInside(folder);
        requireRoom(folder, original);
        return work;
    } catch (const std::filesystem::filesystem_error& error) {
        throw UnusableCache(error.code().value(), original);
    }
}

} // namespace

UnusableCache::UnusableCache(int errorNumber, const FileUrl& original) : FileFailure(sentence(errorNumber, original)) {}

std::string ConversionCache::key(const FileUrl& original) {
    struct stat info{};
    double modified = 0;
    if (::stat(original.path().c_str(), &info) == 0)
        modified = static_cast<double>(info.st_mtim.tv_sec) + static_cast<double>(info.st_mtim.tv_nsec) / 1e9;
    else
        info = {};
    return sha256Hex(original.path() + "|" + std::to_string(info.st_size) + "|" + shortestDouble(modified));
}

std::optional<FileUrl> ConversionCache::result(const FileUrl& original, const FileUrl& folder,
                                               const Converter& converter, const std::stop_token& superseded) {
    requireOwn(folder, original);
    for (int attempt = 0;;) {
        const std::string fileKey = key(original);
        FileUrl out = folder.appending(fileKey + "." + extensionOf(converter.format()));
        if (regularFileAt(out))
            return out;
        queue_.run(out.path(), converter.kind(), superseded, [&] {
            if (regularFileAt(out))
                return;
            ++attempt;
            const auto work = makeWorkFolder(folder, original);
            const auto produced = converter.convert(original, work);
            if (produced && isThere(*produced) && (attempt == attempts || key(original) == fileKey))
                keep(*produced, out, original, converter);
        });
        if (regularFileAt(out))
            return out;
        // Whoever did the work may have done it for a file that is no longer there.
        if (attempt == attempts || key(original) == fileKey)
            return std::nullopt;
    }
}

} // namespace quillmere
