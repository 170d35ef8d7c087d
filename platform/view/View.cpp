#include "platform/view/View.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quillmere::view {

ViewRef View::make(Kind kind) {
    return ViewRef(new View(std::move(kind)));
}

void View::add(ViewRef child) {
    insert(children_.size(), std::move(child));
}

void View::addAbove(ViewRef child, const View& sibling) {
    insert(std::min(indexOf(sibling) + 1, children_.size()), std::move(child));
}

void View::addBelow(ViewRef child, const View& sibling) {
    insert(indexOf(sibling), std::move(child));
}

void View::removeFromParent() {
    const auto keep = shared_from_this();
    const auto parent = parent_.lock();
    if (!parent)
        return;
    std::erase(parent->children_, keep);
    parent_.reset();
    setObserver(nullptr);
    parent->notifyChildren();
}

void View::setTint(Color color) {
    if (auto* tint = std::get_if<Tint>(&kind_)) {
        tint->color = color;
        notifyKind();
    }
}

void View::setText(std::string text) {
    if (auto* label = std::get_if<Label>(&kind_)) {
        label->text = std::move(text);
        notifyKind();
    }
}

void View::setTitle(std::string title) {
    if (auto* button = std::get_if<Button>(&kind_)) {
        button->title = std::move(title);
        notifyKind();
    }
}

ViewRef View::find(const std::string& wanted) {
    if (tag == wanted)
        return shared_from_this();
    for (const auto& child : children_)
        if (auto found = child->find(wanted))
            return found;
    return nullptr;
}

void View::setObserver(ViewObserver* observer) {
    observer_ = observer;
    for (const auto& child : children_)
        child->setObserver(observer);
}

void View::insert(size_t at, ViewRef child) {
    child->removeFromParent();
    child->parent_ = weak_from_this();
    child->setObserver(observer_);
    children_.insert(children_.begin() + static_cast<std::ptrdiff_t>(std::min(at, children_.size())), std::move(child));
    notifyChildren();
}

size_t View::indexOf(const View& child) const {
    const auto at = std::ranges::find(children_, &child, &ViewRef::get);
    return static_cast<size_t>(at - children_.begin());
}

void View::notifyChildren() {
    if (observer_)
        observer_->childrenChanged(*this);
}

void View::notifyKind() {
    if (observer_)
        observer_->kindChanged(*this);
}

void press(View& view) {
    if (const auto* button = std::get_if<Button>(&view.kind()); button && button->onPress) {
        const auto action = button->onPress; // the press may take the view out of the tree
        action();
    }
}

void slide(View& view, double value) {
    auto* slider = std::get_if<Slider>(&view.kind_);
    if (!slider || std::isnan(value))
        return;
    value = std::clamp(value, slider->minimum, slider->maximum);
    if (std::exchange(slider->value, value) == value)
        return;
    const auto keep = view.shared_from_this();
    const auto action = slider->onSlide;
    view.notifyKind();
    if (action)
        action(value);
}

void toggle(View& view, bool on) {
    auto* control = std::get_if<Switch>(&view.kind_);
    if (!control || std::exchange(control->on, on) == on)
        return;
    const auto keep = view.shared_from_this();
    const auto action = control->onToggle;
    view.notifyKind();
    if (action)
        action(on);
}

} // namespace quillmere::view
