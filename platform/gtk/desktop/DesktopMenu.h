#pragma once

#include "platform/Menu.h"
#include "platform/gtk/glib/GObjectRef.h"

#include <gtk/gtk.h>

#include <functional>

namespace quillmere::platform::gtk {

/// The key equivalent in the toolkit's notation, for example "<Control>o". Command is Ctrl; Control, which is another
/// key only where Command exists, becomes Alt. Empty for an item without a key.
std::string acceleratorFor(const MenuItem& item);

/// A text that names keys as elsewhere, "Settings (⌘,)", as this desktop names them: "Settings (Ctrl+,)".
std::string withDesktopKeys(const std::string& text);

/// The application's menu: an action with its keys for every item, and a menu of them all for a button, since windows
/// here have no menu bar. Main thread only.
class DesktopMenu {
public:
    DesktopMenu(GtkApplication* application, MenuSpec spec, std::function<void(const MenuItem&)> perform);
    ~DesktopMenu();
    DesktopMenu(const DesktopMenu&) = delete;
    DesktopMenu& operator=(const DesktopMenu&) = delete;

    /// All items, for a button of the window.
    GObjectRef<GMenuModel> model() const;

private:
    void addAction(const MenuItem& item);

    GtkApplication* application_;
    MenuSpec spec_;
    std::function<void(const MenuItem&)> perform_;
    std::vector<std::string> actions_;
};

/// Does one of the editing commands of a menu with whatever has the keyboard.
void performEditing(MenuAction action, GtkWidget* focus);

} // namespace quillmere::platform::gtk
