#include "platform/gtk/desktop/MimeAppsList.h"

#include "platform/gtk/glib/GObjectRef.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace quillmere::platform::gtk {

namespace {

constexpr const char* defaultsGroup = "Default Applications";
constexpr const char* addedGroup = "Added Associations";
constexpr const char* markGroup = "X-Quillmere Kept Defaults";

KeyFile parsed(const std::string& list) {
    KeyFile file(g_key_file_new());
    if (list.empty() ||
        g_key_file_load_from_data(file.get(), list.c_str(), list.size(), G_KEY_FILE_KEEP_COMMENTS, nullptr))
        return file;
    return nullptr;
}

/// One empty line before a group or a comment that had some, and none elsewhere: each change leaves another behind.
std::string withoutGaps(std::string_view text) {
    std::string result;
    bool isGap = false;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size() - 1) + 1;
        const auto line = text.substr(0, end);
        text.remove_prefix(end);
        const bool isEmpty = line == "\n";
        if (isGap && !isEmpty && !result.empty() && (line.front() == '[' || line.front() == '#'))
            result += '\n';
        if (!isEmpty)
            result += line;
        isGap = isEmpty;
    }
    return result;
}

std::string written(const KeyFile& file) {
    gsize length = 0;
    const GlibText text(g_key_file_to_data(file.get(), &length, nullptr));
    return text ? withoutGaps({text.get(), length}) : std::string();
}

std::vector<std::string> keysOf(const KeyFile& file, const char* group) {
    std::vector<std::string> keys;
    const TextList found(g_key_file_get_keys(file.get(), group, nullptr, nullptr));
    for (char** key = found.get(); key && *key; ++key)
        keys.emplace_back(*key);
    return keys;
}

std::string valueOf(const KeyFile& file, const char* group, const std::string& key) {
    const GlibText value(g_key_file_get_string(file.get(), group, key.c_str(), nullptr));
    return value ? value.get() : "";
}

void removeIfEmpty(const KeyFile& file, const char* group) {
    if (g_key_file_has_group(file.get(), group) && keysOf(file, group).empty())
        g_key_file_remove_group(file.get(), group, nullptr);
}

TypeDefaults marked(const KeyFile& file) {
    TypeDefaults kept;
    for (const auto& type : keysOf(file, markGroup))
        kept[type] = valueOf(file, markGroup, type);
    return kept;
}

void removeFromList(const KeyFile& file, const char* group, const std::string& type, const std::string& application) {
    gsize length = 0;
    const TextList list(g_key_file_get_string_list(file.get(), group, type.c_str(), &length, nullptr));
    std::vector<const char*> others;
    for (gsize index = 0; index < length; ++index)
        if (application != list.get()[index])
            others.push_back(list.get()[index]);
    if (others.size() == length)
        return;
    if (others.empty())
        g_key_file_remove_key(file.get(), group, type.c_str(), nullptr);
    else
        g_key_file_set_string_list(file.get(), group, type.c_str(), others.data(), others.size());
}

} // namespace

std::string withKeptDefaults(const std::string& list, const TypeDefaults& kept) {
    const KeyFile file = parsed(list);
    if (!file)
        return list;
    for (const auto& [type, application] : marked(file))
        if (valueOf(file, defaultsGroup, type) == application)
            g_key_file_remove_key(file.get(), defaultsGroup, type.c_str(), nullptr);
    g_key_file_remove_group(file.get(), markGroup, nullptr);
    for (const auto& [type, application] : kept) {
        if (!valueOf(file, defaultsGroup, type).empty())
            continue; // somebody has chosen
        g_key_file_set_string(file.get(), defaultsGroup, type.c_str(), application.c_str());
        g_key_file_set_string(file.get(), markGroup, type.c_str(), application.c_str());
    }
    removeIfEmpty(file, defaultsGroup);
    return written(file);
}

TypeDefaults keptDefaults(const std::string& list) {
    const KeyFile file = parsed(list);
    return file ? marked(file) : TypeDefaults();
}

std::string withoutApplication(const std::string& list, const std::string& application) {
    const KeyFile file = parsed(list);
    if (!file)
        return list;
    for (const char* group : {defaultsGroup, addedGroup}) {
        for (const auto& type : keysOf(file, group))
            removeFromList(file, group, type, application);
        removeIfEmpty(file, group);
    }
    return written(file);
}

} // namespace quillmere::platform::gtk
