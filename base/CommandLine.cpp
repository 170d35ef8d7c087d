#include "base/CommandLine.h"

#include <algorithm>

namespace quillmere {

CommandLineRequest commandLineRequest(const std::vector<std::string>& arguments) {
    if (std::ranges::find(arguments, "--self-test") != arguments.end())
        return CommandLineRequest::selfTest;
    for (size_t index = 1; index < arguments.size() && arguments[index] != "--"; ++index) {
        if (arguments[index] == "--help" || arguments[index] == "-h")
            return CommandLineRequest::help;
        if (arguments[index] == "--version")
            return CommandLineRequest::version;
    }
    return CommandLineRequest::run;
}

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
    if (const auto address = FileUrl::fromUri(*named))
        return address->resolvingDots();
    return FileUrl(named->empty() ? "." : *named).resolvingDots();
}

} // namespace quillmere
