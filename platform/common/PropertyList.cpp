#include "platform/common/PropertyList.h"

#include <cstdlib>
#include <fstream>
#include <utility>

namespace quillmere::platform {

namespace {

/// No property list that we read comes near it.
constexpr std::uintmax_t maximumFileSize = 64U << 20;

struct Freed {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

/// The value of a node; none for a kind that JSON has not.
std::optional<json::value> jsonValue(plist_t node);

json::array jsonArray(plist_t node) {
    json::array array;
    for (uint32_t i = 0; i < plist_array_get_size(node); ++i)
        if (auto value = jsonValue(plist_array_get_item(node, i)))
            array.push_back(std::move(*value));
    return array;
}

std::optional<json::value> jsonValue(plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return value != 0;
    }
    case PLIST_UINT: {
        // Negative numbers are stored in the same 64 bits.
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return static_cast<int64_t>(value);
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    case PLIST_STRING:
        return json::value(json::string(stringValue(node).value_or("")));
    case PLIST_ARRAY:
        return jsonArray(node);
    case PLIST_DICT:
        return jsonObject(node);
    case PLIST_DATE:
    case PLIST_DATA:
    case PLIST_KEY:
    case PLIST_UID:
    case PLIST_NONE:
        break;
    }
    return std::nullopt;
}

} // namespace

PropertyList readPropertyList(const FileUrl& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file.filesystemPath(), error);
    if (error || size == 0 || size > maximumFileSize)
        return nullptr;
    std::string bytes(static_cast<size_t>(size), '\0');
    if (!std::ifstream(file.filesystemPath(), std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(size)))
        return nullptr;
    plist_t node = nullptr;
    plist_from_memory(bytes.data(), static_cast<uint32_t>(bytes.size()), &node);
    PropertyList list(node);
    return node && plist_get_node_type(node) == PLIST_DICT ? std::move(list) : nullptr;
}

JsonObject jsonObject(plist_t dictionary) {
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(dictionary, &position);
    const std::unique_ptr<void, Freed> owner(position);
    JsonObject object;
    for (;;) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(dictionary, position, &key, &item);
        const std::unique_ptr<char, Freed> keyOwner(key);
        if (!item)
            return object;
        if (auto value = key ? jsonValue(item) : std::nullopt)
            object.insert_or_assign(key, std::move(*value));
    }
}

std::optional<std::string> stringValue(plist_t node) {
    if (!node || plist_get_node_type(node) != PLIST_STRING)
        return std::nullopt;
    uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return text ? std::string(text, length) : std::string();
}

std::optional<std::string> dataValue(plist_t node) {
    if (!node || plist_get_node_type(node) != PLIST_DATA)
        return std::nullopt;
    uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return bytes ? std::string(bytes, length) : std::string();
}

} // namespace quillmere::platform
