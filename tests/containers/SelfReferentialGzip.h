#pragma once

#include <string>

namespace quillmere::testing {

/// A gzip file of 120 bytes that unpacks to exactly itself, and so has no innermost layer. The same bytes every time.
std::string selfReferentialGzip();

} // namespace quillmere::testing
