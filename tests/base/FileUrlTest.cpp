#include "base/FileUrl.h"
#include "base/Errors.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace quillmere {
namespace {

TEST(FileUrl, NamesAndExtensions) {
    struct Row {
        std::string path, name, extension;
    };
    const Row rows[] = {
        {"/a/report.DOC", "report.DOC", "DOC"},
        {"/a/archive.tar.gz", "archive.tar.gz", "gz"},
        {"/a/.profile", ".profile", ""},
        {"/a/.profile.txt", ".profile.txt", "txt"},
        {"/a/trailing.", "trailing.", ""},
        {"/a/plain", "plain", ""},
        {"/a.b/plain", "plain", ""},
        {"/a/folder.app/", "folder.app", "app"},
        {"/", "/", ""},
        {"/a/bad\xFF.png", "bad\xFF.png", "png"},
        {"/a/two\nlines.txt", "two\nlines.txt", "txt"},
    };
    for (const auto& row : rows) {
        const FileUrl url(row.path);
        EXPECT_EQ(url.lastPathComponent(), row.name);
        EXPECT_EQ(url.pathExtension(), row.extension) << row.name;
    }
    EXPECT_EQ(FileUrl("/a/X.ÄÖ").lowerExtension(), "äö");
}

TEST(FileUrl, ReadsOnlyUrlsOfLocalFiles) {
    const std::pair<const char*, const char*> good[] = {
        {"file:///a/b%20c", "/a/b c"},      {"file://localhost/a", "/a"}, {"FILE:///a/%FF", "/a/\xFF"},
        {"file:///a/b?query#part", "/a/b"}, {"file:///a%23b", "/a#b"},
    };
    for (const auto& [text, path] : good) {
        const auto url = FileUrl::fromUri(text);
        ASSERT_TRUE(url) << text;
        EXPECT_EQ(url->path(), path);
        EXPECT_EQ(FileUrl::fromUri(url->uri()), url);
    }
    for (const auto* bad :
         {"file://host/a", "http://a/b", "file:///a%00b", "file:///a%2", "file:///%zz", "file://", "/a", ""})
        EXPECT_FALSE(FileUrl::fromUri(bad)) << bad;
}

TEST(Errors, SentencesNameTheFileWithoutItsFolder) {
    const auto sentence = [](const std::exception_ptr& error) -> std::string {
        try {
            std::rethrow_exception(error);
        } catch (const std::exception& caught) {
            return userMessage(caught);
        }
    };
    EXPECT_EQ(sentence(fileError(ENOENT, "/secret/place/a.txt")), "“a.txt” no longer exists.");
    EXPECT_EQ(sentence(fileError(EACCES, "/x/bad\xFF")), "You do not have permission to open “bad\xEF\xBF\xBD”.");
    EXPECT_EQ(sentence(std::make_exception_ptr(FileFailure("Said so."))), "Said so.");
    EXPECT_EQ(sentence(std::make_exception_ptr(CancellationError())), "");
}

} // namespace
} // namespace quillmere
