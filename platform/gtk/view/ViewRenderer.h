#pragma once

#include "platform/gtk/glib/Signals.h"
#include "platform/gtk/view/StyleSheet.h"
#include "platform/view/View.h"

#include <gtk/gtk.h>

#include <unordered_map>

namespace quillmere::platform::gtk {

/// Turns a view tree into widgets and keeps them in step with it. Main thread only. The tree must not outlive the
/// renderer as its observer: `unmount` first.
class ViewRenderer final : public view::ViewObserver {
public:
    /// What the renderer needs of the window around it.
    class Host {
    public:
        virtual ~Host() = default;
        /// The colour under everything has changed.
        virtual void tintChanged(const view::Color& tint) = 0;
        /// A widget that somebody else made has come into the window.
        virtual void nativeMounted(GtkWidget* widget) = 0;
        /// Whether what is behind the window shows through, blurred; else a tint has to be opaque.
        virtual bool showsDesktop() const = 0;
    };

    explicit ViewRenderer(Host& host) : host_(host) {}
    ~ViewRenderer() override;

    /// Renders the tree and follows its changes from now on.
    GObjectRef<GtkWidget> mount(view::ViewRef root);
    void unmount();
    /// Colours every tint again, when what is behind the window has changed.
    void refreshTints();
    /// Measures everything again, when the text scale has changed.
    void refreshSizes();
    /// The widget of a mounted view; null when it is not mounted here.
    GtkWidget* widgetOf(const view::View& view) const;

private:
    struct Node {
        view::View* view = nullptr; // alive as long as it is mounted
        GObjectRef<GtkWidget> widget;
        std::vector<const view::View*> children; // keys of nodes_, in order
        std::unique_ptr<WidgetStyle> style;
        std::unique_ptr<LoopTimer> pulse;
    };

    void childrenChanged(view::View& view) override;
    void kindChanged(view::View& view) override;

    GtkWidget* render(view::View& view);
    GtkWidget* makeWidget(view::View& view, Node& node);
    void applyTint(Node& node, const view::Tint& tint);
    void syncChildren(view::View& view, Node& node);
    void removeGone(view::View& view, Node& node);
    void forget(const view::View* view);

    Host& host_;
    view::ViewRef root_;
    std::unordered_map<const view::View*, Node> nodes_;
};

} // namespace quillmere::platform::gtk
