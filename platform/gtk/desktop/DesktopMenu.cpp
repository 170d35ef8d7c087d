#include "platform/gtk/desktop/DesktopMenu.h"

#include "platform/gtk/glib/Signals.h"

#include <webkit/webkit.h>

namespace quillmere::platform::gtk {

namespace {

/// Names and ways of one menu action.
struct ActionFacts {
    const char* name = "";              // of the toolkit's action
    const char* editing = nullptr;      // WebKit's editing command; such an item's key is the page's own
    const char* widgetAction = nullptr; // of the toolkit's text fields
    const char* furtherKey = nullptr;   // what users of this desktop expect besides
};

ActionFacts factsOf(MenuAction action) {
    switch (action) {
    case MenuAction::showSettings:
        return {.name = "settings"};
    case MenuAction::openDialog:
        return {.name = "open"};
    case MenuAction::about:
        return {.name = "about"};
    case MenuAction::hide:
        return {.name = "hide"};
    case MenuAction::quit:
        return {.name = "quit"};
    case MenuAction::closeWindow:
        return {.name = "close"};
    case MenuAction::undo:
        return {.name = "undo", .editing = WEBKIT_EDITING_COMMAND_UNDO, .widgetAction = "text.undo"};
    case MenuAction::redo:
        return {.name = "redo", .editing = WEBKIT_EDITING_COMMAND_REDO, .widgetAction = "text.redo"};
    case MenuAction::cut:
        return {.name = "cut", .editing = WEBKIT_EDITING_COMMAND_CUT, .widgetAction = "clipboard.cut"};
    case MenuAction::copy:
        return {.name = "copy", .editing = WEBKIT_EDITING_COMMAND_COPY, .widgetAction = "clipboard.copy"};
    case MenuAction::paste:
        return {.name = "paste", .editing = WEBKIT_EDITING_COMMAND_PASTE, .widgetAction = "clipboard.paste"};
    case MenuAction::selectAll:
        return {
            .name = "select-all", .editing = WEBKIT_EDITING_COMMAND_SELECT_ALL, .widgetAction = "selection.select-all"};
    case MenuAction::toggleFullScreen:
        return {.name = "fullscreen", .furtherKey = "F11"};
    case MenuAction::minimize:
        return {.name = "minimize"};
    }
    return {};
}

} // namespace

std::string acceleratorFor(const MenuItem& item) {
    if (item.key.empty())
        return {};
    const auto character = g_utf8_get_char_validated(item.key.c_str(), static_cast<gssize>(item.key.size()));
    const char* name = character <= 0x10FFFF ? gdk_keyval_name(gdk_unicode_to_keyval(character)) : nullptr;
    if (!name)
        return {};
    std::string text;
    if (item.modifiers.command)
        text += "<Control>";
    if (item.modifiers.shift)
        text += "<Shift>";
    if (item.modifiers.control)
        text += item.modifiers.command ? "<Alt>" : "<Control>";
    return text + name;
}

std::string withDesktopKeys(const std::string& text) {
    constexpr std::pair<std::string_view, std::string_view> signs[] = {
        {"⌘", "Ctrl+"}, {"⇧", "Shift+"}, {"⌥", "Alt+"}, {"⌃", "Ctrl+"}};
    std::string result = text;
    for (const auto& [sign, name] : signs)
        for (size_t at = result.find(sign); at != std::string::npos; at = result.find(sign, at + name.size()))
            result.replace(at, sign.size(), name);
    return result;
}

DesktopMenu::DesktopMenu(GtkApplication* application, MenuSpec spec, std::function<void(const MenuItem&)> perform)
    : application_(application), spec_(std::move(spec)), perform_(std::move(perform)) {
    for (const auto& menu : spec_.menus)
        for (const auto& entry : menu.entries)
            if (entry)
                addAction(*entry);
}

DesktopMenu::~DesktopMenu() {
    for (const auto& name : actions_) {
        const char* const none[] = {nullptr};
        gtk_application_set_accels_for_action(application_, ("app." + name).c_str(), none);
        g_action_map_remove_action(G_ACTION_MAP(application_), name.c_str());
    }
}

void DesktopMenu::addAction(const MenuItem& item) {
    const auto facts = factsOf(item.action);
    const auto action = GObjectRef<GSimpleAction>::adopt(g_simple_action_new(facts.name, nullptr));
    connectForLife(action.get(), "activate", [this, item](GSimpleAction*, GVariant*) { perform_(item); });
    g_action_map_add_action(G_ACTION_MAP(application_), G_ACTION(action.get()));
    actions_.emplace_back(facts.name);
    if (facts.editing)
        return; // the page and the text fields have these keys themselves
    const auto key = acceleratorFor(item);
    std::vector<const char*> keys;
    if (!key.empty())
        keys.push_back(key.c_str());
    if (facts.furtherKey)
        keys.push_back(facts.furtherKey);
    keys.push_back(nullptr);
    gtk_application_set_accels_for_action(application_, (std::string("app.") + facts.name).c_str(), keys.data());
}

GObjectRef<GMenuModel> DesktopMenu::model() const {
    GMenu* root = g_menu_new();
    for (const auto& menu : spec_.menus) {
        auto section = GObjectRef<GMenu>::adopt(g_menu_new());
        const char* title = menu.title.empty() ? nullptr : menu.title.c_str();
        const auto close = [&] {
            if (g_menu_model_get_n_items(G_MENU_MODEL(section.get())) > 0)
                g_menu_append_section(root, std::exchange(title, nullptr), G_MENU_MODEL(section.get()));
            section = GObjectRef<GMenu>::adopt(g_menu_new());
        };
        for (const auto& entry : menu.entries) {
            if (!entry) {
                close();
                continue;
            }
            const auto facts = factsOf(entry->action);
            const auto item = GObjectRef<GMenuItem>::adopt(
                g_menu_item_new(entry->title.c_str(), (std::string("app.") + facts.name).c_str()));
            if (const auto key = acceleratorFor(*entry); facts.editing && !key.empty())
                g_menu_item_set_attribute_value(item.get(), "accel", g_variant_new_string(key.c_str()));
            g_menu_append_item(section.get(), item.get());
        }
        close();
    }
    return GObjectRef<GMenuModel>::adopt(G_MENU_MODEL(root));
}

void performEditing(MenuAction action, GtkWidget* focus) {
    const auto facts = factsOf(action);
    if (!focus || !facts.editing)
        return;
    if (WEBKIT_IS_WEB_VIEW(focus))
        webkit_web_view_execute_editing_command(WEBKIT_WEB_VIEW(focus), facts.editing);
    else
        gtk_widget_activate_action(focus, facts.widgetAction, nullptr);
}

} // namespace quillmere::platform::gtk
