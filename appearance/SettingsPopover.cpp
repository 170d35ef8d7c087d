#include "appearance/SettingsPopover.h"

#include "base/WeakCallback.h"

namespace quillmere {

void SettingsPopover::toggle() {
    auto* window = host_.settingsWindow();
    if (!window)
        return;
    if (window->isPopoverShown())
        return window->closePopover();
    const double height = SettingsController::maximumHeightFor(window->contentHeight(), window->screenHeight());
    controller_ = std::make_shared<SettingsController>(
        host_.currentPreferences(), height,
        SettingsController::Services{.defaults = services_.defaults, .resources = services_.resources});
    controller_->setCallbacks(callbacks());
    window->showPopover(controller_->view(), host_.settingsAnchor());
}

void SettingsPopover::close() {
    if (auto* window = host_.settingsWindow())
        window->closePopover();
}

SettingsController::Callbacks SettingsPopover::callbacks() {
    const auto weak = weak_from_this();
    return {.changed = weakly(weak,
                              [](SettingsPopover& self, const AppearancePreferences& preferences) {
                                  self.host_.preferencesChanged(preferences);
                              }),
            .pickPhoto = weakly(weak, [](SettingsPopover& self) { self.host_.pickBackground(); }),
            .chooseDefaults = weakly(weak,
                                     [](SettingsPopover& self) {
                                         self.close();
                                         self.host_.chooseDefaultType();
                                     }),
            .uninstall = weakly(weak,
                                [](SettingsPopover& self) {
                                    self.close();
                                    self.host_.confirmUninstall();
                                }),
            .showColors = weakly(
                weak, [](SettingsPopover& self, view::Color color,
                         std::function<void(view::Color)> changed) { self.showColors(color, std::move(changed)); }),
            .explainDefaults = weakly(weak, [](SettingsPopover& self) { self.explainDefaults(); })};
}

void SettingsPopover::explainDefaults() {
    if (auto* window = host_.settingsWindow())
        services_.dialogs.alert(
            *window, {.message = SettingsController::explanationTitle, .informative = SettingsController::explanation},
            [](size_t) {});
}

void SettingsPopover::showColors(view::Color color, std::function<void(view::Color)> changed) {
    if (auto* window = host_.settingsWindow())
        services_.dialogs.colorPanel(*window, {.color = color, .onChange = std::move(changed)});
}

} // namespace quillmere
