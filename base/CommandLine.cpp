#include "base/CommandLine.h"

#include <algorithm>

namespace quillmere {

std::optional<FileUrl> namedFile(const std::vector<std::string>& arguments) {
    if (arguments.empty())
        return std::nullopt;
    const auto first = std::next(arguments.begin()), end = arguments.end();
    auto named = std::find_if(first, end, [](const auto& argument) { return !argument.starts_with('-'); });
    if (named == end) {
        const auto separator = std::find(first, end, "--");
        named = separator == end ? end : std::next(separator);
    }
    if (named == end)
        return std::nullopt;
    return FileUrl(named->empty() ? "." : *named).resolvingDots();
}

} // namespace quillmere
