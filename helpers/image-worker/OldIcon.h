#pragma once

#include "helpers/image-worker/ImageReader.h"

#include <optional>
#include <span>
#include <string_view>

namespace quillmere::images {

/// A member of an icon file: its four letters and its bytes, in memory that outlives it.
struct IconMember {
    std::string_view type;
    std::string_view contents;
};

/// The best of the members from before icons held image files: 128 x 128 pixels at most, in colours (run-length coded
/// or plain), of a palette, or black and white, with the mask that lies beside them. Nothing when none is whole.
std::optional<Image> oldIcon(std::span<const IconMember> members);

} // namespace quillmere::images
