#include "base/Json.h"

#include <gtest/gtest.h>
#include <limits>

namespace quillmere {
namespace {

TEST(Json, ScriptTextNeverBreaksItsLineOrItsTag) {
    const std::string hostile = "\"'\\\n\r\xE2\x80\xA8\xE2\x80\xA9</script><!-- \x01\x7F";
    const auto text = scriptJson(JsonObject{{"name", hostile}, {hostile, 1}});
    ASSERT_TRUE(text);
    for (const auto* part : {"\n", "\r", "\xE2\x80\xA8", "\xE2\x80\xA9", "</"})
        EXPECT_EQ(text->find(part), std::string::npos);
    const auto back = parseJson(*text);
    ASSERT_TRUE(back);
    EXPECT_EQ(stringField(back->get_object(), "name"), hostile);
}

TEST(Json, WhatCannotBeWrittenIsRefused) {
    EXPECT_FALSE(compactJson(JsonObject{{"a", "\xFF"}}));
    EXPECT_FALSE(compactJson(JsonObject{{"\xFF", "a"}}));
    EXPECT_FALSE(compactJson(JsonObject{{"a", json::array{1, json::array{std::numeric_limits<double>::infinity()}}}}));
    EXPECT_EQ(compactJson(JsonObject{{"a", jsonNumber(100)}, {"b", json::array{nullptr, true}}}),
              R"({"a":100,"b":[null,true]})");
}

TEST(Json, DepthIsBounded) {
    const auto nested = [](size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    EXPECT_TRUE(parseJson(nested(60)));
    EXPECT_FALSE(parseJson(nested(1'000'000)));
}

} // namespace
} // namespace quillmere
