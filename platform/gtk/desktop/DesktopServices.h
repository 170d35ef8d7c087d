#pragma once

#include "platform/Services.h"

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

/// The clipboard of the display.
class DesktopPasteboard final : public Pasteboard {
public:
    bool setString(const std::string& text) override;
};

/// shared-mime-info through GIO.
class DesktopContentTypes final : public ContentTypes {
public:
    std::optional<std::string> mimeType(const std::string& extension) const override;
};

} // namespace quillmere::platform::gtk
