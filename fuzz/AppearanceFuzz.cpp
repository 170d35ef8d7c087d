// Whatever lies in the user's defaults: it is the whole record or none at all, one that is loaded survives being saved,
// and every text names a colour.

#include "appearance/AppearancePreferences.h"
#include "appearance/HexColor.h"
#include "appearance/PageAppearance.h"
#include "fuzz/Require.h"
#include "platform/headless/HeadlessServices.h"

#include <cstdint>

using namespace quillmere;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string stored(fuzz::textOf(data, size));
    platform::HeadlessDefaults defaults;
    defaults.setData(AppearancePreferences::key, stored);
    const auto loaded = AppearancePreferences::load(defaults);
    require(defaults.data(AppearancePreferences::key) == stored);
    loaded.save(defaults);
    require(AppearancePreferences::load(defaults) == loaded);
    require(pageAppearance(loaded, {}).size() == 9);
    const std::string hex = hexFromColor(colorFromHex(stored));
    require(hexFromColor(colorFromHex(hex)) == hex);
    return 0;
}
