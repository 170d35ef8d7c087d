#pragma once

#include "base/FileUrl.h"
#include "base/Text.h"
#include "base/Uuid.h"
#include "containers/EntryPath.h"

#include <cstdint>
#include <memory>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quillmere {

/// One entry of a folder or archive.
struct Node {
    std::string id{};        ///< given when it is listed first
    std::string_view path{}; ///< its key in the session: relative to the root, as the file system or archive spells it
    bool directory = false;
    int64_t size = 0;                 ///< bytes, -1 when unknown
    double modified = 0;              ///< milliseconds since 1970, 0 when unknown
    const char* blocked = nullptr;    ///< a sentence of ContainerMessages.h: why it cannot be opened
    std::optional<int64_t> ordinal{}; ///< 1-based position among the archive's headers

    /// The last component, as it is shown.
    std::string name() const { return displayText(lastOfPath(path)); }
};

/// By path.
using Nodes = std::pmr::unordered_map<std::pmr::string, Node>;

/// An opened folder or archive. Guarded by the browser's lock.
struct Session {
    const std::string token;
    const FileUrl source; ///< links resolved
    const bool archive;
    const std::string fingerprint; ///< of the source, when it was opened
    const std::optional<std::string> parentToken;
    const std::string displayPath;

    std::string current{}; ///< path of the folder listed last
    /// The thousands of nodes of an archive come once and go together; those of a folder come and go.
    std::unique_ptr<std::pmr::monotonic_buffer_resource> arena =
        archive ? std::make_unique<std::pmr::monotonic_buffer_resource>() : nullptr;
    Nodes nodes{arena ? arena.get() : std::pmr::get_default_resource()};
    using Index = std::unordered_map<std::string_view, const Node*>;
    Index byID{}; ///< those that have an id
    std::unordered_map<std::string, FileUrl> extracted{};

    /// Makes sure that the page can name the node; whether the index did not have it.
    static bool identify(Node& node, Index& index) {
        if (node.id.empty())
            node.id = newUuid();
        return index.emplace(node.id, &node).second;
    }
};

} // namespace quillmere
