#include "platform/gtk/web/ReloadPace.h"
#include "platform/gtk/web/WebViewBridge.h"

#include <gtest/gtest.h>

namespace quillmere::platform::gtk {
namespace {

TEST(ReloadPace, WaitsLongerWithEveryDeathWithinAMinute) {
    using std::chrono::milliseconds;
    using std::chrono::seconds;
    ReloadPace pace;
    SteadyTime now{};
    milliseconds before{};
    for (int death = 0; death < 12; ++death) {
        const auto pause = pace.afterDeath(now += seconds(1));
        EXPECT_GE(pause, ReloadPace::shortest);
        EXPECT_LE(pause, ReloadPace::longest);
        EXPECT_TRUE(pause > before || pause == ReloadPace::longest);
        before = pause;
    }
    EXPECT_EQ(before, ReloadPace::longest);
    EXPECT_EQ(pace.afterDeath(now + seconds(61)), ReloadPace::shortest);
}

TEST(WebViewBridge, TakesJsonTextWithinItsLimits) {
    const auto context = GObjectRef<JSCContext>::adopt(jsc_context_new());
    const std::pair<const char*, std::optional<std::string>> rows[] = {
        {R"('{"type":"ready"}')", R"({"type":"ready"})"},
        {R"('"\\u2028 ä"')", "\"\u2028 ä\""},
        {"JSON.stringify({ text: 'x\\0y' })", R"({"text":"x\u0000y"})"},
        {"JSON.stringify('é'.repeat(3)).repeat(1)", "\"ééé\""},
        {"'{\"type\":'", std::nullopt},
        {"''", std::nullopt},
        {"({ type: 'ready' })", std::nullopt},
        {"7", std::nullopt},
        {"null", std::nullopt},
        {"'['.repeat(100000) + ']'.repeat(100000)", std::nullopt},
        {"JSON.stringify('x'.repeat(98 * 1024 * 1024))", std::nullopt},
        {R"(JSON.stringify('a\ud83d'))", "\"a\uFFFD\""},
    };
    for (const auto& [script, expected] : rows) {
        const auto value = GObjectRef<JSCValue>::adopt(jsc_context_evaluate(context.get(), script, -1));
        const auto body = WebViewBridge::bodyOf(value.get());
        EXPECT_EQ(body ? compactJson(*body) : std::nullopt, expected) << script;
    }
    // The longest text that the clipboard takes, in the longest form that it can have.
    const auto large = GObjectRef<JSCValue>::adopt(
        jsc_context_evaluate(context.get(), "JSON.stringify('\\x01'.repeat(16 * 1024 * 1024))", -1));
    const auto body = WebViewBridge::bodyOf(large.get());
    ASSERT_TRUE(body && body->is_string());
    EXPECT_EQ(body->as_string().size(), 16U * 1024 * 1024);
}

} // namespace
} // namespace quillmere::platform::gtk
