#pragma once

#include "appearance/AppearancePreferences.h"
#include "base/Json.h"

#include <cstdint>
#include <string>

namespace quillmere {

/// A share as whole hundredths, cut off towards zero; what has no such number is the nearest that can be told.
std::int64_t wholePercent(double share);

/// The appearance as the page takes it. `customUrl` is where the page finds the user's own photo; empty when there is
/// none.
JsonObject pageAppearance(const AppearancePreferences& preferences, const std::string& customUrl);

/// Where the page finds a granted photo. The time of the photo's last change is part of it, so that a new photo under
/// the old name is fetched anew.
std::string customPhotoUrl(const std::string& grantPath, double changedSeconds);

} // namespace quillmere
