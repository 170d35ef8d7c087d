#include "platform/common/Confinement.h"

#include "tests/support/Sandbox.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

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
    if (!confinement.isAvailable())
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

TEST(Confinement, WithoutTheWallProgramsRunWithLimitsAndAMinimalEnvironment) {
    const Confinement confinement(Confinement::Mode::limitsOnly);
    const Sandbox sandbox;
    platform::ProcessSpec spec{.executable = FileUrl(STAND_IN), .arguments = {"do:allocates=2000000000"}};
    spec.limits.addressSpace = 1'000'000'000;
    spec = confinement.confine(spec, {.writable = sandbox.root()});
    EXPECT_EQ(spec.executable, FileUrl(STAND_IN));
    EXPECT_EQ(ChildProcess(spec).wait().code, 7);
    EXPECT_EQ(spec.environment.value(),
              (std::vector<std::string>{"PATH=/usr/local/bin:/usr/bin:/bin", "LANG=C.UTF-8",
                                        "HOME=" + sandbox.root().path(), "TMPDIR=" + sandbox.root().path()}));
}

TEST(Confinement, LimitsHoldBehindTheWall) {
    const Confinement confinement;
    platform::ProcessSpec spec{.executable = FileUrl(STAND_IN), .arguments = {"do:allocates=2000000000"}};
    spec.limits = {.addressSpace = 1'000'000'000, .processes = 64};
    EXPECT_EQ(ChildProcess(confinement.confine(spec, {})).wait().code, 7);
}

} // namespace
} // namespace quillmere
