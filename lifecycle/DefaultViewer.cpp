#include "lifecycle/DefaultViewer.h"

#include "base/RegularFile.h"
#include "lifecycle/InstalledCopy.h"
#include "lifecycle/LifecycleMessages.h"

#include <algorithm>
#include <array>

namespace quillmere {

namespace {

std::optional<std::string> contentsOf(const FileUrl& url) {
    try {
        const RegularFile file(url);
        std::array<std::byte, size_t{16} * 1024> piece;
        std::string text;
        while (const size_t got = file.read(text.size(), piece.data(), piece.size()))
            text.append(reinterpret_cast<const char*>(piece.data()), got);
        return text;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

/// The keys of a JSON object whose values are all texts; nothing of anything else.
std::optional<std::set<std::string>> keysOfTexts(const std::string& json) {
    boost::system::error_code error;
    const auto value = boost::json::parse(json, error);
    if (error || !value.is_object())
        return std::nullopt;
    std::set<std::string> keys;
    for (const auto& [key, text] : value.get_object()) {
        if (!text.is_string())
            return std::nullopt;
        keys.emplace(key);
    }
    return keys;
}

/// The texts of a list that holds nothing else.
std::set<std::string> texts(const boost::json::value* list) {
    std::set<std::string> found;
    if (list && list->is_array())
        for (const auto& text : list->get_array()) {
            if (!text.is_string())
                return {};
            found.emplace(text.get_string());
        }
    return found;
}

std::set<std::string> extensionsOf(const JsonObject& properties) {
    const auto* documents = properties.if_contains("CFBundleDocumentTypes");
    if (!documents || !documents->is_array())
        return {};
    const auto& entries = documents->get_array();
    if (!std::ranges::all_of(entries, [](const auto& entry) { return entry.is_object(); }))
        return {};
    std::set<std::string> all;
    for (const auto& entry : entries)
        all.merge(texts(entry.get_object().if_contains("CFBundleTypeExtensions")));
    return all;
}

} // namespace

std::set<std::string> supportedExtensions(const platform::Bundle& bundle) {
    if (const auto resources = bundle.resources())
        if (const auto json = contentsOf(resources->appending("file-types.json")))
            if (auto keys = keysOfTexts(*json))
                return std::move(*keys);
    const auto properties = bundle.propertyList();
    return properties ? extensionsOf(*properties) : std::set<std::string>();
}

ExampleChoice exampleChoice(const std::string& extension, const std::set<std::string>& supported,
                            const std::optional<std::string>& type) {
    if (!supported.contains(extension))
        return ExampleChoice::unsupported;
    return type ? ExampleChoice::ask : ExampleChoice::undeclared;
}

LifecycleNotice defaultResult(const std::string& extension, const FileUrl& bundle,
                              const std::optional<FileUrl>& current, const std::optional<std::string>& error) {
    using namespace lifecycleMessages;
    if (current && normalised(*current) == normalised(bundle))
        return {defaultUpdated, "Quillmere is now the default for ." + extension +
                                    " files. Repeat this for another file type whenever "
                                    "you want."};
    if (error)
        return {defaultNotChanged, *error};
    return {defaultKept.title, defaultKept.text};
}

} // namespace quillmere
