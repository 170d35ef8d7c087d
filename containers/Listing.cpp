#include "containers/Listing.h"

#include "base/Text.h"

namespace quillmere {

namespace {

JsonObject entryRecord(const Node& node) {
    const std::string name = node.name();
    JsonObject record;
    record.reserve(7);
    record["id"] = node.id;
    record["name"] = name;
    record["isDirectory"] = node.directory;
    record["size"] = node.size < 0 ? json::value(nullptr) : json::value(node.size);
    record["modified"] = node.modified;
    record["ext"] = node.directory ? std::string() : lowercase(extensionOfName(name));
    if (node.blocked)
        record["blockedReason"] = node.blocked;
    return record;
}

} // namespace

JsonObject listingRecord(const Session& session, const std::string& path, const std::vector<const Node*>& sorted) {
    std::string shownPath = session.displayPath;
    if (!path.empty())
        shownPath += (session.archive ? " / " : "/") + path;

    json::array entries;
    entries.reserve(sorted.size());
    for (const Node* node : sorted)
        entries.emplace_back(entryRecord(*node));

    const bool hasParent = !path.empty() || session.parentToken;
    JsonObject record;
    record["token"] = session.token;
    record["name"] = displayText(session.source.lastPathComponent());
    record["kind"] = session.archive ? "archive" : "folder";
    record["path"] = displayText(shownPath);
    record["parentId"] = hasParent ? json::value("parent") : json::value(nullptr);
    record["entries"] = std::move(entries);
    return record;
}

} // namespace quillmere
