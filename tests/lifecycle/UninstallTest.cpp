#include "tests/lifecycle/LifecycleFixture.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

class UninstallTest : public LifecycleTest {
protected:
    void confirm() {
        lifecycle().confirmUninstall();
        press("Uninstall Quillmere");
        desktop_.executors.main().runPending();
    }
    bool isThere() const { return fs::exists(desktop_.bundle.folder.filesystemPath()); }
};

TEST_F(UninstallTest, TheInstalledCopyGoesToTheTrash) {
    desktop_.defaults.setString(promptKey, "shown");
    desktop_.defaults.setString("other", "stays");
    lifecycle().confirmUninstall();
    EXPECT_EQ(sheetTitle(), "Uninstall Quillmere?");
    EXPECT_FALSE(desktop_.dialogs.sheet->content->find("close"));
    press("Cancel");
    settle();
    EXPECT_TRUE(isThere() && !lifecycle().removing());

    confirm();
    EXPECT_TRUE(lifecycle().removing());
    lifecycle().confirmUninstall();
    lifecycle().showFirstRunIfNeeded();
    lifecycle().chooseDefaultType();
    EXPECT_EQ(sheetTitle(), "") << "nothing begins meanwhile";
    EXPECT_TRUE(desktop_.dialogs.panels.empty());
    EXPECT_EQ(alert(), "");
    EXPECT_FALSE(isThere());
    EXPECT_TRUE(fs::exists(at("trash/Quillmere.app/Contents/Info.plist").filesystemPath()));
    EXPECT_EQ(desktop_.defaults.strings, (std::map<std::string, std::string>{{"other", "stays"}}));
    EXPECT_TRUE(desktop_.application.terminated && lifecycle().removing());
}

TEST_F(UninstallTest, FailuresLeaveItWhereItIs) {
    const std::string title = "Quillmere was not removed: ";
    desktop_.workspace.error = "The Trash is full.";
    confirm();
    EXPECT_EQ(alert(), title + "The Trash is full.");
    desktop_.workspace.error.reset();
    desktop_.workspace.keepsFiles = true;
    confirm();
    EXPECT_EQ(alert(), title + "Finder did not move the application. You can remove Quillmere.app from Applications "
                               "manually.");
    const auto list = desktop_.bundle.folder.appending(bundlePropertyList);
    for (const auto& contents : {propertyListOf("another.app"), std::string("no list")}) {
        lifecycle().confirmUninstall();
        write("home/Applications/Quillmere.app/Contents/Info.plist", contents);
        press("Uninstall Quillmere");
        EXPECT_EQ(alert(), title + "The installed application could not be verified.") << contents;
    }
    lifecycle().confirmUninstall();
    fs::remove(list.filesystemPath());
    press("Uninstall Quillmere");
    EXPECT_EQ(alert(), title + "The installed application could not be verified.");
    EXPECT_TRUE(isThere());
    EXPECT_FALSE(lifecycle().removing() || desktop_.application.terminated);
}

TEST_F(UninstallTest, ThroughALinkItsTargetGoes) {
    const FileUrl real = desktop_.bundle.folder;
    fs::create_directory_symlink(at("home/Applications").path(), at("apps").path());
    desktop_.bundle.folder = at("apps/Quillmere.app");
    confirm();
    EXPECT_EQ(alert(), "");
    EXPECT_FALSE(fs::exists(real.filesystemPath()));
    EXPECT_TRUE(desktop_.application.terminated);
}

TEST_F(UninstallTest, OtherCopiesSayWhyNot) {
    desktop_.bundle.folder = install("downloads/Quillmere.app");
    const std::string why =
        "This copy is not installed: Uninstall is available for Quillmere.app in Applications. A copy on a disk image "
        "or inside the project folder is not removed by this button.";
    lifecycle().confirmUninstall();
    lifecycle().confirmUninstall();
    EXPECT_EQ(desktop_.dialogs.alerts.size(), 1U) << "one alert at a time";
    EXPECT_EQ(alert(), why);
    desktop_.bundle.folder = at("home/Applications/Quillmere.app");
    desktop_.bundle.identity = "another.app";
    lifecycle().confirmUninstall();
    EXPECT_EQ(alert(), why);
    EXPECT_TRUE(isThere());
    EXPECT_EQ(sheetTitle(), "");
}

} // namespace
} // namespace quillmere
