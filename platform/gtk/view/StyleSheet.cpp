#include "platform/gtk/view/StyleSheet.h"

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

window.quillmere windowcontrols { margin: 9px 0 0 10px; border-spacing: 2px; }
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

view::Color withAlpha(view::Color color, double alpha) {
    color.alpha = alpha;
    return color;
}

std::string colorDefinitions(const Theme& theme) {
    const bool dark = theme.shade == Shade::dark;
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
    gtk_css_provider_load_from_data(provider, text.c_str(), static_cast<gssize>(text.size()));
}

} // namespace

StyleSheet::StyleSheet()
    : display_(GObjectRef<GdkDisplay>::share(gdk_display_get_default())),
      rules_(GObjectRef<GtkCssProvider>::adopt(gtk_css_provider_new())),
      colors_(GObjectRef<GtkCssProvider>::adopt(gtk_css_provider_new())) {
    setTheme(Theme::fromTint({}));
    load(rules_.get(), rules);
    for (auto* provider : {colors_.get(), rules_.get()})
        gtk_style_context_add_provider_for_display(display_.get(), GTK_STYLE_PROVIDER(provider), rulesPriority);
}

StyleSheet::~StyleSheet() {
    for (auto* provider : {colors_.get(), rules_.get()})
        gtk_style_context_remove_provider_for_display(display_.get(), GTK_STYLE_PROVIDER(provider));
}

void StyleSheet::setTheme(const Theme& theme) {
    if (theme_ == theme)
        return;
    const bool isNewShade = !theme_ || theme_->shade != theme.shade;
    theme_ = theme;
    load(colors_.get(), colorDefinitions(theme));
    // Each time this is set, changed or not, the toolkit reads its whole theme anew.
    if (isNewShade)
        g_object_set(gtk_settings_get_for_display(display_.get()), "gtk-application-prefer-dark-theme",
                     static_cast<gboolean>(theme.shade == Shade::dark), nullptr);
}

WidgetStyle::WidgetStyle(GtkWidget* widget) : provider_(GObjectRef<GtkCssProvider>::adopt(gtk_css_provider_new())) {
    gtk_style_context_add_provider(gtk_widget_get_style_context(widget), GTK_STYLE_PROVIDER(provider_.get()),
                                   rulesPriority + 1);
}

void WidgetStyle::set(const std::string& declarations) {
    load(provider_.get(), "* {" + declarations + "}");
}

} // namespace quillmere::platform::gtk
