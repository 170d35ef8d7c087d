#include "base/Errors.h"

#include "base/FileUrl.h"
#include "base/Text.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace quillmere {

namespace fs = std::filesystem;

namespace {

std::string sentence(const std::error_code& code, const std::string& path) {
    const std::string item =
        path.empty() ? "The item" : "“" + displayText(FileUrl(fs::path(path)).lastPathComponent()) + "”";
    if (code.category() != std::generic_category() && code.category() != std::system_category())
        return item + " could not be used.";
    switch (code.value()) {
    case ENOENT:
    case ENOTDIR:
        return item + " no longer exists.";
    case EACCES:
    case EPERM:
        return "You do not have permission to open " + (path.empty() ? "the item" : item) + ".";
    case EISDIR:
        return item + " is a folder.";
    case ELOOP:
        return item + " is a link that could not be followed.";
    case ENOSPC:
    case EDQUOT:
        return "There is not enough free space on the disk for " + (path.empty() ? "the item" : item) + ".";
    case EROFS:
        return item + " could not be saved because the disk is read-only.";
    case ENAMETOOLONG:
        return "The name of " + (path.empty() ? "the item" : item) + " is too long.";
    case EFBIG:
        return item + " is too large.";
    case EMFILE:
    case ENFILE:
        return item + " could not be opened because too many files are open.";
    case ENOMEM:
        return item + " could not be opened because there is not enough memory.";
    case EEXIST:
        return item + " already exists.";
    case EINVAL:
    case ENXIO:
    case ENODEV:
        return item + " is not a regular file.";
    case EIO:
    case ESTALE:
        return item + " could not be read because of a disk error.";
    default:
        return item + " could not be opened.";
    }
}

} // namespace

std::string userMessage(const std::exception& error) {
    if (dynamic_cast<const CancellationError*>(&error))
        return {};
    if (const auto* file = dynamic_cast<const fs::filesystem_error*>(&error))
        return sentence(file->code(), file->path1().native());
    if (const auto* system = dynamic_cast<const std::system_error*>(&error))
        return sentence(system->code(), {});
    if (dynamic_cast<const FileFailure*>(&error) || dynamic_cast<const ContainerError*>(&error))
        return error.what();
    if (dynamic_cast<const std::bad_alloc*>(&error))
        return "There is not enough memory to open this item.";
    return "This item could not be opened.";
}

std::exception_ptr fileError(int errorNumber, const std::string& path) {
    return std::make_exception_ptr(
        fs::filesystem_error("file", fs::path(path), std::error_code(errorNumber, std::generic_category())));
}

void throwFileError(int errorNumber, const std::string& path) {
    std::rethrow_exception(fileError(errorNumber, path));
}

} // namespace quillmere
