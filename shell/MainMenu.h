#pragma once

#include "platform/Menu.h"

namespace quillmere {

/// The program's menu bar.
platform::MenuSpec mainMenu();

} // namespace quillmere
