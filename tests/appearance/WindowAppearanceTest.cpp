#include "appearance/WindowAppearance.h"
#include "platform/headless/HeadlessPlatform.h"
#include "tests/support/Sandbox.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

class WindowAppearanceTest : public testing::Test, protected tests::Sandbox, protected WindowAppearance::Host {
protected:
    ~WindowAppearanceTest() override { desktop_.executors.main().end(); }

    BackgroundView* background() override { return hasBackground ? &background_ : nullptr; }
    platform::Window& window() override { return *window_; }
    bool pageIsReady() const override { return ready; }
    std::string grant(const FileUrl& file) override { return "/__file/T/" + file.lastPathComponent(); }
    void applyPlatformPreferences(const JsonObject& preferences) override { told.push_back(preferences); }
    void closeSettings() override { ++closings; }

    platform::HeadlessPlatform desktop_{root()};
    std::unique_ptr<platform::Window> window_ = desktop_.toolkit.makeWindow({});
    BackgroundView background_;
    std::shared_ptr<WindowAppearance> appearance_ = std::make_shared<WindowAppearance>(
        static_cast<WindowAppearance::Host&>(*this), WindowAppearance::Services{.defaults = desktop_.defaults,
                                                                                .dialogs = desktop_.dialogs,
                                                                                .executors = desktop_.executors,
                                                                                .images = desktop_.images,
                                                                                .support = at("support")});
    bool hasBackground = true;
    bool ready = true;
    int closings = 0;
    std::vector<JsonObject> told;
};

TEST_F(WindowAppearanceTest, NothingIsToldWithoutAWindowOrAPage) {
    hasBackground = false;
    appearance_->applyAppearance();
    EXPECT_TRUE(told.empty());
    hasBackground = true;
    ready = false;
    appearance_->setPreferences({.tint = "#ff0000"});
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(std::get<view::Tint>(background_.view()->find("tint")->kind()).color, (view::Color{1, 0, 0, 0.65}));
}

TEST_F(WindowAppearanceTest, ACustomPhotoIsGrantedOnlyWhileItIsChosenAndThere) {
    const auto customUrl = [&](const char* photo) {
        appearance_->setPreferences({.photo = photo});
        return *stringField(told.back(), "bgCustomUrl");
    };
    EXPECT_EQ(customUrl("custom"), "") << "no such file yet";
    write("support/background.png");
    EXPECT_TRUE(customUrl("custom").starts_with("/__file/T/background.png?v="));
    EXPECT_EQ(customUrl("bg3.jpg"), "");
    EXPECT_EQ(customUrl(""), "");
}

TEST_F(WindowAppearanceTest, ChoosingAPhotoClosesTheSettingsAndChangesNothingWhenItFails) {
    folder("support");
    appearance_->pickBackground();
    EXPECT_EQ(closings, 1);
    desktop_.dialogs.answerPanel(at("missing.jpg"));
    ASSERT_TRUE(desktop_.executors.main().runUntil([&] { return desktop_.executors.isIdle(); }));
    desktop_.executors.main().runPending();
    EXPECT_EQ(appearance_->preferences(), AppearancePreferences{});
}

} // namespace
} // namespace quillmere
