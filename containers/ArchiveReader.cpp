#include "containers/ArchiveReader.h"

#include "base/Text.h"
#include "containers/ContainerMessages.h"

namespace quillmere {

ContainerError archiveFailure(const ArchiveReader& reader) {
    const std::string text = displayText(reader.errorText().value_or(messages::corruptOrUnsupported));
    const std::string lower = asciiLower(text);
    if (lower.find("passphrase") != std::string::npos || lower.find("encrypt") != std::string::npos)
        return ContainerError(messages::encryptedArchive);
    return ContainerError(messages::readFailurePrefix + text);
}

} // namespace quillmere
