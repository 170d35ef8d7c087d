#pragma once

#include "platform/Services.h"

namespace quillmere::platform {

/// The user's folders by the rules of the XDG base directories; a variable that is not an absolute path counts as
/// unset. Without a home, only what the environment names exists. Reads the environment: call before other threads run.
Directories userDirectories();

/// The property list of the user's defaults, in the user's configuration folder.
std::optional<FileUrl> userDefaultsFile();

} // namespace quillmere::platform
