#pragma once

#include "platform/view/View.h"

#include <gtk/gtk.h>

#include <optional>
#include <string>

namespace quillmere::platform::gtk {

/// The icon theme's name for a symbol; the file with its image is named after it.
std::string symbolIconName(const std::string& symbol);

/// A widget that groups others, as assistive tools see it too.
GtkWidget* makeBox(GtkOrientation orientation, GtkAccessibleRole role);

// Widgets for single kinds of views, by which the user's input reaches the view. Their looks are in the style sheet.
GtkWidget* makeLabel(const view::Label& label);
/// A symbol as high as its view.
GtkWidget* makeSymbol(const view::Symbol& symbol, const std::optional<view::Size>& size);
GtkWidget* makeSeparator();
GtkWidget* makeScroll();
GtkWidget* makeButton(const view::ViewRef& view, const view::Button& button);
GtkWidget* makeSwitch(const view::ViewRef& view, const view::Switch& control);
GtkWidget* makeSlider(const view::ViewRef& view, const view::Slider& slider);
GtkWidget* makeSpinner();
GtkWidget* makeProgressBar();

/// Shows another title on a button that `makeButton` has made with one.
void setButtonTitle(GtkWidget* button, const std::string& title);

/// The picture in this file, at most as large as asked for, for a button; null when it cannot be read.
GtkWidget* makeThumbnail(const std::string& file, const view::Size& size);

} // namespace quillmere::platform::gtk
