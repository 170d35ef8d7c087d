#include "platform/gtk/MediaResolver.h"
#include "platform/gtk/WebViewBridge.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace quillmere::platform::gtk {
namespace {

namespace fs = std::filesystem;

TEST(MediaResolver, OpensRegularFilesOnly) {
    std::string folder = fs::temp_directory_path() / "quillmere-test-XXXXXX";
    ASSERT_NE(::mkdtemp(folder.data()), nullptr);
    const fs::path base = folder;
    std::ofstream(base / "film.mp4") << "content";
    fs::create_symlink(base / "film.mp4", base / "link.mp4");
    fs::create_directory(base / "folder.mp4");
    ASSERT_EQ(::mkfifo((base / "pipe.mp4").c_str(), 0600), 0);
    const std::pair<fs::path, bool> rows[] = {
        {base / "film.mp4", true},  {base / "link.mp4", true},  {base / "folder.mp4", false},
        {base / "pipe.mp4", false}, {base / "none.mp4", false}, {"/dev/zero", false},
    };
    for (const auto& [path, opens] : rows) {
        const auto file = MediaResolver::openMedia(FileUrl(path));
        EXPECT_EQ(static_cast<bool>(file), opens) << path;
        if (file) {
            EXPECT_EQ(::fcntl(file.get(), F_GETFL) & O_ACCMODE, O_RDONLY) << path;
            EXPECT_NE(::fcntl(file.get(), F_GETFD) & FD_CLOEXEC, 0) << path;
        }
    }
    fs::remove_all(base);
}

TEST(WebViewBridge, TakesJsonTextWithinItsLimits) {
    const auto context = GObjectRef<JSCContext>::adopt(jsc_context_new());
    const std::pair<const char*, std::optional<std::string>> rows[] = {
        {R"('{"type":"ready"}')", R"({"type":"ready"})"},
        {R"('"\\u2028 ä"')", "\"\u2028 ä\""},
        {"JSON.stringify({ text: 'x\\0y' })", R"({"text":"x\u0000y"})"},
        {"JSON.stringify('é'.repeat(3)).repeat(1)", "\"ééé\""},
        {"'{\"type\":'", std::nullopt},
        {"''", std::nullopt},
        {"({ type: 'ready' })", std::nullopt},
        {"7", std::nullopt},
        {"null", std::nullopt},
        {"'['.repeat(100000) + ']'.repeat(100000)", std::nullopt},
        {"JSON.stringify('x'.repeat(33 * 1024 * 1024))", std::nullopt},
    };
    for (const auto& [script, expected] : rows) {
        const auto value = GObjectRef<JSCValue>::adopt(jsc_context_evaluate(context.get(), script, -1));
        const auto body = WebViewBridge::bodyOf(value.get());
        EXPECT_EQ(body ? compactJson(*body) : std::nullopt, expected) << script;
    }
    const auto large = GObjectRef<JSCValue>::adopt(
        jsc_context_evaluate(context.get(), "JSON.stringify('é'.repeat(8 * 1024 * 1024))", -1));
    const auto body = WebViewBridge::bodyOf(large.get());
    ASSERT_TRUE(body && body->is_string());
    EXPECT_EQ(body->as_string().size(), 16U * 1024 * 1024);
}

} // namespace
} // namespace quillmere::platform::gtk
