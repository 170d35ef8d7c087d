#include "appearance/SettingsController.h"
#include "platform/headless/HeadlessServices.h"

#include <gmock/gmock.h>

namespace quillmere {
namespace {

using testing::ElementsAre;

class SettingsControllerTest : public testing::Test {
protected:
    std::shared_ptr<SettingsController> make(AppearancePreferences preferences = {}, double maximumHeight = 724) {
        return std::make_shared<SettingsController>(
            std::move(preferences), maximumHeight,
            SettingsController::Services{.defaults = defaults_, .resources = FileUrl("/bundle/Resources")});
    }
    AppearancePreferences stored() const { return AppearancePreferences::load(defaults_); }

    platform::HeadlessDefaults defaults_;
};

std::string describe(const view::View& view);

template <typename... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};

/// A view as the user would tell it; rows and groups in brackets.
std::string describe(const view::View& view) {
    std::string inner;
    for (const auto& child : view.children())
        inner += (inner.empty() ? "" : " | ") + describe(*child);
    return std::visit(Overloaded{[](const view::Label& label) { return label.text; },
                                 [](const view::Separator&) { return std::string("---"); },
                                 [](const view::Spacer&) { return std::string("..."); },
                                 [](const view::Switch& control) { return std::string(control.on ? "on" : "off"); },
                                 [](const view::Slider&) { return std::string("slider"); },
                                 [](const view::Button& button) {
                                     return "<" + (button.title.empty() ? button.tooltip : button.title) + ">";
                                 },
                                 [&](const auto&) { return "[" + inner + "]"; }},
                      view.kind());
}

const view::View& itemsOf(SettingsController& panel) {
    return *panel.view()->find("settings");
}

TEST_F(SettingsControllerTest, ShowsItsItemsInOrder) {
    const auto panel = make({.tint = "#abcdef", .photoOpacity = 0.999, .photoBlur = 37.6, .showZoom = true});
    std::vector<std::string> items;
    for (const auto& item : itemsOf(*panel).children())
        items.push_back(describe(*item));
    EXPECT_THAT(items,
                ElementsAre("Appearance", "---", "[Window color | ... | <#ABCDEF>]", "---", "Background photo",
                            "[<Alps> | <Mountain Valley> | <Snow Peaks> | <Glass Drop>]", "[<Choose photo…> | <None>]",
                            "[Photo opacity | ... | 99%]", "slider", "[Photo blur | ... | 37%]", "slider", "---",
                            "[Air button outlines | ... | on]", "[Show zoom buttons | ... | on]",
                            "<Default app settings…>", "---", "<Uninstall Quillmere…>"));
}

TEST_F(SettingsControllerTest, KeepsToItsMeasures) {
    const auto panel = make();
    const auto& stack = std::get<view::Stack>(itemsOf(*panel).kind());
    EXPECT_EQ(stack.spacing, 10);
    EXPECT_EQ(stack.margins, (view::Insets{.top = 16, .left = 20, .bottom = 16, .right = 20}));
    EXPECT_EQ(std::get<view::Glass>(panel->view()->kind()).radius, 22);
    EXPECT_EQ(panel->view()->size->width, 328);
    const double whole = panel->view()->size->height;
    EXPECT_EQ(whole, std::ceil(whole));
    const auto& photo = *panel->view()->find("bg2.jpg");
    EXPECT_EQ(photo.size, (view::Size{.width = 62, .height = 42}));
    EXPECT_EQ(std::get<view::Button>(photo.kind()).imageFile, "/bundle/Resources/app/backgrounds/bg2.jpg");
    for (const char* control : {"Photo opacity", "Photo blur"})
        EXPECT_EQ(panel->view()->find(control)->size->width, 288) << control;

    const struct {
        double room, height;
    } rows[] = {{724, std::min(724.0, whole)}, {whole + 1, whole}, {whole - 1, whole - 1}, {300, 300}, {254, 280}};
    for (const auto& row : rows)
        EXPECT_EQ(make({}, row.room)->view()->size->height, row.height) << row.room;
}

TEST(SettingsHeight, IsThatOfTheWindowWithinTheScreen) {
    EXPECT_EQ(SettingsController::maximumHeightFor(600, 1400), 524);
    EXPECT_EQ(SettingsController::maximumHeightFor(800, 330), 254);
    EXPECT_EQ(SettingsController::maximumHeightFor(std::nullopt, 1400), 644);
    EXPECT_EQ(SettingsController::maximumHeightFor(1400, std::nullopt), 804);
}

TEST_F(SettingsControllerTest, EveryControlHasATagFromOneAndAName) {
    for (const auto& panel : {make(), make()}) {
        std::vector<std::int64_t> tags;
        std::vector<std::string> names;
        const std::function<void(const view::View&)> visit = [&](const view::View& view) {
            if (view.controlTag != 0) {
                tags.push_back(view.controlTag);
                names.push_back(view.accessibilityLabel);
            }
            for (const auto& child : view.children())
                visit(*child);
        };
        visit(*panel->view());
        EXPECT_THAT(tags, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13));
        EXPECT_THAT(names, testing::Each(testing::Not(testing::IsEmpty())));
    }
}

TEST_F(SettingsControllerTest, WritesSavesAndTellsEveryChange) {
    const auto panel = make({.photo = "bg1.jpg"});
    std::vector<AppearancePreferences> told;
    panel->setCallbacks({.changed = [&](const AppearancePreferences& changed) {
        EXPECT_EQ(stored(), changed) << "saved before it is told";
        told.push_back(changed);
    }});
    const auto find = [&](const char* tag) -> view::View& { return *panel->view()->find(tag); };
    const auto text = [&](const char* tag) { return std::get<view::Label>(find(tag).kind()).text; };

    view::press(find("bg4.jpg"));
    EXPECT_EQ(told.back().photo, "bg4.jpg");
    view::press(find("None"));
    EXPECT_EQ(told.back().photo, "");
    view::slide(find("Photo blur"), 37.6);
    EXPECT_EQ(told.back().photoBlur, 37.6);
    EXPECT_EQ(text("Photo blur value"), "37%");
    view::slide(find("Photo opacity"), 7);
    EXPECT_EQ(told.back().photoOpacity, 1) << "not beyond the slider's end, where it stands";
    view::slide(find("Photo opacity"), 0.29);
    EXPECT_EQ(text("Photo opacity value"), "28%") << "cut off, not rounded";
    view::toggle(find("Air button outlines"), false);
    EXPECT_FALSE(told.back().airOutline);
    view::toggle(find("Show zoom buttons"), true);
    EXPECT_TRUE(told.back().showZoom);
    EXPECT_EQ(told.size(), 6U);
    EXPECT_EQ(panel->preferences(), told.back());
}

TEST_F(SettingsControllerTest, TheColourPanelFeedsTheControllerThatOpenedIt) {
    auto panel = make({.tint = "#112233"});
    view::Color shown;
    std::function<void(view::Color)> choose;
    panel->setCallbacks({.showColors = [&](view::Color color, std::function<void(view::Color)> changed) {
        shown = color;
        choose = std::move(changed);
    }});
    view::press(*panel->view()->find("color"));
    EXPECT_EQ(shown, (view::Color{0x11 / 255.0, 0x22 / 255.0, 0x33 / 255.0}));
    choose({.red = 1, .green = 0.5, .blue = 0});
    EXPECT_EQ(stored().tint, "#ff7f00");
    EXPECT_EQ(std::get<view::Button>(panel->view()->find("color")->kind()).title, "#FF7F00");
    panel.reset();
    choose({});
    EXPECT_EQ(stored().tint, "#000000") << "after the panel has closed";
}

TEST_F(SettingsControllerTest, ButtonsLeadOn) {
    const auto panel = make();
    std::vector<std::string> done;
    const auto note = [&](const char* what) { return [&done, what] { done.emplace_back(what); }; };
    SettingsController::Callbacks callbacks{.pickPhoto = note("photo"), .uninstall = note("uninstall")};
    callbacks.explainDefaults = note("explanation");
    panel->setCallbacks(callbacks);
    for (const char* title : {"Choose photo…", "Default app settings…", "Uninstall Quillmere…"})
        view::press(*panel->view()->find(title));
    callbacks.chooseDefaults = note("defaults");
    panel->setCallbacks(callbacks);
    view::press(*panel->view()->find("Default app settings…"));
    EXPECT_THAT(done, ElementsAre("photo", "explanation", "uninstall", "defaults"));
    panel->performAction(*view::View::make(view::Spacer{})); // a tag that nobody has given
    EXPECT_EQ(done.size(), 4U);
}

} // namespace
} // namespace quillmere
