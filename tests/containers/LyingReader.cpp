// Takes the place of the archive reader program and misbehaves as the "archive" of its request says.

#include "containers/ArchiveProtocol.h"

#include <csignal>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace quillmere;
using archiveProtocol::Kind;

void say(const std::string& bytes) {
    [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
}

std::string header(const std::string& name, int64_t size) {
    std::string bytes;
    archiveProtocol::appendHeader(bytes, {.name = name, .format = "lies", .type = S_IFREG, .size = size});
    return bytes;
}

std::string plain(Kind kind) {
    std::string bytes;
    archiveProtocol::appendPlain(bytes, kind);
    return bytes;
}

std::string failure(const std::string& words) {
    std::string bytes;
    archiveProtocol::appendFailure(bytes, words);
    return bytes;
}

std::string data(const std::string& content) {
    std::string bytes;
    archiveProtocol::appendData(bytes, content);
    return bytes;
}

} // namespace

int main() {
    const auto request = archiveProtocol::receiveRequest(STDIN_FILENO);
    if (!request)
        return 0;
    char text[64] = "";
    [[maybe_unused]] const auto count = ::read(request->file.get(), text, sizeof text - 1);
    const std::string lie = text;
    const bool isScan = !request->only;
    if (lie == "never answers")
        return 0;
    if (lie == "mute")
        ::pause();
    say(lie == "answers nonsense" ? plain(Kind::end) : plain(Kind::taken));
    const std::string listing = header("a", 3) + plain(Kind::skipped) + plain(Kind::end);

    if (lie == "crash at once")
        ::raise(SIGSEGV);
    if (lie == "silent")
        ::pause();
    if (lie == "crash in the middle") {
        say(header("a", 3));
        ::raise(SIGKILL);
    }
    if (lie == "half a frame")
        say(header("a", 3).substr(0, 12));
    if (lie == "huge length")
        say("\xff\xff\xff\x7f\x01");
    if (lie == "garbage")
        say(std::string(100'000, 'g'));
    if (lie == "wrong order")
        say(plain(Kind::skipped) + listing);
    if (lie == "data while listing")
        say(header("a", 3) + data("abc") + plain(Kind::end));
    if (lie == "no end")
        say(header("a", 3) + plain(Kind::skipped));
    if (lie == "endless entries")
        for (int i = 0;; ++i)
            say(header(std::to_string(i), 0) + plain(Kind::skipped));
    if (lie == "root not passed over")
        say(header("./", 3) + failure("no way over") + listing);
    if (lie == "entry not passed over")
        say(header("a", 3) + failure("no way over") + plain(Kind::end));
    if (lie == "climbing name")
        say(header("../a", 3));
    if (!lie.starts_with("extract "))
        return 0;
    if (isScan)
        say(listing);
    else if (lie == "extract other")
        say(header("b", 3) + data("abc") + plain(Kind::dataEnd));
    else if (lie == "extract endless")
        for (say(header("a", 3));;)
            say(data("more"));
    else if (lie == "extract slowly")
        for (say(header("a", 3) + data("a"));;)
            ::pause();
    else if (lie == "extract short")
        say(header("a", 3) + data("ab") + plain(Kind::dataEnd));
    else if (lie == "extract header again")
        say(header("a", 3) + data("ab") + header("a", 3));
    else if (lie == "extract broken off")
        say(header("a", 3) + data("ab"));
    return 0;
}
