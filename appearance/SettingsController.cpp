#include "appearance/SettingsController.h"

#include "appearance/HexColor.h"
#include "appearance/SettingsLayout.h"
#include "base/Fatal.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace quillmere {

namespace {

constexpr double usualContentHeight = 720;
constexpr double usualScreenHeight = 880;
constexpr double heightAround = 76; // strip and gaps, which the panel leaves free

} // namespace

double SettingsController::maximumHeightFor(std::optional<double> contentHeight, std::optional<double> screenHeight) {
    return std::min(contentHeight.value_or(usualContentHeight), screenHeight.value_or(usualScreenHeight)) -
           heightAround;
}

SettingsController::SettingsController(AppearancePreferences preferences, double maximumHeight, Services services)
    : preferences_(std::move(preferences)), maximumHeight_(maximumHeight), services_(std::move(services)) {}

std::string SettingsController::titleOfTint(std::string tint) {
    for (char& c : tint)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return tint;
}

const view::ViewRef& SettingsController::view() {
    if (!view_)
        view_ = SettingsLayout(*this).build();
    return view_;
}

void SettingsController::registerControl(view::View& control, Action action) {
    if (actionIndex_ == std::numeric_limits<std::int64_t>::max())
        fatalStop("the settings have run out of tags");
    control.controlTag = ++actionIndex_;
    actions_[actionIndex_] = std::move(action);
}

void SettingsController::performAction(const view::View& control) {
    if (const auto found = actions_.find(control.controlTag); found != actions_.end())
        found->second(*this, control);
}

void SettingsController::save() {
    preferences_.save(services_.defaults);
    if (callbacks_.changed)
        callbacks_.changed(preferences_);
}

void SettingsController::showColors() {
    if (!callbacks_.showColors)
        return;
    // The colour panel keeps the controller that opened it: it goes on feeding it after the panel here has closed.
    callbacks_.showColors(colorFromHex(preferences_.tint),
                          [self = shared_from_this()](view::Color color) { self->colorChanged(color); });
}

void SettingsController::colorChanged(view::Color color) {
    preferences_.tint = hexFromColor(color);
    if (const auto button = colorButton_.lock())
        button->setTitle(titleOfTint(preferences_.tint));
    save();
}

void SettingsController::defaultApplications() {
    if (callbacks_.chooseDefaults)
        callbacks_.chooseDefaults();
    else if (callbacks_.explainDefaults)
        callbacks_.explainDefaults();
}

} // namespace quillmere
