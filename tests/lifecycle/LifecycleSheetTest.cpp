#include "tests/lifecycle/LifecycleFixture.h"

namespace quillmere {
namespace {

using view::ButtonKey;
using view::ButtonTint;

/// A line for each view of the sheet, as far as the user sees a difference.
void describe(const view::View& shown, std::string& text) {
    const std::string size = shown.size ? std::to_string(static_cast<int>(shown.size->width)) + "x" +
                                              std::to_string(static_cast<int>(shown.size->height))
                                        : "";
    if (const auto* stack = std::get_if<view::Stack>(&shown.kind()))
        text += (stack->axis == view::Axis::vertical ? "column " : "row ") + size + " " +
                std::to_string(static_cast<int>(stack->spacing)) + "\n";
    if (std::get_if<view::Spacer>(&shown.kind()))
        text += "spacer\n";
    if (const auto* symbol = std::get_if<view::Symbol>(&shown.kind()))
        text += "symbol " + symbol->name + " " + size + (symbol->color == view::TextColor::secondary ? " second" : "") +
                "\n";
    if (const auto* label = std::get_if<view::Label>(&shown.kind()))
        text += "label " + label->text + " " + size + " " + std::to_string(static_cast<int>(label->fontSize)) +
                (label->weight == view::Weight::medium ? " medium" : "") +
                (label->color == view::TextColor::secondary ? " second" : "") +
                (label->alignment == view::Alignment::center ? " centred" : "") + "\n";
    if (const auto* button = std::get_if<view::Button>(&shown.kind()))
        text += "button " + button->title + " " + size +
                (button->style == view::ButtonStyle::inlineBezel ? " inline" : "") +
                (button->tint == ButtonTint::destructive ? " red" : "") +
                (button->key == ButtonKey::enter    ? " Return"
                 : button->key == ButtonKey::escape ? " Escape"
                                                    : "") +
                "\n";
    for (const auto& child : shown.children())
        describe(*child, text);
}

TEST(LifecycleSheet, ShowsItsPartsInTheirOrder) {
    LifecycleSheet sheet{.title = "T",
                         .symbol = "trash",
                         .message = "M",
                         .actions = {{"One", [] {}}, {"Cancel", [] {}}, {"Three", [] {}}},
                         .last = LastAction::destructive};
    sheet.close = [] {};
    const auto whole = sheet.build(true);
    EXPECT_EQ(whole.contentSize, (view::Size{442, 340}));
    EXPECT_EQ(std::get<view::Glass>(whole.content->kind()).radius, 24);
    const auto& stack = *whole.content->children().at(0);
    EXPECT_EQ(std::get<view::Stack>(stack.kind()).margins,
              (view::Insets{.top = 24, .left = 26, .bottom = 24, .right = 26}));
    std::string text;
    describe(*whole.content, text);
    EXPECT_EQ(text, "column  15\n"
                    "row 390x0 0\nspacer\nbutton ×  inline Escape\n"
                    "symbol trash 30x30 second\n"
                    "label T 390x0 21 medium centred\n"
                    "label M 390x0 13 second centred\n"
                    "column  8\n"
                    "button One 290x0 Return\nbutton Cancel 290x0 Escape\nbutton Three 290x0 red\n");
    EXPECT_EQ(whole.content->find("close")->accessibilityLabel, "Close");

    sheet.close = {};
    sheet.actions = {{"Only", [] {}}};
    std::string plain;
    describe(*sheet.build(false).content, plain);
    EXPECT_EQ(plain, "column  15\n"
                     "label T 390x0 21 medium centred\n"
                     "label M 390x0 13 second centred\n"
                     "column  8\n"
                     "button Only 290x0 red Return\n")
        << "without a close button and without an image of the symbol";
}

TEST(LifecycleSheet, KeysOfItsButtons) {
    const struct {
        const char* title;
        size_t index;
        ButtonKey key;
    } rows[] = {{"Go", 0, ButtonKey::enter},      {"Go", 1, ButtonKey::none},      {"Later", 0, ButtonKey::escape},
                {"Cancel", 1, ButtonKey::escape}, {"cancel", 0, ButtonKey::enter}, {"Later…", 2, ButtonKey::none}};
    for (const auto& row : rows)
        EXPECT_EQ(lifecycleButtonKey(row.title, row.index), row.key) << row.title << row.index;
}

class SheetFlowTest : public LifecycleTest {
protected:
    void present(AppLifecycleController::Dismissal dismissal = AppLifecycleController::Dismissal::byCloseButton) {
        lifecycle().present({.title = "T",
                             .symbol = "trash",
                             .message = "M",
                             .actions = {{"Go",
                                          [this] {
                                              EXPECT_FALSE(desktop_.dialogs.sheet) << "the sheet is gone first";
                                              ++gone_;
                                          }}}},
                            dismissal);
    }
    int gone_ = 0;
};

TEST_F(SheetFlowTest, AnActionRunsAfterItsSheetHasGone) {
    present();
    press("Go");
    EXPECT_FALSE(desktop_.dialogs.sheet);
    EXPECT_EQ(gone_, 0) << "on a later turn";
    settle();
    EXPECT_EQ(gone_, 1);

    present();
    press("close");
    settle();
    EXPECT_FALSE(desktop_.dialogs.sheet);
    EXPECT_EQ(gone_, 1);

    present(AppLifecycleController::Dismissal::byAction);
    EXPECT_FALSE(desktop_.dialogs.sheet->content->find("close"));
}

TEST_F(SheetFlowTest, NothingIsStacked) {
    desktop_.dialogs.alert(*window_, {.message = "Busy"}, [](size_t) {});
    present();
    EXPECT_FALSE(desktop_.dialogs.sheet) << "an alert is attached";
    desktop_.dialogs.answerAlert();
    settle();
    EXPECT_FALSE(desktop_.dialogs.sheet) << "what was dropped does not come back";

    present();
    const auto first = desktop_.dialogs.sheet->content;
    present();
    EXPECT_EQ(desktop_.dialogs.sheet->content, first);
    lifecycle().chooseDefaultType();
    EXPECT_TRUE(desktop_.dialogs.panels.empty()) << "nor is a panel laid over a sheet";
}

TEST_F(SheetFlowTest, ButtonsOutliveTheirControllerWithoutHarm) {
    present();
    lifecycle_.reset();
    press("Go");
    press("close");
    settle();
    EXPECT_EQ(gone_, 0);

    window_.reset();
    desktop_.dialogs.endSheet(*desktop_.toolkit.window);
    present();
    EXPECT_FALSE(desktop_.dialogs.sheet) << "without a window nothing is shown";
}

} // namespace
} // namespace quillmere
