#pragma once

#include "base/Json.h"
#include "platform/WebView.h"

#include <optional>
#include <string>
#include <variant>

namespace quillmere {

/// What the page may ask for, one type each. A field of the wrong kind counts as absent.
namespace inbound {

struct Ready {};
struct OpenDialog {};
struct ContainerOpen {
    std::optional<std::string> token{};
    std::optional<std::string> id{};
};
struct ContainerUp {
    std::optional<std::string> token{};
};
struct ContainerRefresh {
    std::optional<std::string> token{};
};
struct CancelPreview {};
struct CopyText {
    std::optional<std::string> text{};
    json::value copyRequestId = nullptr; // goes back as it came
};
struct MacSettings {};
struct PickBackground {};
struct ClearBackground {};
struct Minimize {};
struct Maximize {};
struct Close {};
struct DefaultApps {};
struct Uninstall {};
struct Drag {};
struct OpenSample {
    std::optional<std::string> name{};
};
struct TranscodeMedia {
    std::optional<std::string> url{};
    bool isAudio = false;
    std::optional<std::string> name{};
};

} // namespace inbound

/// A message that was accepted, read once.
using InboundMessage = std::variant<inbound::Ready, inbound::OpenDialog, inbound::ContainerOpen, inbound::ContainerUp,
                                    inbound::ContainerRefresh, inbound::CancelPreview, inbound::CopyText,
                                    inbound::MacSettings, inbound::PickBackground, inbound::ClearBackground,
                                    inbound::Minimize, inbound::Maximize, inbound::Close, inbound::DefaultApps,
                                    inbound::Uninstall, inbound::Drag, inbound::OpenSample, inbound::TranscodeMedia>;

/// Accepts what the page's own main frame posts, a dictionary of a known type; nothing for anything else.
std::optional<InboundMessage> acceptMessage(const platform::ScriptMessage& message);

/// The file name that a sample's name stands for: its last component. Nothing when that names no file.
std::optional<std::string> sampleFileName(const std::string& name);

/// Whether a text may go to the clipboard: some text, of 16 MiB at most.
bool isCopyable(const std::optional<std::string>& text);

} // namespace quillmere
