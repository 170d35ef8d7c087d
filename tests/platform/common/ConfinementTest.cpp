#include "platform/common/Confinement.h"

#include "tests/support/Sandbox.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace quillmere {
namespace {

using platform::ChildProcess;
using platform::Confinement;
using tests::Sandbox;

int statusOf(const Confinement& confinement, const std::string& script, const platform::ConfinedAccess& access) {
    return ChildProcess(confinement.confine({.executable = FileUrl(STAND_IN), .arguments = {"do:" + script}}, access))
        .wait()
        .code;
}

class Listener {
public:
    Listener() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(socket_.get(), generic, size) == 0 && ::listen(socket_.get(), 4) == 0 &&
            ::getsockname(socket_.get(), generic, &size) == 0)
            port_ = ntohs(address.sin_port);
    }
    int port() const { return port_; }

private:
    FileDescriptor socket_;
    int port_ = 0;
};

TEST(Confinement, LeavesOnlyWhatWasGiven) {
    const Confinement confinement;
    if (!confinement.hasWall())
        GTEST_SKIP() << "bubblewrap cannot run here";
    const Sandbox sandbox;
    const FileUrl input = sandbox.write("in/- 100% of \xff.doc", "input");
    const FileUrl neighbour = sandbox.write("in/neighbour", "secret");
    const FileUrl plain = sandbox.write("in/plain", "input");
    const FileUrl output = sandbox.folder("out");
    const Listener listener;
    const platform::ConfinedAccess access{.readable = {input, plain}, .writable = output};
    const struct {
        const char* name;
        std::string script;
        int expected;
    } rows[] = {
        {"a socket on this machine", "connect=" + std::to_string(listener.port()), 4},
        {"a file beside the input", "reads=" + neighbour.path(), 5},
        {"a file of the system that is not a program", "reads=/etc/hostname", 5},
        {"the input", "reads=" + plain.path(), 0},
        {"writing to the input", "creates=" + plain.path(), 6},
        {"writing the output", "creates=" + output.appending("result").path(), 0},
        {"writing beside the input, in a folder that only looks like it", "creates=" + neighbour.path(), 0},
        {"writing to the system", "creates=/usr/new", 6},
        {"writing to the root", "creates=/new", 6},
        {"writing to the private folder", "creates=/tmp/new", 0},
        {"writing to the private home", "creates=/tmp/home/new", 0},
        {"a namespace of its own, with all powers in it", "namespace", 10},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(statusOf(confinement, row.script, access), row.expected);
    }
    // The name with blanks cannot be told in a script: the program reads it as its input.
    const platform::ProcessSpec reading = confinement.confine(
        {.executable = FileUrl(STAND_IN), .arguments = {"-i", input.path(), output.appending("copy").path()}}, access);
    EXPECT_EQ(ChildProcess(reading).wait().code, 9) << "the word in the file is no order";
    EXPECT_EQ(sandbox.names("out"), std::vector<std::string>{"result"});
    EXPECT_EQ(Sandbox::read(neighbour), "secret");
    EXPECT_FALSE(std::filesystem::exists("/tmp/new"));
}

TEST(Confinement, WithoutTheWallProgramsRunBehindALowerFence) {
    const Confinement confinement(Confinement::Mode::withoutWall);
    const Sandbox sandbox;
    const FileUrl input = sandbox.write("in/input", "input");
    const FileUrl neighbour = sandbox.write("in/neighbour", "secret");
    const FileUrl output = sandbox.folder("out");
    const Listener listener;
    const platform::ConfinedAccess access{.readable = {input}, .writable = output};
    const bool hasPathRules = platform::makeKernelFence({}).paths != nullptr;
    const struct {
        const char* name;
        std::string script;
        int expected;
        bool byPathRules = false;
    } rows[] = {
        {"a socket on this machine", "connect=" + std::to_string(listener.port()), 4},
        {"a namespace of its own", "namespace", 10},
        {"the input", "reads=" + input.path(), 0},
        {"writing the output", "creates=" + output.appending("result").path(), 0},
        {"a file beside the input", "reads=" + neighbour.path(), 5, true},
        {"writing to the input", "creates=" + input.path(), 6, true},
        {"writing beside the input", "creates=" + neighbour.path(), 6, true},
        {"the system's secrets", "reads=/etc/shadow", 5, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        if (!row.byPathRules || hasPathRules) {
            EXPECT_EQ(statusOf(confinement, row.script, access), row.expected);
        }
    }
    EXPECT_EQ(Sandbox::read(neighbour), "secret");
    platform::ProcessSpec spec{.executable = FileUrl(STAND_IN), .arguments = {"do:allocates=2000000000"}};
    spec.limits.addressSpace = 1'000'000'000;
    spec = confinement.confine(spec, {.writable = sandbox.root()});
    EXPECT_EQ(spec.executable, FileUrl(STAND_IN));
    EXPECT_EQ(ChildProcess(spec).wait().code, 7);
    EXPECT_EQ(spec.environment.value(),
              (std::vector<std::string>{"PATH=/usr/local/bin:/usr/bin:/bin", "LANG=C.UTF-8",
                                        "HOME=" + sandbox.root().path(), "TMPDIR=" + sandbox.root().path()}));
}

/// Other versions of bubblewrap, and one on a machine that has other things to do.
TEST(Confinement, TheWallStandsWhereverItCan) {
    if (!Confinement().hasWall())
        GTEST_SKIP() << "bubblewrap cannot run here";
    const Sandbox sandbox;
    const std::string mark = sandbox.at("seen").path();
    const auto refusing = [](const std::string& option) {
        return "case \" $* \" in *' " + option + " '*) exit 1;; esac\n";
    };
    const struct {
        const char* name;
        std::string script;
        bool atFirst;
        bool later;
    } rows[] = {
        {"newest", "", true, true},
        {"cannot end namespaces", refusing("--disable-userns"), true, true},
        {"nor bound folders", refusing("--disable-userns") + refusing("--size"), true, true},
        {"the first trial is late", "[ -e " + mark + " ] || { touch " + mark + "; sleep 60; }\n", true, true},
        {"refused for now", "n=$(cat " + mark + " 2>/dev/null); echo x$n >" + mark + "\n[ ${#n} -gt 2 ] || exit 1\n",
         false, true},
        {"refused for good", "exit 1\n", false, false},
    };
    const FileUrl output = sandbox.folder("out");
    const FileUrl secret = sandbox.write("secret");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove(mark);
        const FileUrl bubblewrap = sandbox.writeProgram("bwrap " + std::string(row.name),
                                                        "#!/bin/sh\n" + row.script + "exec /usr/bin/bwrap \"$@\"\n");
        const Confinement confinement(
            Confinement::Options{.bubblewrap = bubblewrap, .trialLimit = std::chrono::milliseconds(500)});
        EXPECT_EQ(confinement.hasWall(), row.atFirst);
        EXPECT_EQ(confinement.hasWall(), row.later);
        EXPECT_EQ(statusOf(confinement, "reads=" + secret.path(), {.writable = output}), 5);
        EXPECT_EQ(statusOf(confinement, "creates=" + output.appending("x").path(), {.writable = output}), 0);
    }
}

TEST(Confinement, ProgramsOutsideTheSystemComeWithWhatTheyNeed) {
    const Confinement confinement;
    if (!confinement.hasWall())
        GTEST_SKIP() << "bubblewrap cannot run here";
    const Sandbox sandbox;
    const FileUrl real = sandbox.folder("suite/program").appending("tool");
    std::filesystem::copy_file(STAND_IN, real.filesystemPath());
    const FileUrl beside = sandbox.write("suite/share/data");
    const FileUrl other = sandbox.write("other");
    std::vector<FileUrl> names{real, sandbox.at("link")};
    std::filesystem::create_symlink(real.path(), sandbox.at("link").path());
    // A link in a system folder, as people make them for what they have installed in their home.
    const FileUrl local("/usr/local/bin/quillmere-test-" + sandbox.root().lastPathComponent());
    if (::symlink(real.path().c_str(), local.path().c_str()) == 0)
        names.push_back(local);
    for (const auto& name : names) {
        SCOPED_TRACE(name.path());
        const auto status = [&](const std::string& script) {
            return ChildProcess(confinement.confine({.executable = name, .arguments = {"do:" + script}}, {}))
                .wait()
                .code;
        };
        EXPECT_EQ(status("reads=" + beside.path()), 0);
        EXPECT_EQ(status("reads=" + other.path()), 5);
    }
    ::unlink(local.path().c_str());
    const FileUrl broken = sandbox.writeProgram("broken", "#!/nonexistent/interpreter\n");
    const int status = ChildProcess(confinement.confine({.executable = broken}, {})).wait().code;
    EXPECT_TRUE(status == 126 || status == 127) << status;
}

TEST(Confinement, TheUsersFontsAreThereWhenAskedFor) {
    const Sandbox sandbox;
    const FileUrl home = sandbox.folder("home");
    const FileUrl data = sandbox.folder("data");
    const FileUrl old = sandbox.write("home/.fonts/old.ttf");
    const FileUrl font = sandbox.write("data/fonts/new.ttf");
    const FileUrl listed = sandbox.write("more/listed.ttf");
    const FileUrl secret = sandbox.write("home/secret");
    sandbox.write("config/fontconfig/fonts.conf", "<?xml version='1.0'?><fontconfig><dir>" + listed.parent().path() +
                                                      "</dir><dir>" + home.path() + "</dir></fontconfig>");
    ::setenv("HOME", home.path().c_str(), 1);
    ::setenv("XDG_DATA_HOME", data.path().c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", sandbox.at("config").path().c_str(), 1);
    for (const auto mode : {Confinement::Mode::automatic, Confinement::Mode::withoutWall}) {
        const Confinement confinement(mode);
        for (const auto fonts : {platform::UserFonts::hidden, platform::UserFonts::readable}) {
            const platform::ConfinedAccess access{.fonts = fonts};
            for (const auto& file : {old, font, listed})
                EXPECT_EQ(statusOf(confinement, "reads=" + file.path(), access),
                          fonts == platform::UserFonts::readable ? 0 : 5)
                    << file.path();
            EXPECT_EQ(statusOf(confinement, "reads=" + secret.path(), access), 5);
        }
    }
    if (const Confinement confinement; confinement.hasWall()) {
        EXPECT_EQ(statusOf(confinement, "reads=/tmp/home/.fonts/old.ttf", {.fonts = platform::UserFonts::readable}), 0);
    }
    ::unsetenv("XDG_DATA_HOME");
    ::unsetenv("XDG_CONFIG_HOME");
}

TEST(Confinement, LimitsHoldBehindTheWall) {
    const Confinement confinement;
    platform::ProcessSpec spec{.executable = FileUrl(STAND_IN), .arguments = {"do:allocates=2000000000"}};
    spec.limits = {.addressSpace = 1'000'000'000, .processes = 64};
    EXPECT_EQ(ChildProcess(confinement.confine(spec, {})).wait().code, 7);
}

} // namespace
} // namespace quillmere
