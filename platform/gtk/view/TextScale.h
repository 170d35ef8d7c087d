#pragma once

#include <string>

namespace quillmere::platform::gtk {

/// How much larger than usual the user wants text: the desktop's text resolution over 96. The engine draws the page in
/// this scale, so the native parts follow it. 1 before a display is open.
double textScale();

/// A length of the layout in the toolkit's pixels, at the text scale.
int scaled(double points);

/// Style rules whose lengths follow the text scale: a CSS pixel of the text is meant as a 96th of an inch.
std::string scalingLengths(const std::string& rules);

} // namespace quillmere::platform::gtk
