#include "platform/gtk/desktop/DesktopEntry.h"
#include "platform/gtk/desktop/DesktopMenu.h"
#include "platform/gtk/desktop/DesktopServices.h"
#include "platform/gtk/panels/ColorWheel.h"
#include "platform/gtk/view/StyleSheet.h"
#include "platform/gtk/view/TextScale.h"
#include "platform/gtk/window/BlurBehind.h"
#include "platform/gtk/window/WindowPlacement.h"
#include "platform/view/Theme.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace quillmere::platform::gtk {
namespace {

using testing::HasSubstr;

TEST(Theme, FollowsTheTint) {
    const struct {
        const char* name;
        view::Color tint;
        view::Shade shade;
    } rows[] = {
        {"the first tint", {.red = 0x14 / 255.0, .green = 0x16 / 255.0, .blue = 0x14 / 255.0}, view::Shade::dark},
        {"black", {}, view::Shade::dark},
        {"paper", {.red = 0xf2 / 255.0, .green = 0xef / 255.0, .blue = 0xe8 / 255.0}, view::Shade::light},
        {"grey just below the limit", {.red = 0.60, .green = 0.60, .blue = 0.60}, view::Shade::dark},
        {"grey just above the limit", {.red = 0.61, .green = 0.61, .blue = 0.61}, view::Shade::light},
        {"pure blue", {.blue = 1}, view::Shade::dark},
        {"pure yellow", {.red = 1, .green = 1}, view::Shade::light},
    };
    for (const auto& row : rows) {
        const auto theme = view::Theme::fromTint(row.tint);
        EXPECT_EQ(theme.shade, row.shade) << row.name;
        // WCAG's ratio for text, whatever the colour of the tint.
        const double ink = view::luminance(theme.ink), glass = view::luminance(theme.glass);
        EXPECT_GE((std::max(ink, glass) + 0.05) / (std::min(ink, glass) + 0.05), 7) << row.name;
    }
    const auto grey = view::Theme::fromTint({.red = 0.2, .green = 0.2, .blue = 0.2}).accent;
    EXPECT_GT(grey.green, grey.red); // celadon
    const auto warm = view::Theme::fromTint({.red = 0.35, .green = 0.12, .blue = 0.08}).accent;
    EXPECT_GT(warm.red, warm.green); // the tint's own hue
}

TEST(Theme, WritesColorsWithoutTheLocale) {
    EXPECT_EQ(cssColor({.red = 1, .green = 0.5, .blue = 0, .alpha = 0.65}), "rgba(255,128,0,0.650)");
    EXPECT_EQ(cssColor({.red = 2, .green = -1, .blue = 0, .alpha = 7}), "rgba(255,0,0,1.000)");
}

TEST(DesktopMenu, PutsKeysOnTheDesktopsModifiers) {
    const struct {
        std::string key;
        KeyModifiers modifiers;
        const char* accelerator;
    } rows[] = {
        {"o", {}, "<Control>o"},
        {",", {}, "<Control>comma"},
        {"z", {.shift = true}, "<Control><Shift>z"},
        {"f", {.control = true}, "<Control><Alt>f"},
        {"", {}, ""},
        {"\xff", {}, ""},
    };
    for (const auto& row : rows)
        EXPECT_STREQ(acceleratorFor({.title = "x", .key = row.key, .modifiers = row.modifiers}).c_str(),
                     row.accelerator);
}

TEST(DesktopMenu, NamesKeysAsTheDesktopDoes) {
    EXPECT_EQ(withDesktopKeys("Open File or Folder (⌘O)"), "Open File or Folder (Ctrl+O)");
    EXPECT_EQ(withDesktopKeys("Settings (⌘,)"), "Settings (Ctrl+,)");
    EXPECT_EQ(withDesktopKeys("Redo (⇧⌘Z)"), "Redo (Shift+Ctrl+Z)");
    EXPECT_EQ(withDesktopKeys("Alps"), "Alps");
}

TEST(ColorWheel, FindsHueAndSaturation) {
    const struct {
        double right, down, hue, saturation;
    } rows[] = {{0, 0, 0, 0},
                {100, 0, 0, 1},
                {0, -50, 0.25, 0.5},
                {-100, 0, 0.5, 1},
                {0, 100, 0.75, 1},
                {300, 0, 0, 1},
                {70.710678, 70.710678, 0.875, 1}};
    for (const auto& row : rows) {
        const auto point = wheelPointAt(row.right, row.down, 100);
        EXPECT_NEAR(point.hue, row.hue, 1e-6) << row.right << " " << row.down;
        EXPECT_NEAR(point.saturation, row.saturation, 1e-6) << row.right << " " << row.down;
    }
}

TEST(TextScale, LengthsBecomeOnesThatFollowTheText) {
    EXPECT_EQ(scalingLengths("margin: -6px 0 12px .5px; x: 3pt; c: rgba(1,2,3,.5);"),
              "margin: -4.500pt 0 9.000pt 0.375pt; x: 3pt; c: rgba(1,2,3,.5);");
}

TEST(BlurBehind, AWindowThatFillsItsPlaceShowsNothingBehind) {
    EXPECT_FALSE(fillsItsPlace(GdkToplevelState{}));
    EXPECT_FALSE(fillsItsPlace(GDK_TOPLEVEL_STATE_FOCUSED));
    for (const auto state : {GDK_TOPLEVEL_STATE_MAXIMIZED, GDK_TOPLEVEL_STATE_FULLSCREEN, GDK_TOPLEVEL_STATE_TILED,
                             GDK_TOPLEVEL_STATE_LEFT_TILED})
        EXPECT_TRUE(fillsItsPlace(state));
}

TEST(SizeMemory, TakesOnlySizesThatAWindowCanHave) {
    const view::Size minimum{.width = 640, .height = 440};
    EXPECT_EQ(parseSize(sizeText(1240, 800), minimum), (view::Size{.width = 1240, .height = 800}));
    EXPECT_EQ(parseSize("640 440", minimum), minimum);
    for (const char* text : {"", "1240", "1240 ", "1240x800", "1240 800 ", "639 800", "1240 439", "99999 800",
                             "99999999999999999999 800", "-1240 800", "1240  800"})
        EXPECT_EQ(parseSize(text, minimum), std::nullopt) << text;
}

TEST(DesktopEntry, QuotesTheProgramWhereItMust) {
    const struct {
        const char* path;
        const char* line;
    } rows[] = {
        {"/opt/Quillmere.app/Contents/MacOS/Quillmere", "Exec=/opt/Quillmere.app/Contents/MacOS/Quillmere %f\n"},
        {"/opt/Quillmere.app/Contents/MacOS/Quillmere", "TryExec=/opt/Quillmere.app/Contents/MacOS/Quillmere\n"},
        {"/100%/ä/Quillmere", "Exec=/100%%/ä/Quillmere %f\n"},
        {"/a\\b/Quillmere", "TryExec=/a\\\\b/Quillmere\n"},
        {"/home/a b/100%/Quillmere", "Exec=\"/home/a b/100%%/Quillmere\" %f\n"},
        {"/a\"b`c$d\\e", R"(Exec="/a\\"b\\`c\\$d\\\\e" %f)"},
    };
    for (const auto& row : rows)
        EXPECT_THAT(desktopEntry(FileUrl(row.path), {}).value_or(""), HasSubstr(row.line));
    EXPECT_THAT(desktopEntry(FileUrl("/x"), {"text/plain", "image/png"}).value_or(""),
                HasSubstr("MimeType=text/plain;image/png;\n"));
    for (const char* path : {"/a\nExec=evil", "/a=b", "/\xff"})
        EXPECT_EQ(desktopEntry(FileUrl(path), {}), std::nullopt);
}

TEST(DesktopContentTypes, KnowsTheDesktopsTypesAndNoOthers) {
    const DesktopContentTypes types;
    EXPECT_EQ(types.mimeType("pdf"), "application/pdf");
    EXPECT_EQ(types.mimeType("html"), "text/html");
    EXPECT_EQ(types.mimeType("otf"), "font/otf");
    EXPECT_EQ(types.mimeType("ts"), "video/mp2t");
    EXPECT_EQ(types.mimeType("obj"), "model/obj");
    EXPECT_EQ(types.mimeType("apng"), "image/apng");
    EXPECT_EQ(types.mimeType("jfif"), "image/jpeg");
    for (const auto& extension :
         {std::string(), std::string("no-such-extension"), std::string("../pdf"), std::string("\0pdf", 4)})
        EXPECT_EQ(types.mimeType(extension), std::nullopt) << extension;
}

} // namespace
} // namespace quillmere::platform::gtk
