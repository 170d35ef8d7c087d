#pragma once

#include <string_view>

namespace quillmere {

/// Whether, by its lower-case extension, a file is shown by the platform's own preview where there is no LibreOffice.
bool needsNativePreview(std::string_view lowerExtension);

/// Whether a prepared file of this extension, other than the original, is the product of a media conversion.
bool isConvertedMedia(std::string_view extension);

} // namespace quillmere
