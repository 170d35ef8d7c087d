#include "platform/gtk/view/ViewRenderer.h"

#include "platform/gtk/view/TextScale.h"
#include "platform/gtk/view/ViewWidgets.h"
#include "platform/gtk/view/WidgetView.h"

#include <algorithm>

namespace quillmere::platform::gtk {

namespace {

constexpr std::chrono::milliseconds pulseInterval{90};

template <typename... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};

void setMargins(GtkWidget* widget, const view::Insets& insets) {
    gtk_widget_set_margin_top(widget, scaled(insets.top));
    gtk_widget_set_margin_bottom(widget, scaled(insets.bottom));
    gtk_widget_set_margin_start(widget, scaled(insets.left));
    gtk_widget_set_margin_end(widget, scaled(insets.right));
}

void align(GtkWidget* widget, GtkAlign horizontal, GtkAlign vertical) {
    gtk_widget_set_halign(widget, horizontal);
    gtk_widget_set_valign(widget, vertical);
}

void placeInOverlay(GtkWidget* widget, const view::Placement& placement) {
    std::visit(Overloaded{
                   [&](const view::Fill& fill) { setMargins(widget, fill.insets); },
                   [&](const view::Centered&) { align(widget, GTK_ALIGN_CENTER, GTK_ALIGN_CENTER); },
                   [&](const view::TopTrailing& corner) {
                       align(widget, GTK_ALIGN_END, GTK_ALIGN_START);
                       setMargins(widget, {.top = corner.top, .right = corner.trailing});
                   },
               },
               placement);
}

void placeInStack(GtkWidget* widget, const view::Stack& stack, const view::View& child) {
    if (std::holds_alternative<view::Spacer>(child.kind())) {
        const bool row = stack.axis == view::Axis::horizontal;
        gtk_widget_set_hexpand(widget, row);
        gtk_widget_set_vexpand(widget, !row);
        return;
    }
    const GtkAlign across = stack.alignment == view::Alignment::leading ? GTK_ALIGN_START : GTK_ALIGN_CENTER;
    if (stack.axis == view::Axis::vertical)
        align(widget, across, GTK_ALIGN_CENTER);
    else
        align(widget, GTK_ALIGN_CENTER, across);
    gtk_widget_set_hexpand(widget, FALSE); // or a spacer inside would widen it
}

void place(GtkWidget* widget, const view::View& parent, const view::View& child) {
    if (std::holds_alternative<view::Overlay>(parent.kind()))
        return placeInOverlay(widget, child.placement);
    if (const auto* stack = std::get_if<view::Stack>(&parent.kind()))
        return placeInStack(widget, *stack, child);
    align(widget, GTK_ALIGN_FILL, GTK_ALIGN_FILL);
    gtk_widget_set_hexpand(widget, TRUE);
}

/// What the text scale changes about a widget by itself.
void measure(GtkWidget* widget, const view::View& view) {
    if (view.size)
        gtk_widget_set_size_request(widget, view.size->width > 0 ? scaled(view.size->width) : -1,
                                    view.size->height > 0 ? scaled(view.size->height) : -1);
    if (const auto* stack = std::get_if<view::Stack>(&view.kind())) {
        gtk_box_set_spacing(GTK_BOX(widget), scaled(stack->spacing));
        setMargins(widget, stack->margins);
    }
}

bool takesInput(const view::View& view) {
    const auto& kind = view.kind();
    return std::holds_alternative<view::Button>(kind) || std::holds_alternative<view::Switch>(kind) ||
           std::holds_alternative<view::Slider>(kind) || std::holds_alternative<view::Scroll>(kind) ||
           std::holds_alternative<view::Native>(kind) ||
           std::ranges::any_of(view.children(), [](const auto& child) { return takesInput(*child); });
}

GtkAccessibleRole stackRole(const view::View& view) {
    const auto isButton = [](const auto& child) { return std::holds_alternative<view::Button>(child->kind()); };
    const auto* stack = std::get_if<view::Stack>(&view.kind());
    const bool buttonsOnly = stack && stack->axis == view::Axis::horizontal && !view.children().empty() &&
                             std::ranges::all_of(view.children(), isButton);
    return buttonsOnly ? GTK_ACCESSIBLE_ROLE_TOOLBAR : GTK_ACCESSIBLE_ROLE_GROUP;
}

GtkWidget* makeStack(const view::View& view, const view::Stack& stack) {
    return makeBox(stack.axis == view::Axis::horizontal ? GTK_ORIENTATION_HORIZONTAL : GTK_ORIENTATION_VERTICAL,
                   stackRole(view));
}

GtkWidget* makeOverlay() {
    GtkWidget* overlay = gtk_overlay_new();
    // The lowest layer gives the size; content laid over it never makes the window grow.
    gtk_overlay_set_child(GTK_OVERLAY(overlay), gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0));
    return overlay;
}

void addChild(GtkWidget* container, GtkWidget* child, GtkWidget* previous) {
    if (GTK_IS_SCROLLED_WINDOW(container)) {
        if (!gtk_widget_get_parent(child))
            gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(container), child);
        return;
    }
    if (!gtk_widget_get_parent(child)) {
        if (GTK_IS_OVERLAY(container))
            gtk_overlay_add_overlay(GTK_OVERLAY(container), child);
        else
            gtk_box_append(GTK_BOX(container), child);
    }
    gtk_widget_insert_after(child, container, previous);
}

void removeChild(GtkWidget* container, GtkWidget* child) {
    if (GTK_IS_SCROLLED_WINDOW(container))
        gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(container), nullptr);
    else if (GTK_IS_OVERLAY(container))
        gtk_overlay_remove_overlay(GTK_OVERLAY(container), child);
    else
        gtk_box_remove(GTK_BOX(container), child);
}

} // namespace

ViewRenderer::~ViewRenderer() {
    unmount();
}

GObjectRef<GtkWidget> ViewRenderer::mount(view::ViewRef root) {
    unmount();
    root_ = std::move(root);
    auto widget = GObjectRef<GtkWidget>::share(render(*root_));
    root_->setObserver(this);
    return widget;
}

void ViewRenderer::unmount() {
    if (!root_)
        return;
    root_->setObserver(nullptr);
    forget(root_.get());
    root_.reset();
}

void ViewRenderer::refreshTints() {
    for (auto& [view, node] : nodes_)
        if (const auto* tint = std::get_if<view::Tint>(&view->kind()))
            applyTint(node, *tint);
}

void ViewRenderer::refreshSizes() {
    for (auto& [view, node] : nodes_) {
        measure(node.widget.get(), *view);
        if (const auto parent = node.view->parent(); parent && nodes_.contains(parent.get()))
            place(node.widget.get(), *parent, *view);
    }
}

GtkWidget* ViewRenderer::widgetOf(const view::View& view) const {
    const auto found = nodes_.find(&view);
    return found == nodes_.end() ? nullptr : found->second.widget.get();
}

GtkWidget* ViewRenderer::render(view::View& view) {
    auto& node = nodes_[&view];
    node.view = &view;
    node.widget = GObjectRef<GtkWidget>::share(makeWidget(view, node));
    GtkWidget* widget = node.widget.get();
    measure(widget, view);
    const bool isToolbar = gtk_accessible_get_accessible_role(GTK_ACCESSIBLE(widget)) == GTK_ACCESSIBLE_ROLE_TOOLBAR;
    if (const std::string label = view.accessibilityLabel.empty() && isToolbar ? "Toolbar" : view.accessibilityLabel;
        !label.empty())
        gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, label.c_str(), -1);
    syncChildren(view, node);
    return widget;
}

GtkWidget* ViewRenderer::makeWidget(view::View& view, Node& node) {
    const auto self = view.shared_from_this();
    const auto styled = [&](GtkWidget* widget) {
        node.style = std::make_unique<WidgetStyle>(widget);
        return widget;
    };
    return std::visit(Overloaded{
                          [&](const view::Overlay&) { return makeOverlay(); },
                          [&](const view::Stack& stack) { return makeStack(view, stack); },
                          [&](const view::Spacer&) { return gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0); },
                          [&](const view::Scroll&) { return makeScroll(); },
                          [&](const view::Glass& glass) {
                              GtkWidget* box = styled(makeBox(GTK_ORIENTATION_HORIZONTAL, GTK_ACCESSIBLE_ROLE_GROUP));
                              gtk_widget_add_css_class(box, "quillmere-glass");
                              gtk_widget_set_overflow(box, GTK_OVERFLOW_HIDDEN); // the corners cut what scrolls inside
                              node.style->set("border-radius: " + std::to_string(glass.radius) + "px;");
                              return box;
                          },
                          [&](const view::Material&) { return gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0); },
                          [&](const view::Tint& tint) {
                              GtkWidget* box = styled(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0));
                              applyTint(node, tint);
                              return box;
                          },
                          [&](const view::Label& label) { return makeLabel(label); },
                          [&](const view::Symbol& symbol) { return makeSymbol(symbol, view.size); },
                          [&](const view::Separator&) { return makeSeparator(); },
                          [&](const view::Button& button) { return makeButton(self, button); },
                          [&](const view::Switch& control) { return makeSwitch(self, control); },
                          [&](const view::Slider& slider) { return makeSlider(self, slider); },
                          [&](const view::Spinner&) { return makeSpinner(); },
                          [&](const view::ProgressBar&) {
                              GtkWidget* bar = makeProgressBar();
                              node.pulse = std::make_unique<LoopTimer>();
                              node.pulse->every(pulseInterval,
                                                [bar] { gtk_progress_bar_pulse(GTK_PROGRESS_BAR(bar)); });
                              return bar;
                          },
                          [&](const view::Native& native) {
                              GtkWidget* widget = dynamic_cast<WidgetView&>(*native.handle).widget();
                              host_.nativeMounted(widget);
                              return widget;
                          },
                      },
                      view.kind());
}

void ViewRenderer::applyTint(Node& node, const view::Tint& tint) {
    auto shown = tint.color;
    if (!host_.showsDesktop())
        shown.alpha = 1;
    node.style->set("background-color: " + cssColor(shown) + ";");
    host_.tintChanged(tint.color);
}

void ViewRenderer::kindChanged(view::View& view) {
    const auto found = nodes_.find(&view);
    if (found == nodes_.end())
        return;
    GtkWidget* widget = found->second.widget.get();
    if (const auto* tint = std::get_if<view::Tint>(&view.kind()))
        applyTint(found->second, *tint);
    else if (const auto* label = std::get_if<view::Label>(&view.kind()))
        gtk_label_set_text(GTK_LABEL(widget), label->text.c_str());
    else if (const auto* button = std::get_if<view::Button>(&view.kind()))
        setButtonTitle(widget, button->title);
    else if (const auto* control = std::get_if<view::Switch>(&view.kind()))
        gtk_switch_set_active(GTK_SWITCH(widget), control->on);
    else if (const auto* slider = std::get_if<view::Slider>(&view.kind()))
        gtk_range_set_value(GTK_RANGE(widget), slider->value);
}

void ViewRenderer::childrenChanged(view::View& view) {
    if (const auto found = nodes_.find(&view); found != nodes_.end())
        syncChildren(view, found->second);
}

void ViewRenderer::removeGone(view::View& view, Node& node) {
    const auto isGone = [&](const view::View* child) {
        return std::ranges::find(view.children(), child, &view::ViewRef::get) == view.children().end();
    };
    std::vector<const view::View*> gone;
    std::ranges::copy_if(node.children, std::back_inserter(gone), isGone);
    for (const auto* child : gone) {
        removeChild(node.widget.get(), nodes_.at(child).widget.get());
        forget(child);
    }
}

void ViewRenderer::syncChildren(view::View& view, Node& node) {
    removeGone(view, node);
    GtkWidget* container = node.widget.get();
    std::vector<const view::View*> children;
    GtkWidget* previous = GTK_IS_OVERLAY(container) ? gtk_overlay_get_child(GTK_OVERLAY(container)) : nullptr;
    for (const auto& child : view.children()) {
        const bool isNew = !nodes_.contains(child.get());
        GtkWidget* widget = isNew ? render(*child) : nodes_.at(child.get()).widget.get();
        if (isNew)
            place(widget, view, *child);
        addChild(container, widget, previous);
        previous = widget;
        children.push_back(child.get());
    }
    node.children = std::move(children);
    gtk_widget_set_can_target(container, takesInput(view));
}

void ViewRenderer::forget(const view::View* view) {
    const auto found = nodes_.find(view);
    if (found == nodes_.end())
        return;
    auto node = std::move(found->second);
    nodes_.erase(found);
    for (const auto* child : node.children)
        forget(child);
}

} // namespace quillmere::platform::gtk
