#pragma once

#include "base/Json.h"
#include "platform/WebView.h"

#include <optional>

namespace quillmere {

/// Everything that the page may ask for.
enum class InboundType {
    ready,
    openDialog,
    openFolderDialog,
    containerOpen,
    containerUp,
    containerRefresh,
    cancelPreview,
    clipboardCopy,
    copyText,
    macSettings,
    pickBackground,
    clearBackground,
    minimize,
    maximize,
    close,
    defaultApps,
    uninstall,
    drag,
    openSample,
    transcodeMedia,
};

/// A message that was accepted. `body` belongs to the script message it came from.
struct InboundMessage {
    InboundType type;
    const JsonObject& body;
};

/// Accepts what the page's own main frame posts, a dictionary of a known type; nothing for anything else.
std::optional<InboundMessage> acceptMessage(const platform::ScriptMessage& message);

/// The file name that a sample's name stands for: its last component. Nothing when that names no file.
std::optional<std::string> sampleFileName(const std::string& name);

/// Whether a text may go to the clipboard: some text, of 16 MiB at most.
bool isCopyable(const std::optional<std::string>& text);

} // namespace quillmere
