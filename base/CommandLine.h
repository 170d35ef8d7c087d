#pragma once

#include "base/FileUrl.h"

#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// The file that a command line names: the first argument after the program's that does not begin with "-". Where there
/// is none, an argument after "--" is taken whatever it begins with.
std::optional<FileUrl> namedFile(const std::vector<std::string>& arguments);

} // namespace quillmere
