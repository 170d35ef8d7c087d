#include "tests/shell/DelegateFixture.h"

namespace quillmere {
namespace {

class AppearanceTest : public DelegateTest {
protected:
    JsonObject applied() { return page().calls("applyPlatformPreferences").back(); }
    view::Color tint() { return std::get<view::Tint>(window().content->find("tint")->kind()).color; }
    void press(const std::string& tag) { view::press(*window().popover->find(tag)); }
    AppearancePreferences stored() const { return AppearancePreferences::load(desktop_.defaults); }
};

TEST_F(AppearanceTest, ATintIsSeenAtOnceAndToldWhenThePageIsReady) {
    launch();
    ASSERT_TRUE(desktop_.application.choose("Settings…"));
    press("color");
    desktop_.dialogs.colors->onChange({.red = 1, .green = 0.5, .blue = 0});
    EXPECT_EQ(tint(), (view::Color{1, 127 / 255.0, 0, 0.65}));
    EXPECT_EQ(stored().tint, "#ff7f00");
    EXPECT_THAT(page().scripts, testing::IsEmpty());
    post({{"type", "ready"}});
    EXPECT_THAT(applied(), HasText("bgColor", "#ff7f00"));

    post({{"type", "mac-settings"}});
    EXPECT_EQ(window().popover, nullptr) << "asked for while it is shown, the panel closes";
    desktop_.dialogs.colors->onChange({});
    EXPECT_THAT(applied(), HasText("bgColor", "#000000")) << "the colour panel outlives it";
}

TEST_F(AppearanceTest, ThePanelOpensClosesAndIsNewEachTime) {
    launchAndGetReady();
    view::press(*window().content->find("slider.horizontal.3"));
    ASSERT_TRUE(window().popover);
    EXPECT_EQ(window().popoverAnchor, window().content->find("slider.horizontal.3"));
    EXPECT_EQ(window().popover->size->height, std::min(window().popover->size->height, 800 - 76.0));
    view::slide(*window().popover->find("Photo opacity"), 0.5);
    EXPECT_EQ(std::get<view::Label>(window().popover->find("Photo opacity value")->kind()).text, "50%");
    EXPECT_EQ(applied().at("bgAlpha"), 50) << "while it is dragged";
    EXPECT_EQ(stored().photoOpacity, 0.5);
    press("bg3.jpg");
    EXPECT_THAT(applied(), HasText("bgPreset", "backgrounds/bg3.jpg"));

    view::press(*window().content->find("slider.horizontal.3"));
    EXPECT_EQ(window().popover, nullptr);
    post({{"type", "clear-background"}});
    post({{"type", "mac-settings"}});
    press("None");
    EXPECT_EQ(stored().photoOpacity, 0.5) << "what changed while it was closed is kept";

    for (const auto& [way, leave] : std::initializer_list<std::pair<const char*, std::function<void()>>>{
             {"open", [&] { ASSERT_TRUE(desktop_.application.choose("Open…")); }},
             {"choose a photo", [&] { press("Choose photo…"); }},
             {"default apps", [&] { press("Default app settings…"); }},
             {"uninstall", [&] { press("Uninstall Quillmere…"); }}}) {
        if (!window().popover)
            post({{"type", "mac-settings"}});
        ASSERT_TRUE(window().popover) << way;
        leave();
        EXPECT_EQ(window().popover, nullptr) << way;
    }
}

TEST_F(AppearanceTest, AChosenPhotoIsGrantedAndServed) {
    launchAndGetReady();
    post({{"type", "pick-background"}});
    const auto& panel = desktop_.dialogs.panels.at(0);
    EXPECT_EQ(panel.title, "Choose Background Photo");
    EXPECT_TRUE(panel.files && !panel.folders && panel.types == platform::AllowedTypes::images);
    desktop_.dialogs.answerPanel(write("photo.jpg", "a picture"));
    ASSERT_TRUE(desktop_.executors.main().runUntil([&] { return stored().photo == "custom"; }));

    EXPECT_THAT(applied(), HasText("bgMode", "photo"));
    EXPECT_THAT(applied(), HasText("bgPreset", ""));
    const auto url = *stringField(applied(), "bgCustomUrl");
    EXPECT_THAT(url, testing::MatchesRegex("/__file/.*/background\\.png\\?v=[0-9]+\\.[0-9]+"));
    EXPECT_EQ(fetched(url), "a picture");
    EXPECT_EQ(desktop_.images.lastMaxSide, 2560);

    post({{"type", "pick-background"}});
    desktop_.dialogs.answerPanel(write("bad.jpg", "broken"));
    post({{"type", "pick-background"}});
    desktop_.dialogs.answerPanel(at("missing.jpg"));
    settle();
    EXPECT_THAT(applied(), HasText("bgCustomUrl", url)) << "a photo that cannot be read changes nothing";
    EXPECT_EQ(fetched(url), "a picture");
    EXPECT_THAT(names("home/.local/share/Quillmere"), testing::ElementsAre("background.png"));

    post({{"type", "clear-background"}});
    EXPECT_THAT(applied(), HasText("bgMode", "color"));
    EXPECT_THAT(applied(), HasText("bgCustomUrl", ""));
    EXPECT_EQ(stored().photo, "");
}

TEST_F(AppearanceTest, ACustomPhotoThatIsMissingHasNoAddress) {
    AppearancePreferences{.photo = "custom"}.save(desktop_.defaults);
    launchAndGetReady();
    EXPECT_THAT(applied(), HasText("bgMode", "photo"));
    EXPECT_THAT(applied(), HasText("bgCustomUrl", ""));
}

} // namespace
} // namespace quillmere
