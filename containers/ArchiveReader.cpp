#include "containers/ArchiveReader.h"

#include "base/Text.h"
#include "containers/ContainerMessages.h"
#include "containers/FileFacts.h"

#include <filesystem>
#include <system_error>

namespace quillmere {

ContainerError archiveFailure(const ArchiveReader& reader) {
    const std::string text = displayText(reader.errorText().value_or(messages::corruptOrUnsupported));
    const std::string lower = asciiLower(text);
    if (lower.find("passphrase") != std::string::npos || lower.find("encrypt") != std::string::npos)
        return ContainerError(messages::encryptedArchive);
    return ContainerError(messages::readFailurePrefix + text);
}

FileDescriptor openArchive(const FileUrl& archive) {
    try {
        return fileFacts::openWithoutLinks(archive, fileFacts::Handle::contents);
    } catch (const std::filesystem::filesystem_error& error) {
        if (error.code() == std::errc::too_many_symbolic_link_levels)
            throw ContainerError(messages::archiveChanged);
        throw ContainerError(messages::readFailurePrefix + displayText("Failed to open '" + archive.path() + "'"));
    }
}

} // namespace quillmere
