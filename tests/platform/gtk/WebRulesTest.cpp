#include "platform/gtk/web/WebViewBridge.h"

#include <gtest/gtest.h>

namespace quillmere::platform::gtk {
namespace {

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
    constexpr size_t largest = size_t{16} * 1024 * 1024;
    for (const auto* text :
         {"'é'.repeat(8 * 1024 * 1024)", "'\\n'.repeat(16 * 1024 * 1024)", "'\\x01'.repeat(16 * 1024 * 1024)"}) {
        const auto script = std::string("JSON.stringify(") + text + ")";
        const auto large = GObjectRef<JSCValue>::adopt(jsc_context_evaluate(context.get(), script.c_str(), -1));
        const auto body = WebViewBridge::bodyOf(large.get());
        ASSERT_TRUE(body && body->is_string()) << text;
        EXPECT_EQ(body->as_string().size(), largest) << text;
    }
}

} // namespace
} // namespace quillmere::platform::gtk
