#include "tests/shell/DelegateFixture.h"

namespace quillmere {
namespace {

class DispatchTest : public ReadyDelegateTest {};

TEST_F(DispatchTest, CancellingAlwaysAnswersAndDropsTheWork) {
    post({{"type", "cancel-preview"}});
    const auto idle = received("error").at(0);
    EXPECT_EQ(idle, (JsonObject{{"type", "error"}, {"message", "Preview cancelled."}, {"requestId", 1}}));

    page().drop({write("a.txt")});
    post({{"type", "cancel-preview"}});
    EXPECT_EQ(requestId(received("error").back()), requestId(received("busy").back()) + 1);
    settle();
    EXPECT_EQ(received("open").size(), 0U);
}

TEST_F(DispatchTest, TheClipboard) {
    const std::string full(16'777'216, 'x');
    struct Row {
        const char* what;
        JsonObject body;
        bool success;
        std::string identity;
    };
    const Row rows[] = {
        {"text", {{"type", "clipboard-copy"}, {"text", "héllo"}, {"copyRequestId", 7}}, true, "7"},
        {"the other name", {{"type", "copy-text"}, {"text", "x"}, {"copyRequestId", "id"}}, true, "\"id\""},
        {"no identity", {{"type", "copy-text"}, {"text", "x"}}, true, "null"},
        {"an odd identity",
         {{"type", "copy-text"}, {"text", "x"}, {"copyRequestId", {1, {{"a", nullptr}}}}},
         true,
         R"([1,{"a":null}])"},
        {"as much as may be", {{"type", "clipboard-copy"}, {"text", full}}, true, "null"},
        {"a byte more", {{"type", "clipboard-copy"}, {"text", full + "x"}}, false, "null"},
        {"nothing", {{"type", "clipboard-copy"}, {"text", ""}}, false, "null"},
        {"no text", {{"type", "clipboard-copy"}, {"copyRequestId", 1.5}}, false, "1.5E0"},
        {"no string", {{"type", "clipboard-copy"}, {"text", 5}}, false, "null"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        desktop_.pasteboard.text = "before";
        post(row.body);
        const auto reply = received("clipboard-result").back();
        EXPECT_EQ(reply.at("success").as_bool(), row.success);
        EXPECT_EQ(compactJson(reply.at("copyRequestId")), row.identity);
        EXPECT_EQ(desktop_.pasteboard.text, row.success ? stringField(row.body, "text") : "before");
    }
    desktop_.pasteboard.refuses = true;
    post({{"type", "copy-text"}, {"text", "x"}});
    EXPECT_FALSE(received("clipboard-result").back().at("success").as_bool());
}

TEST_F(DispatchTest, Samples) {
    post({{"type", "open-sample"}, {"name", "../../elsewhere/note.txt"}});
    const auto open = await("open");
    EXPECT_THAT(open, HasText("name", "note.txt"));
    EXPECT_EQ(open.at("size").as_int64(), 8);
    post({{"type", "open-sample"}, {"name", "unknown.txt"}});
    EXPECT_THAT(received("error").at(0),
                HasText("message", "The selected item no longer exists or access was denied."));
    post({{"type", "open-sample"}});
    post({{"type", "open-sample"}, {"name", 3}});
    post({{"type", "open-sample"}, {"name", ".."}});
    settle();
    EXPECT_EQ(received("busy").size(), 1U);
}

TEST_F(DispatchTest, ACopyThatIsNotInstalledSaysSo) {
    post({{"type", "default-apps"}});
    ASSERT_TRUE(desktop_.dialogs.answerAlert());
    settle();
    post({{"type", "uninstall"}});
    ASSERT_EQ(desktop_.dialogs.alerts.size(), 2U);
    EXPECT_EQ(desktop_.dialogs.alerts[0].message, "Install Quillmere first");
    EXPECT_EQ(desktop_.dialogs.alerts[1].message, "This copy is not installed");
}

} // namespace
} // namespace quillmere
