#pragma once

#include "platform/view/Geometry.h"

#include <cstdint>
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
enum class Alignment { center, leading };
enum class Weight { regular, medium, semibold };
enum class TextColor { label, secondary };
enum class ButtonStyle { borderless, rounded, inlineBezel };
enum class ButtonTint { plain, destructive };
/// The key that presses a button of a sheet.
enum class ButtonKey { none, enter, escape };

/// Children over one another, the first at the bottom, each by its placement.
struct Overlay {};
/// Children in a row or column.
struct Stack {
    Axis axis = Axis::horizontal;
    double spacing = 0;
    Insets margins{};
    Alignment alignment = Alignment::center; // across it
};
/// Takes the room that is left in a row or column.
struct Spacer {};
/// Shows as much of its one child, from the top, as its size allows; the rest by scrolling. Has no ground of its own.
struct Scroll {};
/// Rounded glass surface around one child.
struct Glass {
    double radius = 0;
};
/// The window's blurred backdrop.
struct Material {};
struct Tint {
    Color color{};
};
/// Text that wraps.
struct Label {
    std::string text;
    double fontSize = 13;
    Weight weight = Weight::regular;
    TextColor color = TextColor::label;
    Alignment alignment = Alignment::leading; // of its lines
};
/// A symbol by name, as large as the view.
struct Symbol {
    std::string name;
    TextColor color = TextColor::label;
};
/// A thin line across a column.
struct Separator {};
/// A button that shows a symbol by name, a title or both, or a picture alone.
struct Button {
    std::string symbol{};
    std::string tooltip{};
    std::function<void()> onPress{};
    std::string title{};
    std::string symbolLabel{}; // what a screen reader says of the symbol
    std::string imageFile{};   // path of the picture, scaled to the button's size; none when it cannot be read
    ButtonStyle style = ButtonStyle::borderless;
    ButtonTint tint = ButtonTint::plain;
    ButtonKey key = ButtonKey::none;
};
struct Switch {
    bool on = false;
    std::function<void(bool)> onToggle{};
};
/// Tells of every step while it is dragged.
struct Slider {
    double value = 0;
    double minimum = 0;
    double maximum = 1;
    std::function<void(double)> onSlide{};
};
/// Indeterminate progress, always moving while it is shown.
struct Spinner {};
struct ProgressBar {};
struct Native {
    std::shared_ptr<NativeView> handle;
};

using Kind = std::variant<Overlay, Stack, Spacer, Scroll, Glass, Material, Tint, Label, Symbol, Separator, Button,
                          Switch, Slider, Spinner, ProgressBar, Native>;

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
    /// Changes the text of a `Label`.
    void setText(std::string text);
    /// Changes the title of a `Button`.
    void setTitle(std::string title);

    /// The first view of the subtree with this tag; none when there is no such view.
    ViewRef find(const std::string& tag);

    void setObserver(ViewObserver* observer);

    std::optional<Size> size;       // fixed size, or the content's, as is a side of 0
    Placement placement = Fill{};   // within an overlay
    std::string accessibilityLabel; // what a screen reader says
    std::string tag;                // names a view for tests and for `find`
    std::int64_t controlTag = 0;    // number by which a control's owner knows it; 0 for none

private:
    explicit View(Kind kind) : kind_(std::move(kind)) {}
    void insert(size_t at, ViewRef child);
    size_t indexOf(const View& child) const;
    void notifyChildren();
    void notifyKind();
    friend void slide(View& view, double value);
    friend void toggle(View& view, bool on);

    Kind kind_;
    std::vector<ViewRef> children_;
    std::weak_ptr<View> parent_;
    ViewObserver* observer_ = nullptr;
};

/// Presses a button as a click, a key or a test does. Nothing for any other kind.
void press(View& view);
/// Moves a slider, within its ends. Nothing for any other kind, or when it stands there already.
void slide(View& view, double value);
/// Sets a switch. Nothing for any other kind, or when it stands so already.
void toggle(View& view, bool on);

} // namespace quillmere::view
