#include "appearance/SettingsLayout.h"

#include "appearance/GlassSurface.h"
#include "appearance/PageAppearance.h"

#include <algorithm>
#include <cmath>

namespace quillmere {

namespace {

constexpr double panelWidth = 328;
constexpr double itemWidth = 288;
constexpr double itemSpacing = 10;
constexpr view::Insets insets{.top = 16, .left = 20, .bottom = 16, .right = 20};
constexpr double leastHeight = 280;
constexpr double cornerRadius = 22;

constexpr double titleSize = 17, headingSize = 13, rowSize = 12;
constexpr view::Size presetSize{.width = 62, .height = 42};
constexpr const char* presetNames[] = {"Alps", "Mountain Valley", "Snow Peaks", "Glass Drop"};

// What the items are high, so that the panel knows its height before any backend has drawn it.
constexpr double titleHeight = 24, headingHeight = 18, rowHeight = 28, valueRowHeight = 18, separatorHeight = 1,
                 sliderHeight = 20, buttonHeight = 28;

view::ViewRef sized(view::ViewRef item, double width, double height) {
    item->size = view::Size{.width = width, .height = height};
    return item;
}

view::ViewRef makeLabel(std::string text, double size, view::Weight weight, view::TextColor color) {
    return view::View::make(view::Label{.text = std::move(text), .fontSize = size, .weight = weight, .color = color});
}

view::ViewRef makeSeparator() {
    return sized(view::View::make(view::Separator{}), itemWidth, separatorHeight);
}

view::ViewRef makeRow(std::string title, view::ViewRef control, double height) {
    auto row = view::View::make(view::Stack{.axis = view::Axis::horizontal, .spacing = 6});
    row->add(makeLabel(std::move(title), rowSize, view::Weight::regular, view::TextColor::label));
    row->add(view::View::make(view::Spacer{}));
    row->add(std::move(control));
    return sized(std::move(row), itemWidth, height);
}

std::string percentText(double value, double maximum) {
    return std::to_string(wholePercent(value / maximum)) + "%";
}

} // namespace

view::ViewRef SettingsLayout::build() {
    stack_ = view::View::make(view::Stack{.axis = view::Axis::vertical,
                                          .spacing = itemSpacing,
                                          .margins = insets,
                                          .alignment = view::Alignment::leading});
    stack_->tag = "settings";
    add(sized(makeLabel("Appearance", titleSize, view::Weight::semibold, view::TextColor::label), 0, titleHeight));
    add(makeSeparator());
    add(makeRow("Window color", colorButton(), rowHeight));
    add(makeSeparator());
    add(sized(makeLabel("Background photo", headingSize, view::Weight::medium, view::TextColor::label), 0,
              headingHeight));
    add(presetPhotos());
    add(photoButtons());
    addSlider("Photo opacity", 1, &AppearancePreferences::photoOpacity);
    addSlider("Photo blur", 100, &AppearancePreferences::photoBlur);
    add(makeSeparator());
    addSwitch("Air button outlines", &AppearancePreferences::airOutline);
    addSwitch("Show zoom buttons", &AppearancePreferences::showZoom);
    add(roundedButton({.title = "Default app settings…"},
                      [](SettingsController& panel, const view::View&) { panel.defaultApplications(); }));
    add(makeSeparator());
    add(roundedButton({.title = "Uninstall Quillmere…", .tint = view::ButtonTint::destructive},
                      [](SettingsController& panel, const view::View&) {
                          if (panel.callbacks_.uninstall)
                              panel.callbacks_.uninstall();
                      }));
    return surface();
}

void SettingsLayout::add(view::ViewRef item) {
    contentHeight_ += item->size->height + (stack_->children().empty() ? 0 : itemSpacing);
    stack_->add(std::move(item));
}

template <typename Control, typename Listen>
view::ViewRef SettingsLayout::makeControl(Control control, SettingsController::Action action, Listen listen) {
    const auto self = std::make_shared<std::weak_ptr<view::View>>();
    listen(control, [panel = controller_.weak_from_this(), self](auto&&...) {
        const auto owner = panel.lock();
        const auto sender = self->lock();
        if (owner && sender)
            owner->performAction(*sender);
    });
    auto made = view::View::make(std::move(control));
    *self = made;
    controller_.registerControl(*made, std::move(action));
    return made;
}

view::ViewRef SettingsLayout::roundedButton(view::Button button, SettingsController::Action action) {
    button.style = view::ButtonStyle::rounded;
    auto made = makeControl(std::move(button), std::move(action),
                            [](view::Button& facts, const auto& perform) { facts.onPress = perform; });
    const auto& facts = std::get<view::Button>(made->kind());
    made->tag = made->accessibilityLabel = facts.title.empty() ? facts.tooltip : facts.title;
    return sized(std::move(made), 0, buttonHeight);
}

view::ViewRef SettingsLayout::colorButton() {
    auto button = roundedButton({.symbol = "circle.lefthalf.filled",
                                 .title = SettingsController::titleOfTint(controller_.preferences_.tint),
                                 .symbolLabel = "Color wheel"},
                                [](SettingsController& panel, const view::View&) { panel.showColors(); });
    button->accessibilityLabel = "Window color";
    button->tag = "color";
    controller_.colorButton_ = button;
    return button;
}

view::ViewRef SettingsLayout::presetPhotos() {
    auto row = view::View::make(view::Stack{.axis = view::Axis::horizontal, .spacing = 6});
    for (size_t at = 0; at < std::size(presetNames); ++at) {
        const std::string photo = "bg" + std::to_string(at + 1) + ".jpg";
        const auto& resources = controller_.services_.resources;
        auto button = roundedButton(
            {.tooltip = presetNames[at],
             .imageFile = resources ? resources->appending("app/backgrounds/" + photo).path() : std::string()},
            [photo](SettingsController& panel, const view::View&) {
                panel.preferences_.photo = photo;
                panel.save();
            });
        button->tag = photo;
        row->add(sized(std::move(button), presetSize.width, presetSize.height));
    }
    row->accessibilityLabel = "Preset photos";
    return sized(std::move(row), 0, presetSize.height);
}

view::ViewRef SettingsLayout::photoButtons() {
    auto row = view::View::make(view::Stack{.axis = view::Axis::horizontal, .spacing = 8});
    row->add(roundedButton({.title = "Choose photo…"}, [](SettingsController& panel, const view::View&) {
        if (panel.callbacks_.pickPhoto)
            panel.callbacks_.pickPhoto();
    }));
    row->add(roundedButton({.title = "None"}, [](SettingsController& panel, const view::View&) {
        panel.preferences_.photo.clear();
        panel.save();
    }));
    row->accessibilityLabel = "Photo";
    return sized(std::move(row), 0, buttonHeight);
}

void SettingsLayout::addSlider(const std::string& title, double maximum, double AppearancePreferences::* field) {
    const double value = controller_.preferences_.*field;
    auto label = makeLabel(percentText(value, maximum), rowSize, view::Weight::regular, view::TextColor::secondary);
    label->tag = title + " value";
    add(makeRow(title, label, valueRowHeight));
    auto slider = makeControl(
        view::Slider{
            .value = std::isnan(value) ? 0 : std::clamp(value, 0.0, maximum), .minimum = 0, .maximum = maximum},
        [label, maximum, field](SettingsController& panel, const view::View& sender) {
            const double chosen = std::get<view::Slider>(sender.kind()).value;
            label->setText(percentText(chosen, maximum));
            panel.preferences_.*field = chosen;
            panel.save();
        },
        [](view::Slider& facts, const auto& perform) { facts.onSlide = perform; });
    slider->accessibilityLabel = slider->tag = title;
    add(sized(std::move(slider), itemWidth, sliderHeight));
}

void SettingsLayout::addSwitch(const std::string& title, bool AppearancePreferences::* field) {
    auto control = makeControl(
        view::Switch{.on = controller_.preferences_.*field},
        [field](SettingsController& panel, const view::View& sender) {
            panel.preferences_.*field = std::get<view::Switch>(sender.kind()).on;
            panel.save();
        },
        [](view::Switch& facts, const auto& perform) { facts.onToggle = perform; });
    control->accessibilityLabel = control->tag = title;
    add(makeRow(title, std::move(control), rowHeight));
}

view::ViewRef SettingsLayout::surface() const {
    const double content = std::ceil(contentHeight_ + insets.top + insets.bottom);
    const double visible = std::min(content, std::max(controller_.maximumHeight_, leastHeight));
    auto scroll = view::View::make(view::Scroll{});
    scroll->add(stack_);
    auto panel = glassSurface(sized(std::move(scroll), panelWidth, visible), cornerRadius);
    panel->accessibilityLabel = "Settings";
    return sized(std::move(panel), panelWidth, visible);
}

} // namespace quillmere
