#pragma once

#include "platform/Services.h"

#include <string>

namespace quillmere {

/// How the window looks, as it is kept in the user's defaults. A plain value. Ranges are those of the settings'
/// controls; the record enforces none.
struct AppearancePreferences {
    static constexpr const char* key = "Quillmere.appearance";
    static constexpr const char* customPhoto = "custom";

    std::string tint = "#141614";
    std::string photo{};       // empty: none; "custom": the user's own; else the file name of a preset
    double photoOpacity = 1.0; // 0 to 1
    double photoBlur = 0.0;    // 0 to 100
    bool airOutline = true;
    bool showZoom = false;

    /// The stored record. One that is not whole counts as none: then everything is as by default.
    static AppearancePreferences load(const platform::UserDefaults& defaults);
    /// Stores the record; nothing happens when it cannot be written as JSON.
    void save(platform::UserDefaults& defaults) const;

    bool operator==(const AppearancePreferences&) const = default;
};

} // namespace quillmere
