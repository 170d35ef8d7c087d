#pragma once

#include "platform/view/Geometry.h"

#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace quillmere::view {

class View;
using ViewRef = std::shared_ptr<View>;

/// What a backend puts behind a `Native` view (the web view, a file preview). Its own type knows the rest.
class NativeView {
public:
    virtual ~NativeView() = default;
};

enum class Axis { horizontal, vertical };

/// Children over one another, the first at the bottom, each by its placement.
struct Overlay {};
/// Children in a row or column, centred across it.
struct Stack {
    Axis axis = Axis::horizontal;
    double spacing = 0;
    Insets margins{};
};
/// Rounded glass surface around one child.
struct Glass {
    double radius = 0;
};
/// The window's blurred backdrop.
struct Material {};
struct Tint {
    Color color{};
};
/// A borderless button that shows a symbol by name.
struct Button {
    std::string symbol;
    std::string tooltip;
    std::function<void()> onPress;
};
/// Indeterminate progress, always moving while it is shown.
struct Spinner {};
struct ProgressBar {};
struct Native {
    std::shared_ptr<NativeView> handle;
};

using Kind = std::variant<Overlay, Stack, Glass, Material, Tint, Button, Spinner, ProgressBar, Native>;

/// Told of the few things that change after mounting. Main thread.
class ViewObserver {
public:
    virtual ~ViewObserver() = default;
    virtual void childrenChanged(View& view) = 0;
    virtual void kindChanged(View& view) = 0;
};

/// One node of the retained, toolkit-neutral view tree. Main thread only. A parent owns its children; a child knows its
/// parent weakly. A mounted tree has one observer, the backend's renderer.
class View : public std::enable_shared_from_this<View> {
public:
    static ViewRef make(Kind kind);

    const Kind& kind() const noexcept { return kind_; }
    const std::vector<ViewRef>& children() const noexcept { return children_; }
    ViewRef parent() const noexcept { return parent_.lock(); }

    void add(ViewRef child);
    void addAbove(ViewRef child, const View& sibling);
    void addBelow(ViewRef child, const View& sibling);
    void removeFromParent();

    /// Changes the colour of a `Tint` view.
    void setTint(Color color);

    /// The first view of the subtree with this tag; none when there is no such view.
    ViewRef find(const std::string& tag);

    void setObserver(ViewObserver* observer);

    std::optional<Size> size;       // fixed size, or the content's
    Placement placement = Fill{};   // within an overlay
    std::string accessibilityLabel; // what a screen reader says
    std::string tag;                // names a view for tests and for `find`

private:
    explicit View(Kind kind) : kind_(std::move(kind)) {}
    void insert(size_t at, ViewRef child);
    size_t indexOf(const View& child) const;
    void notifyChildren();

    Kind kind_;
    std::vector<ViewRef> children_;
    std::weak_ptr<View> parent_;
    ViewObserver* observer_ = nullptr;
};

/// Presses a button as a click, a key or a test does. Nothing for any other kind.
void press(View& view);

} // namespace quillmere::view
