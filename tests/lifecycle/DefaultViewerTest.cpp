#include "tests/lifecycle/LifecycleFixture.h"

namespace quillmere {
namespace {

using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class DefaultViewerTest : public LifecycleTest {
protected:
    DefaultViewerTest() {
        write("home/Applications/Quillmere.app/Contents/Resources/file-types.json",
              R"({"pdf": "PDF document", "heic": "Picture", "odd": "Odd"})");
        desktop_.contentTypes.types = {{"pdf", "application/pdf"}, {"heic", "image/heic"}, {"txt", "text/plain"}};
    }
};

TEST_F(DefaultViewerTest, TheInvitationComesOncePerInstallation) {
    lifecycle().showFirstRunIfNeeded();
    EXPECT_EQ(sheetTitle(), "Make Quillmere your viewer");
    EXPECT_EQ(desktop_.defaults.strings[promptKey], lifecycle().installIdentity());
    press("close");
    settle();
    lifecycle().showFirstRunIfNeeded();
    EXPECT_EQ(sheetTitle(), "") << "closing it is an answer too";

    std::filesystem::rename(at("home/Applications").path(), at("home/aside").path());
    install();
    lifecycle().showFirstRunIfNeeded();
    EXPECT_EQ(sheetTitle(), "Make Quillmere your viewer") << "another copy in the same place";
    press("Set as default…");
    settle();
    ASSERT_EQ(desktop_.dialogs.panels.size(), 1U);
    const auto& panel = desktop_.dialogs.panels[0];
    EXPECT_EQ(panel.title, "Choose a File Type");
    EXPECT_EQ(panel.message, "Select an example file. macOS will ask to use Quillmere for files of that type. The file "
                             "itself will not be changed.");
    EXPECT_TRUE(panel.files && !panel.folders);
}

TEST_F(DefaultViewerTest, TheInvitationWaitsForItsTurnAndItsPlace) {
    desktop_.dialogs.alert(*window_, {.message = "Busy"}, [](size_t) {});
    lifecycle().showFirstRunIfNeeded();
    EXPECT_THAT(desktop_.defaults.strings, IsEmpty()) << "nothing is recorded while it could not be shown";
    desktop_.dialogs.answerAlert();
    settle();

    desktop_.bundle.folder = install("elsewhere/Quillmere.app");
    lifecycle().showFirstRunIfNeeded();
    EXPECT_EQ(sheetTitle(), "") << "not installed";
    lifecycle().chooseDefaultType();
    EXPECT_EQ(alert(), "Install Quillmere first: Drag Quillmere.app to Applications, then open that copy to choose it "
                       "as a default viewer.");
    EXPECT_THAT(desktop_.defaults.strings, IsEmpty());
}

TEST_F(DefaultViewerTest, EveryChoiceHasItsAnswer) {
    const std::string unsupported =
        "Choose a supported file type: This file extension is not registered by Quillmere. Choose a document, image, "
        "model, or another supported file instead.";
    const std::string declined =
        "Your current default was kept: You can choose Quillmere later in Finder → Get Info → Open with.";
    const struct {
        const char* file;
        bool declines;
        std::optional<std::string> error;
        std::string answer;
    } rows[] = {
        {"Report.PDF",
         false,
         {},
         "Default viewer updated: Quillmere is now the default for .pdf files. Repeat this for "
         "another file type whenever you want."},
        {"photo.heic", false, "Read-only.",
         "Default viewer updated: Quillmere is now the default for .heic files. "
         "Repeat this for another file type whenever you want."},
        {"report.pdf", true, "Read-only.", "The default was not changed: Read-only."},
        {"report.pdf", true, {}, declined},
        {"note.txt", false, {}, unsupported},
        {"README", false, {}, unsupported},
        {".pdf", false, {}, unsupported},
        {"thing.odd",
         false,
         {},
         "Choose defaults in Finder: Select a file in Finder and choose File → Get Info. Under "
         "Open with, choose Quillmere and click Change All. Repeat for each type you want. A "
         "single global setting for all file types is not applied by this app."},
    };
    for (const auto& row : rows) {
        desktop_.workspace.defaults.clear();
        desktop_.workspace.keepsDefaults = row.declines;
        desktop_.workspace.error = row.error;
        lifecycle().chooseDefaultType();
        EXPECT_EQ(choose(row.file), row.answer) << row.file;
    }
    EXPECT_THAT(desktop_.workspace.revealed, UnorderedElementsAre(at("examples/thing.odd")));

    lifecycle().chooseDefaultType();
    desktop_.dialogs.answerPanel(std::nullopt);
    EXPECT_EQ(alert(), "") << "cancelled";
    lifecycle().chooseDefaultType();
    lifecycle_.reset();
    EXPECT_EQ(choose("report.pdf"), "") << "nobody waits any more";
}

TEST_F(DefaultViewerTest, ALinkToThisCopyIsThisCopy) {
    std::filesystem::create_directory_symlink(at("home/Applications").path(), at("apps").path());
    EXPECT_EQ(defaultResult("pdf", desktop_.bundle.folder, at("apps/./Quillmere.app"), "Odd.").title,
              "Default viewer updated");
    EXPECT_EQ(defaultResult("pdf", desktop_.bundle.folder, at("apps"), {}).title, "Your current default was kept");
}

TEST_F(DefaultViewerTest, WhichExtensionsAreSupported) {
    const char* fileTypes = "home/Applications/Quillmere.app/Contents/Resources/file-types.json";
    desktop_.bundle.properties = boost::json::parse(R"({"CFBundleDocumentTypes": [
        {"CFBundleTypeExtensions": ["txt", "PDF"]}, {"CFBundleTypeExtensions": ["txt", "md"]},
        {"CFBundleTypeExtensions": ["c", 5]}, {"CFBundleTypeExtensions": "d"}, {}]})")
                                     .as_object();
    EXPECT_THAT(supportedExtensions(desktop_.bundle), UnorderedElementsAre("pdf", "heic", "odd"));
    for (const auto* broken : {"", "[\"pdf\"]", R"({"pdf": 1})", "{\"pdf\": \"a\""}) {
        write(fileTypes, broken);
        EXPECT_THAT(supportedExtensions(desktop_.bundle), UnorderedElementsAre("txt", "PDF", "md")) << broken;
    }
    write(fileTypes, "{}");
    EXPECT_THAT(supportedExtensions(desktop_.bundle), IsEmpty());
    std::filesystem::remove(at(fileTypes).path());
    desktop_.bundle.properties->at("CFBundleDocumentTypes").as_array().emplace_back(1);
    EXPECT_THAT(supportedExtensions(desktop_.bundle), IsEmpty()) << "not a list of dictionaries";
    desktop_.bundle.properties.reset();
    EXPECT_THAT(supportedExtensions(desktop_.bundle), IsEmpty());
}

} // namespace
} // namespace quillmere
