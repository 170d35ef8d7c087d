#include "files/LocalFiles.h"

#include "base/Uuid.h"
#include "files/AppAddress.h"
#include "platform/headless/HeadlessPlatform.h"
#include "tests/support/Sandbox.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace quillmere {
namespace {

namespace fs = std::filesystem;

class LocalFilesTest : public testing::Test, protected tests::Sandbox {
protected:
    std::shared_ptr<LocalFiles> files(const FileUrl& resources) {
        return std::make_shared<LocalFiles>(resources, platform_.executors, platform_.contentTypes);
    }

    platform::HeadlessPlatform platform_{root()};
};

std::string tokenOf(const std::string& grantPath) {
    return grantPath.substr(8, 36);
}

TEST_F(LocalFilesTest, GrantPathsNameTheFileBehindAToken) {
    const auto local = files(root());
    struct Row {
        std::string name;
        std::string encoded;
    };
    const Row rows[] = {
        {"plain.txt", "plain.txt"},
        {"a b#c?.txt", "a%20b%23c%3F.txt"},
        {"semi;colon", "semi%3Bcolon"},
        {"-._~!$&'()*+,=:@", "-._~!$&'()*+,=:@"},
        {"é.pdf", "%C3%A9.pdf"},
        {"100%.txt", "100%25.txt"},
        {"line\nbreak\"<b>", "line%0Abreak%22%3Cb%3E"},
        {"bad\xFF.bin", "file"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.encoded);
        const FileUrl file = at(row.name);
        const std::string path = local->grant(file);
        ASSERT_TRUE(path.starts_with("/__file/"));
        EXPECT_TRUE(isUuid(tokenOf(path)));
        EXPECT_EQ(path.substr(44), "/" + row.encoded);
        EXPECT_EQ(local->resolve("quillmere://app" + path), file);
        EXPECT_EQ(local->grant(file), path) << "granted again";
    }
}

TEST_F(LocalFilesTest, TheSixtyFifthGrantDropsAllOthers) {
    const auto local = files(root());
    std::vector<std::string> paths;
    for (int i = 0; i < 64; ++i)
        paths.push_back(local->grant(at(std::to_string(i))));
    for (const auto& path : paths)
        ASSERT_TRUE(local->grantedFile(path));
    EXPECT_EQ(local->grant(at("7")), paths[7]) << "a known file takes no new place";

    const std::string last = local->grant(at("64"));
    EXPECT_EQ(local->grantedFile(last), at("64"));
    for (const auto& path : paths)
        EXPECT_FALSE(local->grantedFile(path));
}

TEST_F(LocalFilesTest, AddressesOfGrants) {
    const auto local = files(root());
    folder("app");
    const FileUrl file = at("doc.txt");
    const std::string token = tokenOf(local->grant(file));
    struct Row {
        std::string url;
        bool granted;
    };
    const Row rows[] = {
        {"quillmere://app/__file/" + token, true},
        {"quillmere://app/__file/" + token + "/", true},
        {"quillmere://app/__file/" + token + "/other/name", true},
        {"quillmere://app/__file//" + token + "/doc.txt", true},
        {"quillmere://app/__file/" + token + "/doc.txt?v=12.5#x", true},
        {"quillmere://app/%5F_file/" + token, true},
        {"quillmere://app/__file/", false},
        {"quillmere://app/__file/" + newUuid() + "/doc.txt", false},
        {"quillmere://app/__FILE/" + token, false},
        {"quillmere://other/__file/" + token, false},
        {"quillmere://App/__file/" + token, false},
        {"Quillmere://app/__file/" + token, false},
        {"https://app/__file/" + token, false},
        {"quillmere:/app/__file/" + token, false},
        {"quillmere://app/__file/" + token + "/%zz", false},
        {"quillmere://app/__file/" + token + "%00", false},
        {"", false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(local->resolve(row.url) == file, row.granted) << row.url;
}

TEST_F(LocalFilesTest, PageResourcesStayInsideTheirFolder) {
    const FileUrl app = folder("res/app");
    write("res/app/index.html");
    write("res/app/sub/a b.js");
    write("res/appendix/secret.txt");
    const FileUrl secret = write("res/secret.txt");
    fs::create_symlink(secret.filesystemPath(), app.appending("leak.txt").filesystemPath());
    fs::create_directory_symlink(root().filesystemPath(), app.appending("up").filesystemPath());
    fs::create_symlink("index.html", app.appending("alias.html").filesystemPath());
    const auto local = files(at("res"));

    struct Row {
        std::string path;
        std::optional<std::string> inApp;
    };
    const Row rows[] = {
        {"/", "index.html"},
        {"/index.html?x=1#top", "index.html"},
        {"/sub/a%20b.js", "sub/a b.js"},
        {"/sub/../index.html", "index.html"},
        {"/alias.html", "index.html"},
        {"/missing.css", "missing.css"},
        {"/__file", "__file"},
        {"//etc/passwd", "etc/passwd"},
        {"", std::nullopt},
        {"/.", std::nullopt},
        {"/sub/..", std::nullopt},
        {"/../secret.txt", std::nullopt},
        {"/..%2Fsecret.txt", std::nullopt},
        {"/%2e%2e/secret.txt", std::nullopt},
        {"/sub/../../secret.txt", std::nullopt},
        {"/../appendix/secret.txt", std::nullopt},
        {"/leak.txt", std::nullopt},
        {"/up/res/secret.txt", std::nullopt},
        {"/index.html%00.png", std::nullopt},
    };
    for (const auto& row : rows) {
        const auto expected = row.inApp ? std::optional(app.appending(*row.inApp)) : std::nullopt;
        EXPECT_EQ(local->resolve("quillmere://app" + row.path), expected) << row.path;
    }
}

TEST_F(LocalFilesTest, TheOwnTypeTableWinsOverTheRegistry) {
    platform_.contentTypes.types = {{"js", "application/javascript"}, {"txt", "text/plain"}};
    const std::pair<const char*, const char*> rows[] = {
        {"a.js", "text/javascript"},
        {"a.mjs", "text/javascript"},
        {"a.wasm", "application/wasm"},
        {"a.mov", "video/quicktime"},
        {"a.MP4", "video/mp4"},
        {"a.m4a", "audio/mp4"},
        {"a.TXT", "text/plain"},
        {"a.unheard", "application/octet-stream"},
        {"a", "application/octet-stream"},
        {".js", "application/octet-stream"},
    };
    for (const auto& [name, type] : rows)
        EXPECT_EQ(LocalFiles::mime(at(name), platform_.contentTypes), type) << name;
}

TEST(AppAddress, OnlyTheExactSchemeAndHost) {
    for (const auto* good :
         {"quillmere://app/index.html", "quillmere://app", "quillmere://app/a?b#c", "quillmere://app?x"})
        EXPECT_TRUE(isAppAddress(good)) << good;
    for (const auto* bad : {"quillmere://apps/", "quillmere://APP/", "quillmere://app.evil/", "quillmere://evil/app/",
                            "quillmere:app/", "https://app/", "about:blank", "", "://app/", "quillmere://app@evil/",
                            "blob:quillmere://app/1", "javascript:quillmere://app/", "file:///quillmere://app/"})
        EXPECT_FALSE(isAppAddress(bad)) << bad;
}

} // namespace
} // namespace quillmere
