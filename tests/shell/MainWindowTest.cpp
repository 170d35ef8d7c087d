#include "shell/MainWindow.h"
#include "platform/headless/HeadlessPlatform.h"
#include "tests/support/Sandbox.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

class MainWindowTest : public testing::Test, protected tests::Sandbox {
protected:
    MainWindowTest() {
        window_.addPage(view::View::make(view::Overlay{}));
        window_.addToolbar({.openDialog = [this] { pressed += "o"; }, .showSettings = [this] { pressed += "s"; }});
    }
    ~MainWindowTest() override { desktop_.executors.main().end(); }

    std::string layers() const {
        std::string tags;
        for (const auto& layer : desktop_.toolkit.window->content->children())
            tags += layer->tag + " ";
        return tags;
    }

    platform::HeadlessPlatform desktop_{root()};
    MainWindow window_{desktop_.platform(), {}};
    std::string pressed;
};

TEST_F(MainWindowTest, LayersComeAndGoInTheirPlaces) {
    EXPECT_EQ(layers(), "background  toolbar ");
    window_.showStartupLoading();
    window_.showStartupLoading();
    EXPECT_EQ(layers(), "background  toolbar startup-loading ");

    EXPECT_FALSE(window_.showPreview(at("a.doc"), 44));
    desktop_.toolkit.canPreviewFiles = true;
    EXPECT_TRUE(window_.showPreview(at("a.doc"), 84));
    EXPECT_EQ(layers(), "background  preview toolbar startup-loading ");
    const auto preview = desktop_.toolkit.window->content->find("preview");
    EXPECT_EQ(std::get<view::Fill>(preview->placement).insets.top, 84);
    window_.removePreview();
    window_.removePreview();
    window_.showStartupError("Gone.");
    EXPECT_EQ(layers(), "background  toolbar ");
    EXPECT_EQ(desktop_.dialogs.alerts.at(0).informative, "Gone.");
}

TEST_F(MainWindowTest, TheToolbarsButtonsActInTheirOrder) {
    const auto toolbar = desktop_.toolkit.window->content->find("toolbar");
    for (const auto* symbol : {"folder", "slider.horizontal.3"})
        press(*toolbar->find(symbol));
    EXPECT_EQ(pressed, "os");
}

} // namespace
} // namespace quillmere
