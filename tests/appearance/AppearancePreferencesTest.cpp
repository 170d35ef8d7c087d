#include "appearance/AppearancePreferences.h"
#include "appearance/HexColor.h"
#include "appearance/PageAppearance.h"
#include "base/Json.h"
#include "platform/headless/HeadlessServices.h"

#include <cmath>
#include <gtest/gtest.h>

namespace quillmere {
namespace {

const AppearancePreferences someSettings{.tint = "#aabbcc",
                                         .photo = "bg3.jpg",
                                         .photoOpacity = 0.25,
                                         .photoBlur = 40,
                                         .airOutline = false,
                                         .showZoom = true};

TEST(AppearancePreferences, AnythingButAWholeRecordCountsAsNone) {
    const std::string whole =
        R"({"tint":"#aabbcc","photo":"bg3.jpg","photoOpacity":0.25,"photoBlur":40,"airOutline":false,"showZoom":true})";
    struct Row {
        const char* what;
        std::string stored;
        bool loads;
    };
    const auto with = [&](const std::string& from, const std::string& to) {
        std::string text = whole;
        return text.replace(text.find(from), from.size(), to);
    };
    const Row rows[] = {
        {"whole", whole, true},
        {"other keys beside", with("{", R"({"more":[1],)"), true},
        {"a key missing", with(R"(,"showZoom":true)", ""), false},
        {"a key in other case", with("showZoom", "ShowZoom"), false},
        {"a number as text", with("0.25", "\"0.25\""), false},
        {"a boolean as number", with("false", "0"), false},
        {"a number as boolean", with("40", "true"), false},
        {"text as null", with("\"#aabbcc\"", "null"), false},
        {"an infinite number", with("40", "1e999"), false},
        {"cut off", whole.substr(0, whole.size() - 1), false},
        {"an array", "[" + whole + "]", false},
        {"not JSON", "tint", false},
        {"empty", "", false},
        {"not UTF-8", "\xFF\xFE", false},
    };
    for (const auto& row : rows) {
        platform::HeadlessDefaults defaults;
        defaults.setData(AppearancePreferences::key, row.stored);
        EXPECT_EQ(AppearancePreferences::load(defaults), row.loads ? someSettings : AppearancePreferences{})
            << row.what;
        EXPECT_EQ(defaults.data(AppearancePreferences::key), row.stored) << row.what;
    }
}

TEST(AppearancePreferences, WhatIsSavedIsLoaded) {
    platform::HeadlessDefaults defaults;
    EXPECT_EQ(AppearancePreferences::load(defaults), AppearancePreferences{});
    someSettings.save(defaults);
    EXPECT_EQ(AppearancePreferences::load(defaults), someSettings);

    AppearancePreferences unwritable = someSettings;
    unwritable.tint = "\xFF";
    unwritable.save(defaults);
    EXPECT_EQ(AppearancePreferences::load(defaults), someSettings);
}

TEST(HexColor, FollowsTheTable) {
    const std::pair<const char*, const char*> rows[] = {
        {"#ff0000", "#ff0000"},
        {"##ff0000##", "#ff0000"},
        {"#ABCDEF", "#abcdef"},
        {"80112233", "#112233"},
        {"12345678", "#345678"},
        {"abc", "#000abc"},
        {"+ff", "#0000ff"},
        {"-0", "#000000"},
        {"-1", "#141614"},
        {"", "#141614"},
        {"#", "#141614"},
        {"+", "#141614"},
        {"123456789", "#141614"},
        {" ##ff0000", "#141614"},
        {"ff0000 ", "#141614"},
        {"0xff", "#141614"},
        {"ff#00", "#141614"},
        {"+-1", "#141614"},
        {"00000000000ff", "#0000ff"},
        {"ffffffff", "#ffffff"},
    };
    for (const auto& [text, expected] : rows)
        EXPECT_EQ(hexFromColor(colorFromHex(text)), expected) << text;
    EXPECT_EQ(hexFromColor({.red = 0.5, .green = 0.5, .blue = 0.5}), "#7f7f7f");
    EXPECT_EQ(hexFromColor({.red = -1, .green = 2, .blue = std::nan("")}), "#00ff00");
}

TEST(HexColor, EveryStepOfAComponentComesBack) {
    for (int step = 0; step < 256; ++step) {
        char text[8];
        std::snprintf(text, sizeof text, "#%02x%02x%02x", step, 255 - step, step);
        EXPECT_EQ(hexFromColor(colorFromHex(text)), text);
    }
}

TEST(PageAppearance, TheNineKeys) {
    struct Row {
        const char* what;
        AppearancePreferences preferences;
        std::string customUrl;
        std::string json;
    };
    const Row rows[] = {
        {"as by default",
         {},
         "",
         R"({"airOutline":true,"showZoom":false,"bgColor":"#141614","bgMode":"color","bgPreset":"","bgCustomUrl":"","bgAlpha":100,"bgBlur":0,"winBlur":false})"},
        {"a preset",
         {.photo = "bg3.jpg", .photoOpacity = 0.999, .photoBlur = 12.5},
         "",
         R"({"airOutline":true,"showZoom":false,"bgColor":"#141614","bgMode":"photo","bgPreset":"backgrounds/bg3.jpg","bgCustomUrl":"","bgAlpha":99,"bgBlur":1.25E1,"winBlur":false})"},
        {"the user's own",
         {.tint = "any text", .photo = "custom", .photoOpacity = 0.5, .airOutline = false, .showZoom = true},
         customPhotoUrl("/__file/T/background.png", 0),
         R"({"airOutline":false,"showZoom":true,"bgColor":"any text","bgMode":"photo","bgPreset":"","bgCustomUrl":"/__file/T/background.png?v=0.0","bgAlpha":50,"bgBlur":0,"winBlur":false})"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(compactJson(pageAppearance(row.preferences, row.customUrl)), row.json) << row.what;
    for (const double odd : {1e300, -1e300})
        EXPECT_TRUE(compactJson(pageAppearance({.photoOpacity = odd}, "")));
}

} // namespace
} // namespace quillmere
