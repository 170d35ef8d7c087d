#include "platform/gtk/view/ViewRenderer.h"

#include "platform/gtk/view/WidgetView.h"

#include <algorithm>
#include <cmath>

namespace quillmere::platform::gtk {

namespace {

constexpr int symbolSize = 20;
constexpr std::chrono::milliseconds pulseInterval{90};

template <typename... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};

int points(double value) {
    return static_cast<int>(std::lround(value));
}

void setMargins(GtkWidget* widget, const view::Insets& insets) {
    gtk_widget_set_margin_top(widget, points(insets.top));
    gtk_widget_set_margin_bottom(widget, points(insets.bottom));
    gtk_widget_set_margin_start(widget, points(insets.left));
    gtk_widget_set_margin_end(widget, points(insets.right));
}

void place(GtkWidget* widget, const view::Placement& placement) {
    std::visit(Overloaded{
                   [&](const view::Fill& fill) { setMargins(widget, fill.insets); },
                   [&](const view::Centered&) {
                       gtk_widget_set_halign(widget, GTK_ALIGN_CENTER);
                       gtk_widget_set_valign(widget, GTK_ALIGN_CENTER);
                   },
                   [&](const view::TopTrailing& corner) {
                       gtk_widget_set_halign(widget, GTK_ALIGN_END);
                       gtk_widget_set_valign(widget, GTK_ALIGN_START);
                       setMargins(widget, {.top = corner.top, .right = corner.trailing});
                   },
               },
               placement);
}

bool takesInput(const view::View& view) {
    return std::holds_alternative<view::Button>(view.kind()) || std::holds_alternative<view::Native>(view.kind()) ||
           std::ranges::any_of(view.children(), [](const auto& child) { return takesInput(*child); });
}

GtkWidget* makeBox(GtkOrientation orientation, int spacing, GtkAccessibleRole role) {
    return GTK_WIDGET(
        g_object_new(GTK_TYPE_BOX, "orientation", orientation, "spacing", spacing, "accessible-role", role, nullptr));
}

GtkAccessibleRole stackRole(const view::View& view) {
    const auto isButton = [](const auto& child) { return std::holds_alternative<view::Button>(child->kind()); };
    const bool buttonsOnly = !view.children().empty() && std::ranges::all_of(view.children(), isButton);
    return buttonsOnly ? GTK_ACCESSIBLE_ROLE_TOOLBAR : GTK_ACCESSIBLE_ROLE_GROUP;
}

} // namespace

std::string symbolIconName(const std::string& symbol) {
    // With a name of our own, or the desktop's icon theme would come first; the ending has it coloured like text.
    return "quillmere-" + symbol + "-symbolic";
}

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

GtkWidget* ViewRenderer::render(view::View& view) {
    auto& node = nodes_[&view];
    node.widget = GObjectRef<GtkWidget>::share(makeWidget(view, node));
    GtkWidget* widget = node.widget.get();
    if (view.size)
        gtk_widget_set_size_request(widget, points(view.size->width), points(view.size->height));
    const bool isToolbar = gtk_accessible_get_accessible_role(GTK_ACCESSIBLE(widget)) == GTK_ACCESSIBLE_ROLE_TOOLBAR;
    if (const std::string label = view.accessibilityLabel.empty() && isToolbar ? "Toolbar" : view.accessibilityLabel;
        !label.empty())
        gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, label.c_str(), -1);
    syncChildren(view, node);
    return widget;
}

GtkWidget* ViewRenderer::makeWidget(view::View& view, Node& node) {
    return std::visit(Overloaded{
                          [&](const view::Overlay&) {
                              GtkWidget* overlay = gtk_overlay_new();
                              // The lowest layer gives the size; content laid over it never makes the window grow.
                              gtk_overlay_set_child(GTK_OVERLAY(overlay), gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0));
                              return overlay;
                          },
                          [&](const view::Stack& stack) {
                              const auto orientation = stack.axis == view::Axis::horizontal ? GTK_ORIENTATION_HORIZONTAL
                                                                                            : GTK_ORIENTATION_VERTICAL;
                              GtkWidget* box = makeBox(orientation, points(stack.spacing), stackRole(view));
                              setMargins(box, stack.margins);
                              return box;
                          },
                          [&](const view::Glass& glass) {
                              GtkWidget* box = makeBox(GTK_ORIENTATION_HORIZONTAL, 0, GTK_ACCESSIBLE_ROLE_GROUP);
                              gtk_widget_add_css_class(box, "quillmere-glass");
                              node.style = std::make_unique<WidgetStyle>(box);
                              node.style->set("border-radius: " + std::to_string(points(glass.radius)) + "px;");
                              return box;
                          },
                          [&](const view::Material&) { return gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0); },
                          [&](const view::Tint& tint) {
                              GtkWidget* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
                              node.style = std::make_unique<WidgetStyle>(box);
                              applyTint(node, tint);
                              return box;
                          },
                          [&](const view::Button& button) { return makeButton(view, button); },
                          [&](const view::Spinner&) {
                              GtkWidget* spinner = gtk_spinner_new();
                              gtk_widget_add_css_class(spinner, "quillmere-spinner");
                              gtk_spinner_start(GTK_SPINNER(spinner));
                              return spinner;
                          },
                          [&](const view::ProgressBar&) {
                              GtkWidget* bar = gtk_progress_bar_new();
                              gtk_widget_add_css_class(bar, "quillmere-bar");
                              gtk_progress_bar_set_pulse_step(GTK_PROGRESS_BAR(bar), 0.06);
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

GtkWidget* ViewRenderer::makeButton(view::View& view, const view::Button& button) {
    GtkWidget* widget = gtk_button_new();
    gtk_widget_add_css_class(widget, "quillmere-symbol");
    GtkWidget* image = gtk_image_new_from_icon_name(symbolIconName(button.symbol).c_str());
    gtk_image_set_pixel_size(GTK_IMAGE(image), symbolSize);
    gtk_button_set_child(GTK_BUTTON(widget), image);
    if (!button.tooltip.empty())
        gtk_widget_set_tooltip_text(widget, button.tooltip.c_str());
    connectForLife(widget, "clicked", [weak = view.weak_from_this()](GtkButton*) {
        if (const auto pressed = weak.lock())
            view::press(*pressed);
    });
    return widget;
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
    if (const auto* tint = std::get_if<view::Tint>(&view.kind()))
        applyTint(found->second, *tint);
}

void ViewRenderer::childrenChanged(view::View& view) {
    if (const auto found = nodes_.find(&view); found != nodes_.end())
        syncChildren(view, found->second);
}

void ViewRenderer::syncChildren(view::View& view, Node& node) {
    GtkWidget* container = node.widget.get();
    const bool overlay = GTK_IS_OVERLAY(container);
    const auto isGone = [&](const view::View* child) {
        return std::ranges::find(view.children(), child, &view::ViewRef::get) == view.children().end();
    };
    std::vector<const view::View*> gone;
    std::ranges::copy_if(node.children, std::back_inserter(gone), isGone);
    for (const auto* child : gone) {
        GtkWidget* widget = nodes_.at(child).widget.get();
        if (overlay)
            gtk_overlay_remove_overlay(GTK_OVERLAY(container), widget);
        else
            gtk_box_remove(GTK_BOX(container), widget);
        forget(child);
    }

    std::vector<const view::View*> children;
    GtkWidget* previous = overlay ? gtk_overlay_get_child(GTK_OVERLAY(container)) : nullptr;
    for (const auto& child : view.children()) {
        const bool isNew = !nodes_.contains(child.get());
        GtkWidget* widget = isNew ? render(*child) : nodes_.at(child.get()).widget.get();
        if (isNew && overlay) {
            place(widget, child->placement);
            gtk_overlay_add_overlay(GTK_OVERLAY(container), widget);
        } else if (isNew) {
            const bool acrossStack = std::holds_alternative<view::Stack>(view.kind());
            gtk_widget_set_halign(widget, acrossStack ? GTK_ALIGN_CENTER : GTK_ALIGN_FILL);
            gtk_widget_set_valign(widget, acrossStack ? GTK_ALIGN_CENTER : GTK_ALIGN_FILL);
            gtk_widget_set_hexpand(widget, !acrossStack);
            gtk_box_append(GTK_BOX(container), widget);
        }
        gtk_widget_insert_after(widget, container, previous);
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
