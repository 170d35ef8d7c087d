#pragma once

#include "base/RegularFile.h"

namespace quillmere {

/// What conversions make.
enum class ResultFormat { png, pdf, mp4, m4a };

const char* extensionOf(ResultFormat format);

/// Whether the file begins and ends as its format demands. Converters that run out of space leave a part of it and say
/// that all is well.
bool isWhole(const RegularFile& file, ResultFormat format);

} // namespace quillmere
