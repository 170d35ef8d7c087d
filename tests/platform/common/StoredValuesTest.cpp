#include "platform/common/AtomicFile.h"
#include "platform/common/FolderBundle.h"
#include "platform/common/PlistDefaults.h"
#include "platform/common/TemporaryFolder.h"
#include "platform/common/ThreadPool.h"
#include "platform/common/UserFolders.h"
#include "tests/support/Sandbox.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace quillmere {
namespace {

using platform::FolderBundle;
using platform::PlistDefaults;
using tests::Sandbox;

class PlistDefaultsTest : public testing::Test {
protected:
    Sandbox sandbox;
    FileUrl file = sandbox.at("config/app.plist");
    platform::ThreadPool pool{{.name = "test"}};
    std::unique_ptr<platform::Executor> writer = pool.makeSerial();
};

TEST_F(PlistDefaultsTest, ValuesOutliveTheProcess) {
    const std::string bytes("\0\xff{}\n", 5);
    const std::string text = "Zoë \x01\x1b 日本 <&>";
    {
        PlistDefaults defaults(file, *writer);
        defaults.setData("Quillmere.appearance", bytes);
        defaults.setString("Quillmere.text", text);
        defaults.setString("broken", "a\xff");
        defaults.setString("gone", "x");
        defaults.remove("gone");
        defaults.remove("never there");
        for (int i = 0; i <= 1000; ++i)
            defaults.setString("counter", std::to_string(i));
    }
    const PlistDefaults defaults(file, *writer);
    EXPECT_EQ(defaults.data("Quillmere.appearance"), bytes);
    EXPECT_EQ(defaults.string("Quillmere.text"), text);
    EXPECT_EQ(defaults.string("broken"), "a\xef\xbf\xbd");
    EXPECT_EQ(defaults.string("gone"), std::nullopt);
    EXPECT_EQ(defaults.string("counter"), "1000");
    EXPECT_EQ(defaults.data("Quillmere.text"), std::nullopt) << "a value of another kind";
    EXPECT_EQ(sandbox.names("config"), (std::vector<std::string>{"app.plist", "app.plist.lock"}));
    struct stat info{};
    ::stat(file.path().c_str(), &info);
    EXPECT_EQ(info.st_mode & 0777U, 0600U);
}

TEST_F(PlistDefaultsTest, KeepsWhatOthersStoredAndReadsXml) {
    sandbox.write("config/app.plist", "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>theirs</key>"
                                      "<string>kept</string><key>list</key><array><true/></array></dict></plist>");
    PlistDefaults(file, *writer).setString("ours", "new");
    const PlistDefaults defaults(file, *writer);
    EXPECT_EQ(defaults.string("theirs"), "kept");
    EXPECT_EQ(defaults.string("ours"), "new");
}

TEST_F(PlistDefaultsTest, WhatCannotBeReadIsEmptyAndWhatCannotBeWrittenHoldsForTheRun) {
    for (const std::string& contents :
         {std::string(), std::string("bplist00"), std::string("garbage"),
          std::string("bplist00") + std::string(64, '\xff'), std::string("<plist><array/></plist>")}) {
        sandbox.write("config/app.plist", contents);
        PlistDefaults defaults(file, *writer);
        EXPECT_EQ(defaults.string("key"), std::nullopt);
        defaults.setString("key", "value");
        defaults.synchronize();
        EXPECT_EQ(PlistDefaults(file, *writer).string("key"), "value");
        std::string aside;
        for (const auto& name : sandbox.names("config"))
            if (name.find(".damaged") != std::string::npos && Sandbox::read(sandbox.at("config/" + name)) == contents)
                aside = contents;
        EXPECT_EQ(aside, contents) << "what was damaged is not lost";
    }
    sandbox.write("blocked", "a file where the folder should be");
    PlistDefaults defaults(sandbox.at("blocked/app.plist"), *writer);
    defaults.setString("key", "value");
    defaults.synchronize();
    EXPECT_EQ(defaults.string("key"), "value");
}

TEST_F(PlistDefaultsTest, TwoInstancesKeepOneAnothersChanges) {
    PlistDefaults first(file, *writer), second(file, *writer);
    first.setString("size", "1240 800");
    first.setString("gone", "soon");
    first.synchronize();
    second.setString("tint", "#ff0000");
    second.synchronize();
    first.remove("gone");
    first.synchronize();
    const PlistDefaults now(file, *writer);
    EXPECT_EQ(now.string("size"), "1240 800");
    EXPECT_EQ(now.string("tint"), "#ff0000");
    EXPECT_EQ(now.string("gone"), std::nullopt);
}

TEST(FolderBundle, ReadsItsPropertyList) {
    const Sandbox sandbox;
    const FolderBundle bundle(sandbox.at("Quillmere.app"));
    EXPECT_EQ(bundle.identifier(), std::nullopt);
    EXPECT_EQ(bundle.propertyList(), std::nullopt);
    EXPECT_EQ(bundle.resources(), std::nullopt);
    sandbox.folder("Quillmere.app/Contents/Resources");
    sandbox.write(
        "Quillmere.app/Contents/Info.plist",
        "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>a.b</string>"
        "<key>types</key><array><dict><key>rank</key><integer>-2</integer><key>share</key><real>0.5</real>"
        "<key>on</key><true/><key>raw</key><data>AAAA</data><key>when</key><date>2020-01-01T00:00:00Z</date>"
        "</dict></array></dict></plist>");
    EXPECT_EQ(bundle.identifier(), "a.b");
    EXPECT_EQ(bundle.resources(), sandbox.at("Quillmere.app/Contents/Resources"));
    EXPECT_EQ(bundle.helper("worker"), sandbox.at("Quillmere.app/Contents/Helpers/worker"));
    EXPECT_EQ(json::value(bundle.propertyList().value()),
              json::parse(R"({"CFBundleIdentifier":"a.b","types":[{"rank":-2,"share":0.5,"on":true}]})"));
}

TEST(UserFolders, FollowTheEnvironment) {
    ::setenv("HOME", "/home/somebody", 1);
    ::setenv("XDG_DATA_HOME", "relative/is/ignored", 1);
    ::unsetenv("XDG_CACHE_HOME");
    ::unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(platform::userDirectories().home, FileUrl("/home/somebody"));
    EXPECT_EQ(platform::userDirectories().caches, FileUrl("/home/somebody/.cache"));
    EXPECT_EQ(platform::userDirectories().applicationSupport, FileUrl("/home/somebody/.local/share"));
    EXPECT_EQ(platform::userDefaultsFile(), FileUrl("/home/somebody/.config/app.quillmere.viewer.plist"));
    ::setenv("XDG_CACHE_HOME", "/elsewhere", 1);
    ::setenv("XDG_CONFIG_HOME", "/settings", 1);
    EXPECT_EQ(platform::userDirectories().caches, FileUrl("/elsewhere"));
    EXPECT_EQ(platform::userDefaultsFile(), FileUrl("/settings/app.quillmere.viewer.plist"));
}

TEST(TemporaryFolder, GoesWithItsLastReferenceOrAtTheEndOfTheProgram) {
    const Sandbox sandbox;
    const auto kept = platform::TemporaryFolder::makeInside(sandbox.at("a/b"));
    sandbox.write("a/b/" + kept->url().lastPathComponent() + "/deep/file", "x");
    {
        const auto dropped = platform::TemporaryFolder::makeInside(sandbox.at("a/b"));
        EXPECT_EQ(sandbox.names("a/b").size(), 2U);
    }
    EXPECT_EQ(sandbox.names("a/b"), std::vector<std::string>{kept->url().lastPathComponent()});
    platform::TemporaryFolder::removeAll();
    EXPECT_THAT(sandbox.names("a/b"), testing::IsEmpty());
}

} // namespace
} // namespace quillmere
