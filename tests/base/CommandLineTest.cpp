#include "base/CommandLine.h"
#include "tests/support/Sandbox.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

namespace fs = std::filesystem;

TEST(CommandLine, NamesAFileAsTheKernelMeansIt) {
    const tests::Sandbox sandbox;
    sandbox.write("far/below/note.txt");
    sandbox.write("far/note.txt");
    sandbox.write("note.txt");
    fs::create_directory_symlink(sandbox.at("far/below").path(), sandbox.at("link").path());
    fs::create_symlink("note.txt", sandbox.at("alias.txt").path());
    const std::string here = sandbox.root().path();
    const std::string current = fs::current_path().native();
    const struct {
        std::vector<std::string> arguments;
        std::string path;
    } rows[] = {
        {{here + "/link/../note.txt"}, here + "/far/note.txt"},
        {{here + "/link/.././below/../note.txt"}, here + "/far/note.txt"},
        {{here + "/far/../note.txt"}, here + "/note.txt"},
        {{here + "/link/note.txt"}, here + "/link/note.txt"},
        {{here + "/alias.txt"}, here + "/alias.txt"},
        {{here + "/link/.."}, here + "/far"},
        {{here + "/none/../note.txt"}, here + "/none/../note.txt"},
        {{here + "/note.txt/../note.txt"}, here + "/note.txt/../note.txt"},
        {{"/../.."}, "/"},
        {{""}, current},
        {{"./b#1%.txt", "c"}, current + "/b#1%.txt"},
        {{"file://" + here + "/a%20b%25.txt"}, here + "/a b%.txt"},
        {{"FILE://localhost" + here + "/link/../note.txt"}, here + "/far/note.txt"},
        {{"--", "file://" + here + "/note.txt"}, here + "/note.txt"},
        {{"file:note.txt"}, current + "/file:note.txt"},
        {{"-x", "--long", "http:x"}, current + "/http:x"},
        {{"--", "-dash.txt"}, current + "/-dash.txt"},
        {{"--", "-dash.txt", "plain.txt"}, current + "/plain.txt"},
        {{"--", "--"}, current + "/--"},
        {{"-x", "--"}, ""},
        {{"--new"}, ""},
        {{}, ""},
    };
    for (const auto& row : rows) {
        std::vector<std::string> arguments = row.arguments;
        arguments.insert(arguments.begin(), "program");
        const auto file = namedFile(arguments);
        const std::string name = row.arguments.empty() ? "nothing" : row.arguments.front();
        EXPECT_EQ(file ? file->path() : "", row.path) << name;
        std::error_code error;
        if (file && fs::exists(row.arguments.back(), error)) {
            EXPECT_TRUE(fs::equivalent(file->filesystemPath(), row.arguments.back())) << name;
        }
    }
    EXPECT_FALSE(namedFile({}));
}

TEST(CommandLine, AsksForOneThing) {
    using enum CommandLineRequest;
    const struct {
        std::vector<std::string> arguments;
        CommandLineRequest request;
    } rows[] = {
        {{}, run},
        {{"a.txt"}, run},
        {{"--help"}, help},
        {{"a.txt", "-h", "--version"}, help},
        {{"-x", "--version"}, version},
        {{"--", "--help"}, run},
        {{"--help=1", "--self-test=1", "-self-test"}, run},
        {{"--help", "a.txt", "--self-test"}, selfTest},
        {{"--", "--self-test"}, selfTest},
    };
    for (const auto& row : rows) {
        std::vector<std::string> arguments = row.arguments;
        arguments.insert(arguments.begin(), "program");
        EXPECT_EQ(commandLineRequest(arguments), row.request) << ::testing::PrintToString(row.arguments);
    }
    EXPECT_EQ(commandLineRequest({}), run);
}

} // namespace
} // namespace quillmere
