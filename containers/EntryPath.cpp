#include "containers/EntryPath.h"

#include "base/Errors.h"
#include "base/Text.h"
#include "containers/ContainerLimits.h"
#include "containers/ContainerMessages.h"

#include <algorithm>
#include <vector>

namespace quillmere {

namespace {

bool isForbidden(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7F || character == '\\' || character == ':';
}

/// The name that the raw format gives to its one entry.
constexpr std::string_view rawEntryName = "data";

} // namespace

std::string safeArchivePath(std::string_view name) {
    if (name.empty() || name.size() > limits::pathBytes || name.front() == '/' ||
        std::ranges::any_of(name, isForbidden))
        throw ContainerError(messages::unsafeOrUnsupportedPath);

    std::string path;
    path.reserve(name.size());
    size_t components = 0;
    for (size_t start = 0; start <= name.size();) {
        const size_t end = std::min(name.find('/', start), name.size());
        const std::string_view component = name.substr(start, end - start);
        start = end + 1;
        if (component.empty() || component == ".")
            continue;
        if (component == ".." || ++components > limits::pathComponents)
            throw ContainerError(messages::unsafePath);
        if (!path.empty())
            path += '/';
        path += component;
    }
    return path;
}

bool isRawFormat(const EntryFacts& facts) {
    constexpr std::string_view raw = "raw";
    const auto sameLetter = [](char left, char right) { return (left | 0x20) == right; };
    return !std::ranges::search(facts.format, raw, sameLetter).empty();
}

std::string entryPath(const EntryFacts& facts, const FileUrl& archive) {
    if (!facts.name || !isValidUtf8(*facts.name))
        throw ContainerError(messages::undecodableName);
    if (*facts.name != rawEntryName || !isRawFormat(facts))
        return safeArchivePath(*facts.name);
    const std::string file = displayText(archive.lastPathComponent());
    const std::string extension = extensionOfName(file);
    return safeArchivePath(extension.empty() ? file : file.substr(0, file.size() - extension.size() - 1));
}

std::string_view parentOfPath(std::string_view path) {
    const auto slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

std::string_view lastOfPath(std::string_view path) {
    const auto slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

} // namespace quillmere
