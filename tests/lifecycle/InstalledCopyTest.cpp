#include "lifecycle/InstalledCopy.h"
#include "lifecycle/ApplicationRegistration.h"
#include "tests/lifecycle/LifecycleFixture.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(InstalledBundle, TheStrictRuleAndTheLooseOne) {
    const std::vector<FileUrl> folders = {FileUrl("/Applications"), FileUrl("/Users/test/Applications/")};
    struct Row {
        const char* bundle;
        bool strict;
        bool loose;
    };
    const Row rows[] = {
        {"/Applications/Quillmere.app", true, true},
        {"/Users/test/Applications/Quillmere.app", true, true},
        {"/Applications/./x/../Quillmere.app", true, true},
        {"/Applications/quillmere.app", false, true},
        {"/Applications/Other.APP", false, true},
        {"/Applications/Other.app/Contents/Quillmere.app", false, true},
        {"/Applications/../Quillmere.app", false, false},
        {"/ApplicationsElse/Quillmere.app", false, false},
        {"/Volumes/Quillmere/Quillmere.app", false, false},
        {"/Applications/Quillmere.app/Contents", false, false},
        {"/Applications", false, false},
    };
    for (const auto& row : rows) {
        const FileUrl bundle(row.bundle);
        EXPECT_EQ(AppLifecycleController::installedBundle(bundle, bundleIdentifier, folders), row.strict) << row.bundle;
        EXPECT_EQ(ApplicationRegistration::isInstalledBundle(bundle, folders), row.loose) << row.bundle;
        EXPECT_FALSE(AppLifecycleController::installedBundle(bundle, "another.app", folders));
        EXPECT_FALSE(AppLifecycleController::installedBundle(bundle, std::nullopt, folders));
    }
    EXPECT_FALSE(ApplicationRegistration::isInstalledBundle(FileUrl("/A.app"), {FileUrl("/A.app")}));
}

class InstalledCopyTest : public testing::Test, protected tests::Sandbox {
protected:
    FileUrl install() {
        write("home/Applications/Quillmere.app/Contents/Info.plist");
        return at("home/Applications/Quillmere.app");
    }

    void refresh() {
        ApplicationRegistration::refreshInstalledBundle(
            {.bundle = desktop_.bundle,
             .workspace = desktop_.workspace,
             .executors = desktop_.executors,
             .home = desktop_.directories.home,
             .log = [this](const std::string& line) { log_.push_back(line); }});
        ASSERT_TRUE(desktop_.executors.main().runUntil([&] { return desktop_.executors.isIdle(); }));
    }

    platform::HeadlessPlatform desktop_{root()};
    std::vector<std::string> log_;
};

TEST_F(InstalledCopyTest, OnlyTheInstalledCopyRegisters) {
    refresh();
    EXPECT_THAT(desktop_.workspace.registered(), IsEmpty()) << "outside the folders";

    const FileUrl installed = install();
    desktop_.bundle.folder = installed;
    desktop_.bundle.identity = "another.app";
    refresh();
    EXPECT_THAT(desktop_.workspace.registered(), IsEmpty()) << "another program";

    desktop_.bundle.identity = bundleIdentifier;
    refresh();
    EXPECT_THAT(desktop_.workspace.registered(), ElementsAre(installed));
    EXPECT_THAT(log_, IsEmpty());

    fs::remove(installed.appending(bundlePropertyList).filesystemPath());
    refresh();
    EXPECT_THAT(desktop_.workspace.registered(), ElementsAre(installed)) << "without a property list";
}

TEST_F(InstalledCopyTest, AFailedRegistrationIsOneLineInTheLog) {
    desktop_.bundle.folder = install();
    desktop_.workspace.registrationStatus = -10811;
    refresh();
    EXPECT_THAT(log_, ElementsAre("Quillmere could not refresh document registration (-10811)"));
}

TEST_F(LifecycleTest, TheIdentityChangesWithTheCopy) {
    EXPECT_TRUE(lifecycle().installed());
    const std::string first = lifecycle().installIdentity();
    EXPECT_EQ(lifecycle().installIdentity(), first);

    fs::rename(desktop_.bundle.folder.filesystemPath(), at("aside").filesystemPath());
    install();
    EXPECT_NE(lifecycle().installIdentity(), first);
    fs::remove_all(desktop_.bundle.folder.filesystemPath());
    EXPECT_EQ(lifecycle().installIdentity(), desktop_.bundle.folder.path() + "|||");
    EXPECT_EQ(AppLifecycleController::installationIdentity(
                  FileUrl("/a/x/../b.app"), {.fileSystemNumber = 1, .fileNumber = 10, .creationDate = "5.0"}),
              "/a/b.app|1|10|5.0");
}

} // namespace
} // namespace quillmere
