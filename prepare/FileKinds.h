#pragma once

#include <string>

namespace quillmere {

/// The road of a file, by its lower-case extension. One of transport streams is media by its contents, see
/// FilePreparation.
enum class FileKind { image, officeWords, officeSlides, legacyVideo, legacyAudio, other };

FileKind fileKind(const std::string& extension);

} // namespace quillmere
