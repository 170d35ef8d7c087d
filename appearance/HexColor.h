#pragma once

#include "platform/view/Geometry.h"

#include <string>
#include <string_view>

namespace quillmere {

/// The opaque colour that a text such as "#1a2b3c" names: the low 24 bits of a hexadecimal number of 32. The default
/// tint where it names none.
view::Color colorFromHex(std::string_view text);

/// "#" and two lower-case digits per component; a part of a step is cut off, and so is the alpha.
std::string hexFromColor(const view::Color& color);

} // namespace quillmere
