#pragma once

#include "appearance/AppearancePreferences.h"
#include "base/Json.h"

#include <string>

namespace quillmere {

/// The appearance as the page takes it. `customUrl` is where the page finds the user's own photo; empty when there is
/// none.
JsonObject pageAppearance(const AppearancePreferences& preferences, const std::string& customUrl);

/// Where the page finds a granted photo. The time of the photo's last change is part of it, so that a new photo under
/// the old name is fetched anew.
std::string customPhotoUrl(const std::string& grantPath, double changedSeconds);

} // namespace quillmere
