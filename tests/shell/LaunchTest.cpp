#include "tests/shell/DelegateFixture.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using platform::MenuAction;
using platform::MenuTarget;

class LaunchTest : public DelegateTest {};

TEST_F(LaunchTest, MakesFoldersWindowAndPage) {
    launch();
    for (const auto* folder : {"home/.local/share/Quillmere", "home/.cache/Quillmere"})
        EXPECT_TRUE(fs::is_directory(at(folder).filesystemPath())) << folder;

    const auto& spec = window().spec;
    EXPECT_EQ(spec.contentSize, (view::Size{1240, 800}));
    EXPECT_EQ(spec.minimumSize, (view::Size{640, 440}));
    EXPECT_EQ(window().title, "Quillmere");
    EXPECT_TRUE(window().centered && window().key);
    EXPECT_EQ(desktop_.application.activations, 1);

    const auto& layers = window().content->children();
    ASSERT_EQ(layers.size(), 4U);
    EXPECT_EQ(layers[0]->tag, "background");
    EXPECT_EQ(layers[1], page().view());
    EXPECT_EQ(layers[2]->tag, "toolbar");
    EXPECT_EQ(layers[3]->tag, "startup-loading");
    for (const auto& [symbol, name, tooltip] : {std::tuple{"folder", "Open file", "Open File or Folder (⌘O)"},
                                                std::tuple{"slider.horizontal.3", "Settings", "Settings (⌘,)"}}) {
        const auto button = layers[2]->find(symbol);
        ASSERT_TRUE(button);
        EXPECT_EQ(button->accessibilityLabel, name);
        EXPECT_EQ(std::get<view::Button>(button->kind()).tooltip, tooltip);
    }

    EXPECT_EQ(page().configuration.userScript, "// prepares the page");
    EXPECT_FALSE(page().configuration.javaScriptCanOpenWindows);
    EXPECT_THAT(page().loads,
                testing::ElementsAre(testing::Pair("quillmere://app/index.html", std::chrono::seconds(60))));
    EXPECT_THAT(page().scripts, testing::IsEmpty()) << "nothing is said before the page is ready";
}

TEST_F(LaunchTest, TheMenuBar) {
    launch();
    std::string bar;
    for (const auto& menu : desktop_.application.menu.menus) {
        bar += "[" + menu.title + "]";
        for (const auto& entry : menu.entries) {
            if (!entry) {
                bar += " -";
                continue;
            }
            bar += " " + entry->title + "(" + (entry->modifiers.control ? "^" : "") +
                   (entry->modifiers.shift ? "+" : "") + entry->key +
                   (entry->target == MenuTarget::delegate ? "!" : "") + ")";
        }
        bar += "\n";
    }
    EXPECT_EQ(bar, "[] About Quillmere() - Settings…(,!) - Hide Quillmere(h) Quit Quillmere(q)\n"
                   "[File] Open…(o!) Close Window(w)\n"
                   "[Edit] Undo(z) Redo(+z) - Cut(x) Copy(c) Paste(v) Select All(a)\n"
                   "[View] Toggle Full Screen(^f)\n"
                   "[Window] Minimize(m)\n");
    EXPECT_EQ(desktop_.application.menu.windowsMenu, 4U);
}

TEST_F(LaunchTest, GoesOnWithoutItsUserScriptAndFolders) {
    write("home/.cache", "a file where a folder should be");
    write("home/.local/share", "another");
    write("Quillmere.app/Contents/Resources/mac-shell.js", "\xFF\xFE");
    launchAndGetReady();
    EXPECT_FALSE(page().configuration.userScript);
    EXPECT_EQ(received("init").size(), 1U);
    fs::remove(at("Quillmere.app/Contents/Resources/mac-shell.js").filesystemPath());
    launch();
    EXPECT_FALSE(page().configuration.userScript);
}

TEST_F(LaunchTest, AScriptThatCannotBeReadIsNone) {
    const auto script = at("Quillmere.app/Contents/Resources/mac-shell.js").filesystemPath();
    fs::remove(script);
    fs::create_directory(script);
    launchAndGetReady();
    EXPECT_FALSE(page().configuration.userScript);
    EXPECT_EQ(received("init").size(), 1U);
    fs::remove(script);
    fs::create_symlink("/proc/self/mem", script); // opens as a file, and its first byte cannot be read
    launchAndGetReady();
    EXPECT_FALSE(page().configuration.userScript);
    EXPECT_EQ(received("init").size(), 1U);
}

TEST_F(LaunchTest, FoldersThatAreThereKeepTheirMode) {
    constexpr auto shared = fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec;
    const auto data = folder("elsewhere").filesystemPath();
    fs::permissions(data, shared);
    folder("home/.local/share");
    fs::create_directory_symlink(data, at("home/.local/share/Quillmere").filesystemPath());
    launch();
    EXPECT_EQ(fs::status(data).permissions(), shared);
    EXPECT_EQ(fs::status(at("home/.cache/Quillmere").filesystemPath()).permissions(), fs::perms::owner_all);
}

TEST_F(LaunchTest, OpensTheFirstArgumentThatIsNoSwitch) {
    const FileUrl file = write("first.txt");
    write("second.txt");
    desktop_.application.commandLine = {"Quillmere", "-x", "--long", file.path(), at("second.txt").path()};
    launchAndGetReady();
    EXPECT_THAT(await("open"), HasText("name", "first.txt"));
    EXPECT_EQ(received("open").size(), 1U);
}

TEST_F(LaunchTest, OpensTheFileThatTheKernelMeans) {
    write("far/note.txt");
    write("note.txt");
    fs::create_directory_symlink(folder("far/below").path(), at("link").path());
    desktop_.application.commandLine = {"Quillmere", at("link").path() + "/../note.txt"};
    launchAndGetReady();
    await("open");
    EXPECT_EQ(window().representedFile, at("far/note.txt"));
}

TEST_F(LaunchTest, FilesHandedOverWinOverTheCommandLine) {
    desktop_.application.commandLine = {"Quillmere", write("named.txt").path()};
    desktop_.application.filesAtLaunch = {write("handed.txt"), write("other.txt")};
    launchAndGetReady();
    EXPECT_THAT(await("open"), HasText("name", "handed.txt"));
    settle();
    EXPECT_EQ(received("open").size(), 1U);
    EXPECT_EQ(delegate_->applicationOpenFiles({}), platform::OpenReply::success);
}

TEST_F(LaunchTest, APageThatCannotBeLoadedIsToldOnce) {
    launch();
    page().failProvisionalNavigation("The file is gone.");
    EXPECT_FALSE(window().content->find("startup-loading"));
    ASSERT_EQ(desktop_.dialogs.alerts.size(), 1U);
    EXPECT_EQ(desktop_.dialogs.alerts[0].message, "Quillmere could not start its viewer");
    EXPECT_EQ(desktop_.dialogs.alerts[0].informative, "The file is gone.");
}

TEST_F(LaunchTest, WindowEventsReachAReadyPageOnly) {
    launch();
    window().setKey(false);
    window().toggleFullScreen();
    post({{"type", "ready"}});
    EXPECT_EQ(received("state").size() + received("active").size(), 0U);
    EXPECT_TRUE(received("init").at(0).at("maximized").as_bool());

    window().setKey(true);
    EXPECT_TRUE(received("active").back().at("value").as_bool());
    window().setKey(false);
    EXPECT_FALSE(received("active").back().at("value").as_bool());
    post({{"type", "max"}});
    EXPECT_FALSE(received("state").back().at("maximized").as_bool());
    post({{"type", "max"}});
    EXPECT_TRUE(received("state").back().at("maximized").as_bool());
}

TEST_F(LaunchTest, BeforeThePageIsReadyTheLastFileWaits) {
    launch();
    page().drop({write("a.txt")});
    page().drop({write("b.txt")});
    settle();
    EXPECT_THAT(page().scripts, testing::IsEmpty());
    post({{"type", "ready"}});
    EXPECT_THAT(await("open"), HasText("name", "b.txt"));
    EXPECT_THAT(page().messages().at(0), HasText("type", "init"));
    settle();
    EXPECT_EQ(received("open").size(), 1U);
}

TEST_F(LaunchTest, ReadyIsAnsweredEachTime) {
    launch();
    post({{"type", "ready"}});
    EXPECT_EQ(page().scripts.size(), 2U);
    EXPECT_TRUE(page().scripts[0].starts_with("window.Quillmere?.receive({"));
    EXPECT_TRUE(page().scripts[1].starts_with("window.Quillmere?.applyPlatformPreferences({"));
    const auto init = received("init").at(0);
    EXPECT_EQ(init, (JsonObject{{"type", "init"},
                                {"maximized", false},
                                {"platform", "macos"},
                                {"showDefaultPrompt", false},
                                {"office", "quicklook"}}));
    installLibreOffice();
    post({{"type", "ready"}});
    EXPECT_EQ(received("init").size(), 2U);
    EXPECT_THAT(received("init").back(), HasText("office", "libreoffice"));
}

TEST_F(LaunchTest, MessagesFromElsewhereDoNothing) {
    launch();
    const json::value ready = JsonObject{{"type", "ready"}};
    page().post({.body = ready, .mainFrame = false, .frameUrl = "quillmere://app/index.html"});
    page().post({.body = ready, .mainFrame = true, .frameUrl = "https://example.org/"});
    page().post("ready");
    EXPECT_THAT(page().scripts, testing::IsEmpty());
}

} // namespace
} // namespace quillmere
