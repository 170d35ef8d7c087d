#pragma once

#include "platform/ImageCodec.h"
#include "platform/Services.h"

#include <string>

namespace quillmere {

/// What the built-in checks came to, and what to write where.
struct SelfTestReport {
    int status = 0;
    std::string output; // for standard output
    std::string error;  // for standard error
};

/// Checks the range parser, the rules for the installed copy and the document icons of this bundle. Opens no window and
/// touches no user data. A rule that does not hold stops the process.
SelfTestReport runSelfTest(const platform::Bundle& bundle, platform::ImageCodec& images);

} // namespace quillmere
