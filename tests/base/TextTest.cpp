#include "base/Text.h"

#include <cmath>
#include <gtest/gtest.h>

namespace quillmere {
namespace {

TEST(Text, BrokenUtf8IsShownButNeverKept) {
    const std::pair<std::string, std::string> rows[] = {
        {"plain", "plain"},
        {"é€😀", "é€😀"},
        {"a\xFF"
         "b",
         "a\xEF\xBF\xBD"
         "b"},
        {"cut\xE2\x82", "cut\xEF\xBF\xBD"},
        {"\xC0\xAF", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xF4\x90\x80\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {std::string("nul\0nul", 7), std::string("nul\0nul", 7)},
    };
    for (const auto& [bytes, shown] : rows) {
        EXPECT_EQ(displayText(bytes), shown);
        EXPECT_TRUE(isValidUtf8(displayText(bytes)));
        EXPECT_EQ(isValidUtf8(bytes), bytes == shown);
    }
}

TEST(Text, PercentEncodingComesBack) {
    std::string every;
    for (int byte = 0; byte < 256; ++byte)
        every += static_cast<char>(byte);
    EXPECT_EQ(percentDecode(percentEncodePath(every)), every);
    EXPECT_EQ(percentEncodePath("a b;%é/?#"), "a%20b%3B%25%C3%A9/%3F%23");
    EXPECT_EQ(percentDecode("%e9%41"), "\xE9"
                                       "A");
    for (const auto* bad : {"%", "%4", "a%", "%g0", "%-1", "%+1"})
        EXPECT_FALSE(percentDecode(bad)) << bad;
}

TEST(Text, DoublesAlwaysHaveAPoint) {
    const std::pair<double, const char*> rows[] = {{0, "0.0"},   {12, "12.0"}, {1700000000.25, "1700000000.25"},
                                                   {0.1, "0.1"}, {-3, "-3.0"}, {1e21, "1000000000000000000000.0"}};
    for (const auto& [value, text] : rows)
        EXPECT_EQ(shortestDouble(value), text);
}

TEST(Text, LowerCaseIsThatOfNoLocale) {
    EXPECT_EQ(lowercase("ÄI.TXT"), "äi.txt");
    EXPECT_EQ(lowercase("A\xFF"
                        "B"),
              "a\xFF"
              "b");
    EXPECT_EQ(asciiLower("ÄB"), "Äb");
}

} // namespace
} // namespace quillmere
