#include "bridge/OpenRules.h"

#include <algorithm>
#include <array>

namespace quillmere {

bool needsNativePreview(std::string_view lowerExtension) {
    static constexpr std::array<std::string_view, 6> previewed = {"pages", "key", "doc", "dot", "ps", "eps"};
    return std::ranges::find(previewed, lowerExtension) != previewed.end();
}

bool isConvertedMedia(std::string_view extension) {
    return extension == "mp4" || extension == "m4a";
}

} // namespace quillmere
