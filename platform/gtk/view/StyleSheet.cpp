#include "platform/gtk/view/StyleSheet.h"

#include "platform/gtk/view/TextScale.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace quillmere::platform::gtk {

namespace {

// Every surface of the window keeps to these classes; the colours come from the second sheet.
constexpr const char* rules = R"(
window.quillmere {
    background: transparent;
    border-radius: 14px;
    box-shadow: 0 0 0 1px rgba(0,0,0,.28), 0 3px 9px rgba(0,0,0,.24), 0 12px 28px rgba(0,0,0,.30);
}
window.quillmere:backdrop {
    box-shadow: 0 0 0 1px rgba(0,0,0,.24), 0 3px 9px rgba(0,0,0,.14), 0 12px 28px transparent;
}
window.quillmere.solid-csd { padding: 0; border: none; box-shadow: none; border-radius: 0; }
window.quillmere.maximized, window.quillmere.fullscreen, window.quillmere.tiled { border-radius: 0; box-shadow: none; }
window.quillmere .window-body { border-radius: 14px; }
window.quillmere.solid-csd .window-body, window.quillmere.maximized .window-body,
window.quillmere.fullscreen .window-body, window.quillmere.tiled .window-body { border-radius: 0; }

window.quillmere .title-controls { margin: 9px 0 0 10px; }
window.quillmere windowcontrols { border-spacing: 2px; margin: 0; }
menubutton.quillmere-menu > button {
    min-width: 26px; min-height: 26px; padding: 0; margin: 0; border: none; border-radius: 13px;
    color: @quillmere_ink; background: none; box-shadow: none; text-shadow: none; -gtk-icon-size: 18px;
}
menubutton.quillmere-menu > button:hover { background: @quillmere_fill_hover; }
menubutton.quillmere-menu > button:active, menubutton.quillmere-menu > button:checked { background: @quillmere_fill_pressed; }
menubutton.quillmere-menu > button:focus-visible { outline: 2px solid @quillmere_accent; outline-offset: -2px; }
window.quillmere:backdrop menubutton.quillmere-menu { opacity: .6; }
window.quillmere windowcontrols > button {
    min-width: 24px; min-height: 26px; padding: 0; margin: 0;
    color: @quillmere_ink; background: none; box-shadow: none; border: none; border-radius: 13px;
}
window.quillmere windowcontrols > button > image {
    min-width: 0; min-height: 0; padding: 2px; background: none; box-shadow: none; -gtk-icon-size: 16px;
}
window.quillmere windowcontrols > button:hover { background: @quillmere_fill_hover; }
window.quillmere windowcontrols > button:active { background: @quillmere_fill_pressed; }
window.quillmere:backdrop windowcontrols > button { opacity: .6; }

.quillmere-glass {
    background-color: @quillmere_glass;
    box-shadow: inset 0 0 0 1px @quillmere_rim, inset 0 1px 0 @quillmere_glint, 0 1px 2px @quillmere_shadow_near,
                0 8px 20px -6px @quillmere_shadow_far;
    color: @quillmere_ink;
}
window.quillmere:backdrop .quillmere-glass { opacity: .92; }

button.quillmere-symbol {
    min-width: 0; min-height: 0; padding: 0; margin: 0; border: none; border-radius: 15px;
    background: none; box-shadow: none; text-shadow: none; color: @quillmere_ink;
    transition: background-color 110ms cubic-bezier(.2,.7,.2,1);
}
button.quillmere-symbol:hover { background-color: @quillmere_fill_hover; }
button.quillmere-symbol:active, button.quillmere-symbol:checked { background-color: @quillmere_fill_pressed; }
button.quillmere-symbol:focus-visible { outline: 2px solid @quillmere_accent; outline-offset: -2px; }

spinner.quillmere-spinner { color: @quillmere_ink; }
progressbar.quillmere-bar { min-width: 0; min-height: 0; }
progressbar.quillmere-bar > trough {
    min-width: 0; min-height: 3px; border: none; border-radius: 2px; background: @quillmere_fill_pressed; box-shadow: none;
}
progressbar.quillmere-bar > trough > progress {
    min-width: 0; min-height: 3px; margin: 0; border: none; border-radius: 2px; background: @quillmere_accent; box-shadow: none;
}

popover.quillmere-popover { background: none; }
popover.quillmere-popover > contents { background: none; border: none; box-shadow: none; padding: 0 0 28px 0; margin: 0; min-width: 0; }
popover.quillmere-popover .quillmere-glass { background-color: @quillmere_sheet; margin: 4px 0 0 28px; }
popover.quillmere-popover.solid { padding: 0; background: @quillmere_sheet; }
popover.quillmere-popover.solid > contents { padding: 0; border-radius: 0; background: @quillmere_sheet; box-shadow: inset 0 0 0 1px @quillmere_rim; }
popover.quillmere-popover.solid .quillmere-glass { margin: 0; background: none; box-shadow: none; }
popover.quillmere-popover separator.quillmere-separator { margin: 0; }
.quillmere-label { color: @quillmere_ink; }
.quillmere-second { color: @quillmere_ink_second; font-feature-settings: "tnum"; }
separator.quillmere-separator { min-height: 1px; background: @quillmere_line; opacity: .6; }
.quillmere-scroll, .quillmere-scroll > viewport { background: none; border: none; }
button.quillmere-button {
    min-height: 28px; min-width: 0; padding: 0 12px; margin: 0; border: none; border-radius: 14px; font-size: 12px; font-weight: 500;
    background: @quillmere_fill_rest; color: @quillmere_ink; box-shadow: inset 0 0 0 1px @quillmere_line; text-shadow: none;
    transition: background-color 110ms cubic-bezier(.2,.7,.2,1);
}
button.quillmere-button:hover { background: @quillmere_fill_hover; }
button.quillmere-button:active { background: @quillmere_fill_pressed; }
button.quillmere-button:focus-visible { outline: 2px solid @quillmere_accent; outline-offset: 1px; }
button.quillmere-button.destructive { color: @quillmere_danger; }
button.quillmere-button.suggested { background: @quillmere_accent; color: @quillmere_on_accent; box-shadow: none; }
button.quillmere-button.suggested:hover { background: mix(@quillmere_accent, @quillmere_ink, .10); }
button.quillmere-button.suggested:active { background: mix(@quillmere_accent, @quillmere_ink, .22); }
button.quillmere-button.suggested.destructive { background: @quillmere_fill_rest; color: @quillmere_danger; }
button.quillmere-inline {
    min-width: 22px; min-height: 22px; padding: 0; margin: 0; border: none; border-radius: 11px; font-size: 14px;
    background: @quillmere_fill_rest; box-shadow: none; text-shadow: none; color: @quillmere_ink_second;
}
button.quillmere-inline:hover { background: @quillmere_fill_hover; }
button.quillmere-inline:active { background: @quillmere_fill_pressed; }
button.quillmere-inline:focus-visible { outline: 2px solid @quillmere_accent; outline-offset: 1px; }
.quillmere-panel .quillmere-glass { background-color: @quillmere_sheet; }
.quillmere-panel button.quillmere-button { min-height: 32px; border-radius: 16px; font-size: 13px; font-weight: 500; }
button.quillmere-button.picture { min-height: 0; padding: 2px; border-radius: 9px; }
button.quillmere-button.picture picture { border-radius: 7px; }
scale.quillmere-slider { padding: 0; margin: 0; min-height: 20px; }
scale.quillmere-slider > trough { min-height: 4px; border: none; border-radius: 2px; background: @quillmere_fill_pressed; box-shadow: none; outline: none; margin: 0 8px; }
scale.quillmere-slider > trough > highlight { min-height: 4px; margin: 0; border: none; border-radius: 2px; background: @quillmere_accent; box-shadow: none; }
scale.quillmere-slider > trough > slider {
    min-width: 16px; min-height: 16px; margin: -6px -8px; border: none; border-radius: 8px; background: @quillmere_knob;
    box-shadow: 0 0 0 1px @quillmere_shadow_near, 0 1px 3px @quillmere_shadow_far;
}
scale.quillmere-slider:focus-visible > trough > slider { outline: 2px solid @quillmere_accent; outline-offset: 2px; }
switch.quillmere-switch { min-width: 40px; min-height: 22px; padding: 0; margin: 0; border: none; border-radius: 11px; background: @quillmere_fill_pressed; box-shadow: inset 0 0 0 1px @quillmere_line; color: transparent; }
switch.quillmere-switch:checked { background: @quillmere_accent; box-shadow: none; }
switch.quillmere-switch > slider { min-width: 18px; min-height: 18px; margin: 2px; border: none; border-radius: 9px; background: @quillmere_knob; box-shadow: 0 1px 2px @quillmere_shadow_far; }
switch.quillmere-switch > image { color: transparent; -gtk-icon-size: 0; }
switch.quillmere-switch:focus-visible { outline: 2px solid @quillmere_accent; outline-offset: 2px; }
.quillmere-colors-body { padding: 16px; }
.quillmere-wheel:focus-visible { outline: 2px solid @quillmere_accent; outline-offset: 3px; border-radius: 118px; }

.quillmere-scrim { background-color: @quillmere_scrim; }
.quillmere-card {
    background-color: @quillmere_sheet; color: @quillmere_ink; border-radius: 24px; padding: 24px;
    box-shadow: inset 0 0 0 1px @quillmere_rim, inset 0 1px 0 @quillmere_glint, 0 2px 6px @quillmere_shadow_near,
                0 24px 56px -20px @quillmere_shadow_far;
}
.quillmere-card .title { font-size: 17px; font-weight: 600; }
.quillmere-card .text { font-size: 13px; color: @quillmere_ink_second; }
.quillmere-card button {
    min-height: 32px; min-width: 72px; padding: 0 16px; border: none; border-radius: 16px; font-size: 13px;
    font-weight: 500; background: @quillmere_fill_rest; color: @quillmere_ink; box-shadow: inset 0 0 0 1px @quillmere_line;
    text-shadow: none;
}
.quillmere-card button:hover { background: @quillmere_fill_hover; }
.quillmere-card button:active { background: @quillmere_fill_pressed; }
.quillmere-card button.suggested { background: @quillmere_accent; color: @quillmere_on_accent; box-shadow: none; }
.quillmere-card button.suggested:hover { background: mix(@quillmere_accent, @quillmere_ink, .10); }
.quillmere-card button.suggested:active { background: mix(@quillmere_accent, @quillmere_ink, .22); }
.quillmere-card button:focus-visible { outline: 2px solid @quillmere_accent; outline-offset: 2px; }
)";

constexpr guint rulesPriority = GTK_STYLE_PROVIDER_PRIORITY_APPLICATION;

std::string fixed(double value) {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 3).ptr;
    return {digits, end};
}

view::Color withAlpha(view::Color color, double alpha) {
    color.alpha = alpha;
    return color;
}

std::string colorDefinitions(const view::Theme& theme) {
    const bool dark = theme.shade == view::Shade::dark;
    const view::Color black{}, white{.red = 1, .green = 1, .blue = 1}, umber{.red = .16, .green = .14, .blue = .11};
    const std::pair<const char*, view::Color> colors[] = {
        {"ink", theme.ink},
        {"ink_second", theme.secondInk},
        {"glass", theme.glass},
        {"sheet", theme.sheet},
        {"accent", theme.accent},
        {"on_accent", theme.onAccent},
        {"fill_rest", withAlpha(theme.ink, .05)},
        {"fill_hover", withAlpha(theme.ink, .09)},
        {"fill_pressed", withAlpha(theme.ink, .15)},
        {"danger", theme.danger},
        {"knob", white},
        {"line", withAlpha(theme.ink, .17)},
        {"rim", withAlpha(dark ? white : black, .09)},
        {"glint", withAlpha(white, dark ? .09 : .75)},
        {"shadow_near", withAlpha(dark ? black : umber, dark ? .22 : .10)},
        {"shadow_far", withAlpha(dark ? black : umber, dark ? .45 : .28)},
        {"scrim", withAlpha(dark ? black : umber, dark ? .45 : .28)},
    };
    std::string text;
    for (const auto& [name, color] : colors)
        text += std::string("@define-color quillmere_") + name + " " + cssColor(color) + ";\n";
    return text;
}

void load(GtkCssProvider* provider, const std::string& text) {
    const auto scaling = scalingLengths(text);
    gtk_css_provider_load_from_data(provider, scaling.c_str(), static_cast<gssize>(scaling.size()));
}

} // namespace

std::string cssColor(const view::Color& color) {
    const auto component = [](double value) { return std::to_string(std::lround(std::clamp(value, 0.0, 1.0) * 255)); };
    return "rgba(" + component(color.red) + "," + component(color.green) + "," + component(color.blue) + "," +
           fixed(std::clamp(color.alpha, 0.0, 1.0)) + ")";
}

StyleSheet::StyleSheet()
    : display_(GObjectRef<GdkDisplay>::share(gdk_display_get_default())),
      rules_(GObjectRef<GtkCssProvider>::adopt(gtk_css_provider_new())),
      colors_(GObjectRef<GtkCssProvider>::adopt(gtk_css_provider_new())) {
    setTheme(view::Theme::fromTint({}));
    load(rules_.get(), rules);
    for (auto* provider : {colors_.get(), rules_.get()})
        gtk_style_context_add_provider_for_display(display_.get(), GTK_STYLE_PROVIDER(provider), rulesPriority);
}

StyleSheet::~StyleSheet() {
    for (auto* provider : {colors_.get(), rules_.get()})
        gtk_style_context_remove_provider_for_display(display_.get(), GTK_STYLE_PROVIDER(provider));
}

void StyleSheet::setTheme(const view::Theme& theme) {
    if (theme_ == theme)
        return;
    const bool isNewShade = !theme_ || theme_->shade != theme.shade;
    theme_ = theme;
    load(colors_.get(), colorDefinitions(theme));
    // Each time this is set, changed or not, the toolkit reads its whole theme anew.
    if (isNewShade)
        g_object_set(gtk_settings_get_for_display(display_.get()), "gtk-application-prefer-dark-theme",
                     static_cast<gboolean>(theme.shade == view::Shade::dark), nullptr);
}

WidgetStyle::WidgetStyle(GtkWidget* widget) : provider_(GObjectRef<GtkCssProvider>::adopt(gtk_css_provider_new())) {
    gtk_style_context_add_provider(gtk_widget_get_style_context(widget), GTK_STYLE_PROVIDER(provider_.get()),
                                   rulesPriority + 1);
}

void WidgetStyle::set(const std::string& declarations) {
    load(provider_.get(), "* {" + declarations + "}");
}

} // namespace quillmere::platform::gtk
