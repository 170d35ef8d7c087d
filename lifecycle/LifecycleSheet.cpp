#include "lifecycle/LifecycleSheet.h"

#include "appearance/GlassSurface.h"
#include "lifecycle/LifecycleButton.h"
#include "lifecycle/LifecycleMessages.h"

namespace quillmere {

namespace {

constexpr view::Size contentSize{.width = 442, .height = 340};
constexpr view::Insets margins{.top = 24, .left = 26, .bottom = 24, .right = 26};
constexpr double spacing = 15, buttonSpacing = 8;
constexpr double textWidth = 390, buttonWidth = 290, symbolSide = 30;
constexpr double titleSize = 21, messageSize = 13;
constexpr double cornerRadius = 24;

view::ViewRef ofWidth(view::ViewRef item, double width) {
    item->size = view::Size{.width = width, .height = 0};
    return item;
}

view::ViewRef makeText(const std::string& text, double size, view::Weight weight, view::TextColor color) {
    return ofWidth(
        view::View::make(view::Label{
            .text = text, .fontSize = size, .weight = weight, .color = color, .alignment = view::Alignment::center}),
        textWidth);
}

view::ViewRef makeCloseRow(const std::function<void()>& close) {
    auto row = view::View::make(view::Stack{.axis = view::Axis::horizontal});
    row->add(view::View::make(view::Spacer{}));
    auto button = LifecycleButton(close).view(
        {.title = "×", .style = view::ButtonStyle::inlineBezel, .key = view::ButtonKey::escape});
    button->accessibilityLabel = "Close";
    button->tag = "close";
    row->add(std::move(button));
    return ofWidth(std::move(row), textWidth);
}

view::ViewRef makeSymbol(const std::string& name) {
    auto image = view::View::make(view::Symbol{.name = name, .color = view::TextColor::secondary});
    image->size = view::Size{.width = symbolSide, .height = symbolSide};
    return image;
}

view::ViewRef makeButtons(const LifecycleSheet& sheet) {
    auto column = view::View::make(view::Stack{.axis = view::Axis::vertical, .spacing = buttonSpacing});
    for (size_t index = 0; index < sheet.actions.size(); ++index) {
        const auto& [title, action] = sheet.actions[index];
        const bool isRed = sheet.last == LastAction::destructive && index + 1 == sheet.actions.size();
        column->add(ofWidth(
            LifecycleButton(action).view({.title = title,
                                          .style = view::ButtonStyle::rounded,
                                          .tint = isRed ? view::ButtonTint::destructive : view::ButtonTint::plain,
                                          .key = lifecycleButtonKey(title, index)}),
            buttonWidth));
        column->children().back()->tag = title;
    }
    return column;
}

} // namespace

view::ButtonKey lifecycleButtonKey(const std::string& title, size_t index) {
    if (title == lifecycleMessages::later || title == lifecycleMessages::cancel)
        return view::ButtonKey::escape;
    return index == 0 ? view::ButtonKey::enter : view::ButtonKey::none;
}

platform::SheetSpec LifecycleSheet::build(bool hasSymbol) const {
    auto stack = view::View::make(view::Stack{.axis = view::Axis::vertical, .spacing = spacing, .margins = margins});
    if (close)
        stack->add(makeCloseRow(close));
    if (hasSymbol)
        stack->add(makeSymbol(symbol));
    stack->add(makeText(title, titleSize, view::Weight::medium, view::TextColor::label));
    stack->add(makeText(message, messageSize, view::Weight::regular, view::TextColor::secondary));
    stack->add(makeButtons(*this));
    auto surface = glassSurface(std::move(stack), cornerRadius);
    surface->accessibilityLabel = title;
    return {.contentSize = contentSize, .content = std::move(surface)};
}

} // namespace quillmere
