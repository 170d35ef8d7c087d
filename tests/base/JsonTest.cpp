#include "base/Json.h"

#include <cstdio>
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
    EXPECT_EQ(compactJson(parseJson(nested(500)).value()), nested(500));
    EXPECT_FALSE(parseJson(nested(1'000'000)));
}

TEST(Json, NumbersAreReadToTheLastBit) {
    for (const double number : {0.1, 0.3, 1.1, 2.675, 1234567.891, 1 / 3.0, 5e-324, 1e22, 1.7976931348623157e308,
                                9007199254740993.5, -123456789.123456789, 4.35, 0.000035, 1700000000.123}) {
        char text[64];
        std::snprintf(text, sizeof text, "[%.17g]", number);
        const auto value = parseJson(text);
        ASSERT_TRUE(value) << text;
        EXPECT_EQ(value->as_array().at(0).to_number<double>(), number) << text;
        EXPECT_EQ(parseJson(compactJson(*value).value()), *value) << text;
    }
    const std::string whole = "[0,-7,9223372036854775807,18446744073709551615]";
    EXPECT_EQ(compactJson(parseJson(whole).value()), whole);
    for (const auto* wrong : {"[1.]", "[.5]", "[01]", "[+1]", "[1e]", "[NaN]", "[1,]", "1 2"})
        EXPECT_FALSE(parseJson(wrong)) << wrong;
}

TEST(Json, HalfCharactersAreReplaced) {
    const std::pair<const char*, const char*> rows[] = {
        {R"("a\ud83d")", "a\uFFFD"},
        {R"("\ude00\ud83d x")", "\uFFFD\uFFFD x"},
        {R"("\ud83d\ud83d\ude00")", "\uFFFD\U0001F600"},
        {R"("\ud83d\n\u0041")", "\uFFFD\nA"},
        {R"("\\ud83d\DBFF")", nullptr},
        {R"("\\ud83d \udBFF")", "\\ud83d \uFFFD"},
        {R"("\ud83)", nullptr},
        {R"("\ud83d)", nullptr},
        {R"("\ud83d\)", nullptr},
    };
    for (const auto& [text, expected] : rows) {
        const auto value = parseJson(text);
        ASSERT_EQ(value.has_value(), expected != nullptr) << text;
        if (value) {
            EXPECT_EQ(std::string(value->as_string()), expected) << text;
        }
    }
}

} // namespace
} // namespace quillmere
