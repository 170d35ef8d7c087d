#pragma once

#include "appearance/SettingsController.h"

namespace quillmere {

/// Builds the settings panel's views for a controller, which gets the controls' actions.
class SettingsLayout {
public:
    explicit SettingsLayout(SettingsController& controller) : controller_(controller) {}

    view::ViewRef build();

private:
    template <typename Control, typename Listen>
    view::ViewRef makeControl(Control control, SettingsController::Action action, Listen listen);
    view::ViewRef roundedButton(view::Button button, SettingsController::Action action);
    view::ViewRef colorButton();
    view::ViewRef presetPhotos();
    view::ViewRef photoButtons();
    void add(view::ViewRef item);
    void addSlider(const std::string& title, double maximum, double AppearancePreferences::* field);
    void addSwitch(const std::string& title, bool AppearancePreferences::* field);
    view::ViewRef surface() const;

    SettingsController& controller_;
    view::ViewRef stack_;
    double contentHeight_ = 0; // of what stands in the stack
};

} // namespace quillmere
