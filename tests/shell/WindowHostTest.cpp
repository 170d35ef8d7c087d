#include "tests/shell/DelegateFixture.h"

namespace quillmere {
namespace {

using platform::DragOperation;
using platform::NavigationDecision;

class WindowHostTest : public ReadyDelegateTest {};

TEST_F(WindowHostTest, DropsOpenTheFirstFileOnly) {
    EXPECT_EQ(page().drag({}), DragOperation::none);
    EXPECT_FALSE(page().drop({}));
    const FileUrl file = write("a.txt");
    EXPECT_EQ(page().drag({file}), DragOperation::copy);
    EXPECT_TRUE(page().drop({file, write("b.txt"), write("c.txt")}));
    EXPECT_THAT(await("open"), HasText("name", "a.txt"));
    settle();
    EXPECT_EQ(received("busy").size(), 1U);

    EXPECT_TRUE(page().drop({folder("things")}));
    EXPECT_THAT(await("open", 2), HasText("kind", "container"));
}

TEST_F(WindowHostTest, EveryWayToTheOpenPanel) {
    view::press(*window().content->find("folder"));
    ASSERT_TRUE(desktop_.application.choose("Open…"));
    post({{"type", "open-dialog"}});
    post({{"type", "open-folder-dialog"}});
    ASSERT_EQ(desktop_.dialogs.panels.size(), 4U);
    for (const auto& panel : desktop_.dialogs.panels) {
        EXPECT_EQ(panel.title, "Open File or Folder");
        EXPECT_TRUE(panel.files && panel.folders);
    }
    desktop_.dialogs.answerPanel(std::nullopt);
    desktop_.dialogs.answerPanel(write("chosen.txt"));
    EXPECT_THAT(await("open"), HasText("name", "chosen.txt"));
    EXPECT_EQ(received("busy").size(), 1U) << "a cancelled panel opens nothing";
}

TEST_F(WindowHostTest, APanelMayOutliveTheDelegate) {
    post({{"type", "open-dialog"}});
    post({{"type", "pick-background"}});
    delegate_.reset();
    desktop_.dialogs.answerPanel(write("late.txt"));
    desktop_.dialogs.answerPanel(write("late.png"));
    settle();
    EXPECT_FALSE(std::filesystem::exists(at("home/.local/share/Quillmere/background.png").path()));
}

TEST_F(WindowHostTest, NavigationStaysOnThePage) {
    EXPECT_EQ(page().navigate("quillmere://app/any/path"), NavigationDecision::allow);
    EXPECT_EQ(page().navigate("https://example.org/"), NavigationDecision::cancel);
    EXPECT_EQ(page().navigate(std::nullopt), NavigationDecision::cancel);
}

TEST_F(WindowHostTest, ReopenAndClose) {
    const int before = window().ordersFront;
    EXPECT_TRUE(delegate_->applicationShouldHandleReopen(true));
    EXPECT_EQ(window().ordersFront, before + 1);
    post({{"type", "min"}});
    EXPECT_TRUE(window().miniaturized);
    post({{"type", "drag"}});
    EXPECT_EQ(window().drags, 1);
    post({{"type", "close"}});
    EXPECT_TRUE(window().closed && desktop_.application.terminated);
}

TEST_F(WindowHostTest, ADeadPageComesBackWithItsDocument) {
    page().drop({write("doc.txt", "12345")});
    const auto before = await("open");
    page().crash();
    EXPECT_EQ(page().reloads, 1);
    ASSERT_TRUE(window().content->find("startup-loading"));
    window().setKey(false);
    EXPECT_EQ(received("active").size(), 0U) << "a page that is gone hears nothing";

    post({{"type", "ready"}});
    EXPECT_FALSE(window().content->find("startup-loading"));
    const auto after = await("open", 2);
    EXPECT_THAT(after, HasText("name", "doc.txt"));
    EXPECT_GT(requestId(after), requestId(before));
}

TEST_F(WindowHostTest, ADeadPageComesBackWithItsListing) {
    folder("things/inner");
    page().drop({at("things")});
    const auto listing = await("open");
    page().crash();
    page().crash();
    post({{"type", "ready"}});
    const auto again = await("open", 2);
    EXPECT_THAT(again, HasText("kind", "container"));
    EXPECT_EQ(again.at("containerToken"), listing.at("containerToken"));
    EXPECT_THAT(received("busy").back(), HasText("name", "things"));
}

TEST_F(WindowHostTest, AFileThatWaitedWinsOverTheOneShown) {
    page().drop({write("shown.txt")});
    await("open");
    page().crash();
    page().drop({write("waiting.txt")});
    page().crash();
    post({{"type", "ready"}});
    EXPECT_THAT(await("open", 2), HasText("name", "waiting.txt"));
    settle();
    EXPECT_EQ(received("open").size(), 2U);
}

TEST_F(WindowHostTest, WorkForADeadPageIsDropped) {
    page().drop({write("slow.txt")});
    page().crash();
    settle();
    EXPECT_EQ(received("open").size(), 0U);
    post({{"type", "ready"}});
    await("open");
    settle();
    EXPECT_EQ(received("open").size(), 1U);
}

} // namespace
} // namespace quillmere
