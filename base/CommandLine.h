#pragma once

#include "base/FileUrl.h"

#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// What a command line asks for.
enum class CommandLineRequest { run, selfTest, help, version };
/// "--self-test" counts wherever it stands and before all else; "--help" and "--version" before a "--".
CommandLineRequest commandLineRequest(const std::vector<std::string>& arguments);

/// The file that a command line names: the first argument after the program's that does not begin with "-". Where there
/// is none, an argument after "--" is taken whatever it begins with. It is a path, or a "file:" address.
std::optional<FileUrl> namedFile(const std::vector<std::string>& arguments);

} // namespace quillmere
