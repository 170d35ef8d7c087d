#pragma once

#include "platform/Services.h"

#include <optional>
#include <set>
#include <string>

namespace quillmere {

/// What an alert says.
struct LifecycleNotice {
    std::string title;
    std::string text;
    bool operator==(const LifecycleNotice&) const = default;
};

/// The extensions that the bundle registers: those of its resource "file-types.json", or else of its property list.
std::set<std::string> supportedExtensions(const platform::Bundle& bundle);

/// What a chosen example file leads to.
enum class ExampleChoice { unsupported, undeclared, ask };
/// `type` is the content type that the system declares for the extension, if any.
ExampleChoice exampleChoice(const std::string& extension, const std::set<std::string>& supported,
                            const std::optional<std::string>& type);

/// What to say after the system was asked: `current` is the application that opens the type now.
LifecycleNotice defaultResult(const std::string& extension, const FileUrl& bundle,
                              const std::optional<FileUrl>& current, const std::optional<std::string>& error);

} // namespace quillmere
