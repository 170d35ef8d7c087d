#include "shell/MainMenu.h"

namespace quillmere {

using platform::KeyModifiers;
using platform::Menu;
using platform::MenuAction;
using platform::MenuItem;
using platform::MenuTarget;

platform::MenuSpec mainMenu() {
    constexpr auto separator = std::nullopt;
    constexpr KeyModifiers command{};
    constexpr KeyModifiers commandShift{.shift = true};
    constexpr KeyModifiers commandControl{.control = true};
    constexpr auto ours = MenuTarget::delegate;
    constexpr auto focused = MenuTarget::firstResponder;
    return {.menus = {Menu{.title = "",
                           .entries = {MenuItem{"About Quillmere", MenuAction::about, "", command, focused}, separator,
                                       MenuItem{"Settings…", MenuAction::showSettings, ",", command, ours}, separator,
                                       MenuItem{"Hide Quillmere", MenuAction::hide, "h", command, focused},
                                       MenuItem{"Quit Quillmere", MenuAction::quit, "q", command, focused}}},
                      Menu{.title = "File",
                           .entries = {MenuItem{"Open…", MenuAction::openDialog, "o", command, ours},
                                       MenuItem{"Close Window", MenuAction::closeWindow, "w", command, focused}}},
                      Menu{.title = "Edit",
                           .entries = {MenuItem{"Undo", MenuAction::undo, "z", command, focused},
                                       MenuItem{"Redo", MenuAction::redo, "z", commandShift, focused}, separator,
                                       MenuItem{"Cut", MenuAction::cut, "x", command, focused},
                                       MenuItem{"Copy", MenuAction::copy, "c", command, focused},
                                       MenuItem{"Paste", MenuAction::paste, "v", command, focused},
                                       MenuItem{"Select All", MenuAction::selectAll, "a", command, focused}}},
                      Menu{.title = "View",
                           .entries = {MenuItem{"Toggle Full Screen", MenuAction::toggleFullScreen, "f", commandControl,
                                                focused}}},
                      Menu{.title = "Window",
                           .entries = {MenuItem{"Minimize", MenuAction::minimize, "m", command, focused}}}},
            .windowsMenu = 4};
}

} // namespace quillmere
