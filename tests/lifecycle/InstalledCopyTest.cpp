#include "lifecycle/InstalledCopy.h"
#include "lifecycle/AppLifecycleController.h"
#include "lifecycle/ApplicationRegistration.h"
#include "platform/headless/HeadlessPlatform.h"
#include "tests/support/Sandbox.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(InstalledBundle, OnlyUnderItsNameDirectlyInAFolder) {
    const std::vector<FileUrl> folders = {FileUrl("/Applications"), FileUrl("/Users/test/Applications/")};
    struct Row {
        const char* bundle;
        std::optional<std::string> identifier;
        bool installed;
    };
    const std::string ours = bundleIdentifier;
    const Row rows[] = {
        {"/Applications/Quillmere.app", ours, true},
        {"/Users/test/Applications/Quillmere.app", ours, true},
        {"/Applications/./x/../Quillmere.app", ours, true},
        {"/Volumes/Quillmere/Quillmere.app", ours, false},
        {"/ApplicationsElse/Quillmere.app", ours, false},
        {"/Applications/Other.app", ours, false},
        {"/Applications/quillmere.app", ours, false},
        {"/Applications/Other.app/Contents/Quillmere.app", ours, false},
        {"/tmp/Quillmere.app", ours, false},
        {"/Applications/Quillmere.app", "another.app", false},
        {"/Applications/Quillmere.app", std::nullopt, false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(AppLifecycleController::installedBundle(FileUrl(row.bundle), row.identifier, folders), row.installed)
            << row.bundle;
}

TEST(InstalledBundle, TheLooseRuleTakesAnyDepthAndName) {
    struct Row {
        const char* bundle;
        const char* folder;
        bool accepted;
    };
    const Row rows[] = {
        {"/Applications/Quillmere.app", "/Applications", true},
        {"/Applications/Other.APP", "/Applications", true},
        {"/Applications/Other.app/Contents/Quillmere.app", "/Applications", true},
        {"/Users/quill/Applications/Quillmere.app", "/Users/quill/Applications", true},
        {"/ApplicationsElse/Quillmere.app", "/Applications", false},
        {"/Volumes/Quillmere/Quillmere.app", "/Applications", false},
        {"/Applications/Quillmere.app/Contents", "/Applications", false},
        {"/Applications", "/Applications", false},
        {"/Applications.app", "/Applications.app", false},
        {"/Applications/../Quillmere.app", "/Applications", false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ApplicationRegistration::isInstalledBundle(FileUrl(row.bundle), {FileUrl(row.folder)}), row.accepted)
            << row.bundle;
}

TEST(InstallationIdentity, JoinsWhatIsKnown) {
    const FileUrl bundle("/Applications/x/../Quillmere.app");
    EXPECT_EQ(AppLifecycleController::installationIdentity(bundle, {.fileSystemNumber = 1, .fileNumber = 10}),
              "/Applications/Quillmere.app|1|10|");
    EXPECT_EQ(AppLifecycleController::installationIdentity(bundle, {}), "/Applications/Quillmere.app|||");
    EXPECT_EQ(AppLifecycleController::installationIdentity(
                  bundle, {.fileSystemNumber = 1, .fileNumber = 10, .creationDate = "5.0"}),
              "/Applications/Quillmere.app|1|10|5.0");
}

class InstalledCopyTest : public Sandbox {
protected:
    FileUrl install() {
        write("home/Applications/Quillmere.app/Contents/Info.plist");
        return root().appending("home/Applications/Quillmere.app");
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

    AppLifecycleController controller() {
        return AppLifecycleController(
            window_, {.dialogs = desktop_.dialogs, .bundle = desktop_.bundle, .home = desktop_.directories.home});
    }

    platform::HeadlessPlatform desktop_{root()};
    std::shared_ptr<platform::Window> window_ = desktop_.toolkit.makeWindow({});
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

TEST_F(InstalledCopyTest, TheIdentityChangesWithTheCopy) {
    desktop_.bundle.folder = install();
    const auto lifecycle = controller();
    EXPECT_TRUE(lifecycle.installed());
    const std::string first = lifecycle.installIdentity();
    EXPECT_EQ(lifecycle.installIdentity(), first);

    const auto aside = root().appending("aside");
    fs::rename(desktop_.bundle.folder.filesystemPath(), aside.filesystemPath());
    install();
    EXPECT_NE(lifecycle.installIdentity(), first);
    fs::remove_all(desktop_.bundle.folder.filesystemPath());
    EXPECT_EQ(lifecycle.installIdentity(), desktop_.bundle.folder.path() + "|||");
}

TEST_F(InstalledCopyTest, ACopyElsewhereSaysWhatItCannotDo) {
    auto lifecycle = controller();
    lifecycle.showFirstRunIfNeeded();
    EXPECT_THAT(desktop_.dialogs.alerts, IsEmpty());
    lifecycle.chooseDefaultType();
    lifecycle.confirmUninstall();
    ASSERT_EQ(desktop_.dialogs.alerts.size(), 2U);
    EXPECT_EQ(desktop_.dialogs.alerts[0].message, "Install Quillmere first");
    EXPECT_EQ(desktop_.dialogs.alerts[1].message, "This copy is not installed");

    window_.reset();
    lifecycle.chooseDefaultType();
    EXPECT_EQ(desktop_.dialogs.alerts.size(), 2U) << "without a window";
}

} // namespace
} // namespace quillmere
