#include "shell/Toolbar.h"

#include "appearance/GlassSurface.h"

namespace quillmere {

namespace {

view::ViewRef makeButton(const char* symbol, const char* label, const char* tooltip, std::function<void()> action) {
    auto button = view::View::make(view::Button{.symbol = symbol, .tooltip = tooltip, .onPress = std::move(action)});
    button->size = view::Size{.width = 34, .height = 30};
    button->accessibilityLabel = label;
    button->tag = symbol;
    return button;
}

} // namespace

Toolbar makeToolbar(std::function<void()> openFile, std::function<void()> showSettings) {
    const auto folder = makeButton(folderSymbol, "Open file", "Open File or Folder (⌘O)", std::move(openFile));
    const auto settings = makeButton(settingsSymbol, "Settings", "Settings (⌘,)", std::move(showSettings));
    auto stack = view::View::make(view::Stack{
        .axis = view::Axis::horizontal, .spacing = 4, .margins = {.top = 2, .left = 5, .bottom = 2, .right = 5}});
    stack->add(folder);
    stack->add(settings);

    auto surface = glassSurface(stack, 18);
    surface->size = view::Size{.width = 82, .height = 34};
    surface->placement = view::TopTrailing{.top = 5, .trailing = 12};
    surface->tag = "toolbar";
    return {.surface = surface, .settingsButton = settings};
}

view::ViewRef makeLoadingIndicator() {
    auto spinner = view::View::make(view::Spinner{});
    spinner->size = view::Size{.width = 28, .height = 28};
    auto bar = view::View::make(view::ProgressBar{});
    bar->size = view::Size{.width = 132, .height = 3};
    auto stack = view::View::make(view::Stack{.axis = view::Axis::vertical, .spacing = 14, .margins = {}});
    stack->add(spinner);
    stack->add(bar);
    stack->placement = view::Centered{};
    stack->tag = "startup-loading";
    return stack;
}

} // namespace quillmere
