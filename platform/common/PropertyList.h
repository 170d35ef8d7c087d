#pragma once

#include "base/FileUrl.h"
#include "base/Json.h"

#include <memory>
#include <optional>
#include <plist/plist.h>
#include <string>

namespace quillmere::platform {

struct PropertyListDeleter {
    void operator()(void* node) const noexcept { plist_free(node); }
};
/// Owns a property list with everything in it.
using PropertyList = std::unique_ptr<void, PropertyListDeleter>;

/// A property list of any format whose root is a dictionary; none when the file cannot be read or holds none.
PropertyList readPropertyList(const FileUrl& file);

/// The dictionary as JSON values; dates and data are left out.
JsonObject jsonObject(plist_t dictionary);

/// The text or the bytes of a node; nothing when the node is of another kind.
std::optional<std::string> stringValue(plist_t node);
std::optional<std::string> dataValue(plist_t node);

} // namespace quillmere::platform
