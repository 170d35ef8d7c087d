#include "platform/gtk/desktop/DesktopRegistration.h"
#include "platform/gtk/desktop/MimeAppsList.h"
#include "platform/gtk/desktop/PreviewProtocol.h"
#include "platform/gtk/desktop/RecentFiles.h"
#include "tests/support/Sandbox.h"

#include <gmock/gmock.h>

namespace quillmere::platform::gtk {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const TypeDefaults two{{"application/pdf", "paper.desktop"}, {"text/plain", "pen.desktop"}};

TEST(MimeAppsList, KeepsDefaultsAndTakesThemBack) {
    const struct {
        const char* label;
        const char* list;
        TypeDefaults added;
    } rows[] = {
        {"empty", "", two},
        {"somebody has chosen",
         "# mine\n\n[Default Applications]\ntext/plain=vim.desktop;\n",
         {{"application/pdf", "paper.desktop"}}},
        {"other groups", "[Added Associations]\ntext/plain=vim.desktop;\n\n[Odd]\na=b\n", two},
    };
    for (const auto& row : rows) {
        const std::string once = withKeptDefaults(row.list, two);
        EXPECT_EQ(keptDefaults(once), row.added) << row.label;
        EXPECT_EQ(withKeptDefaults(once, two), once) << row.label;
        EXPECT_EQ(keptDefaults(withKeptDefaults(once, {{"a/b", "c.desktop"}})), (TypeDefaults{{"a/b", "c.desktop"}}))
            << row.label;
        EXPECT_EQ(withKeptDefaults(once, {}), row.list) << row.label;
    }
    const std::string broken = "no list";
    EXPECT_EQ(withKeptDefaults(broken, two), broken);
    EXPECT_TRUE(keptDefaults(broken).empty());
}

TEST(MimeAppsList, AChoiceMadeMeanwhileStays) {
    std::string list = withKeptDefaults("", two);
    list.replace(list.find("pen.desktop"), 11, "vim.desktop");
    const std::string after = withKeptDefaults(list, {});
    EXPECT_THAT(after, HasSubstr("text/plain=vim.desktop"));
    EXPECT_THAT(after, Not(HasSubstr("paper")));
}

TEST(MimeAppsList, ForgetsOneApplication) {
    EXPECT_EQ(
        withoutApplication("[Default Applications]\na/b=ours.desktop\nc/d=theirs.desktop;ours.desktop;\n"
                           "\n[Added Associations]\na/b=ours.desktop;\n\n[Removed Associations]\nx/y=ours.desktop;\n",
                           "ours.desktop"),
        "[Default Applications]\nc/d=theirs.desktop;\n\n[Removed Associations]\nx/y=ours.desktop;\n");
    EXPECT_EQ(withoutApplication("no list", "ours.desktop"), "no list");
}

TEST(RecentFiles, WhatWasUnpackedIsNotRemembered) {
    const FileUrl caches("/home/u/.cache/Quillmere");
    EXPECT_TRUE(isWorthRemembering(FileUrl("/home/u/a.txt"), caches));
    EXPECT_TRUE(isWorthRemembering(FileUrl("/home/u/.cache/QuillmereElse/a.txt"), caches));
    EXPECT_FALSE(isWorthRemembering(FileUrl("/home/u/.cache/Quillmere/ContainerPreviews/x/a.txt"), caches));
}

TEST(PreviewService, IsFoundByItsServiceFile) {
    EXPECT_EQ(previewServiceFile(FileUrl("/opt/Quillmere")),
              "[D-BUS Service]\nName=org.gnome.NautilusPreviewer\nExec=/opt/Quillmere\n");
    EXPECT_THAT(previewServiceFile(FileUrl("/a b/it's")).value_or(""), HasSubstr("Exec='/a b/it'\\''s'\n"));
    EXPECT_EQ(previewServiceFile(FileUrl("/a\nb")), std::nullopt);
}

class DesktopRegistrationTest : public testing::Test, protected tests::Sandbox {
protected:
    DesktopRegistrationTest() {
        for (const char* bundle : {"one.app", "two.app"}) {
            write(std::string(bundle) + "/Contents/MacOS/Quillmere", "#!/bin/sh\n");
            std::filesystem::permissions(at(std::string(bundle) + "/Contents/MacOS/Quillmere").path(),
                                         std::filesystem::perms::owner_all);
        }
        write("one.app/Contents/Resources/icons/hicolor/scalable/apps/app.quillmere.viewer.svg", "<svg/>");
        write("one.app/Contents/Resources/icons/hicolor/scalable/actions/quillmere-x-symbolic.svg", "<svg/>");
    }
    bool exists(const std::string& path) const { return std::filesystem::exists(at(path).filesystemPath()); }

    DesktopRegistration registration_{at("data")};
};

TEST_F(DesktopRegistrationTest, IsTakenBackByTheCopyThatMadeItOnly) {
    write("data/applications/other.desktop", "[Desktop Entry]\n");
    EXPECT_EQ(registration_.bundle(), std::nullopt);
    EXPECT_EQ(registration_.add(at("one.app"), {"text/plain"}), 0);
    registration_.answerPreviews(at("one.app"));
    EXPECT_EQ(registration_.bundle(), at("one.app"));
    EXPECT_TRUE(exists("data/icons/hicolor/scalable/apps/app.quillmere.viewer.svg"));
    EXPECT_FALSE(exists("data/icons/hicolor/scalable/actions"));
    EXPECT_TRUE(exists("data/dbus-1/services/org.gnome.NautilusPreviewer.service"));

    registration_.remove(at("two.app"));
    std::filesystem::rename(at("one.app").path(), at("Trash").path());
    EXPECT_TRUE(exists("data/applications/app.quillmere.viewer.desktop"));
    registration_.remove(at("one.app"));
    for (const char* gone : {"data/applications/app.quillmere.viewer.desktop", "data/applications/mimeapps.list",
                             "data/icons/hicolor/scalable/apps/app.quillmere.viewer.svg",
                             "data/dbus-1/services/org.gnome.NautilusPreviewer.service"})
        EXPECT_FALSE(exists(gone)) << gone;
    EXPECT_TRUE(exists("data/applications/other.desktop"));
}

TEST_F(DesktopRegistrationTest, FailuresAreNumbers) {
    write("file", "in the way");
    EXPECT_EQ(DesktopRegistration(at("file")).add(at("one.app"), {}), ENOTDIR);
    EXPECT_EQ(registration_.add(FileUrl("/a=b.app"), {}), EINVAL);
    DesktopRegistration(at("nowhere")).remove(at("one.app"));
    EXPECT_EQ(bundleOfProgram(FileUrl("/a/B.app/Contents/MacOS/Quillmere")), FileUrl("/a/B.app"));
    for (const char* other : {"/usr/bin/quillmere", "/Contents/MacOS/Quillmere", "/a/Contents/MacOS/Other"})
        EXPECT_EQ(bundleOfProgram(FileUrl(other)), std::nullopt) << other;
}

} // namespace
} // namespace quillmere::platform::gtk
