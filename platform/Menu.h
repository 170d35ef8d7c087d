#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillmere::platform {

/// Everything that a menu item can do. The first group is the delegate's, the rest belongs to whatever has the focus.
enum class MenuAction {
    showSettings,
    openDialog,
    about,
    hide,
    quit,
    closeWindow,
    undo,
    redo,
    cut,
    copy,
    paste,
    selectAll,
    toggleFullScreen,
    minimize,
};

enum class MenuTarget { firstResponder, delegate };

/// The modifiers of a key equivalent. `command` is the desktop's main modifier (Ctrl on Linux).
struct KeyModifiers {
    bool command = true;
    bool shift = false;
    bool control = false;
    bool operator==(const KeyModifiers&) const = default;
};

struct MenuItem {
    std::string title;
    MenuAction action{};
    std::string key; // one lower-case character; empty for none
    KeyModifiers modifiers{};
    MenuTarget target = MenuTarget::firstResponder;
};

/// An item, or a separator when it holds none.
using MenuEntry = std::optional<MenuItem>;

struct Menu {
    std::string title;
    std::vector<MenuEntry> entries;
};

struct MenuSpec {
    std::vector<Menu> menus;
    size_t windowsMenu = 0; // index of the menu that also lists the windows
};

} // namespace quillmere::platform
