#include "prepare/FileKinds.h"

#include <map>

namespace quillmere {

namespace {

std::map<std::string, FileKind, std::less<>> readTable() {
    std::map<std::string, FileKind, std::less<>> kinds;
    for (const auto& row : fileKindTable)
        for (std::string_view rest = row.extensions; !rest.empty();) {
            const size_t end = std::min(rest.find(' '), rest.size());
            kinds.emplace(rest.substr(0, end), row.kind);
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    return kinds;
}

} // namespace

FileKind fileKind(const std::string& extension) {
    static const auto kinds = readTable();
    const auto found = kinds.find(extension);
    return found == kinds.end() ? FileKind::other : found->second;
}

} // namespace quillmere
