// Reads one archive for the desktop program, in a process that can be killed at any time and can do nothing else. It
// makes itself ready, waits on standard input (a socket) for what to read, and answers with frames on standard output
// (ArchiveProtocol.h): "taken", then for all entries each header followed by "skipped" or a failure, for one entry its
// header and its data.

#include "containers/ArchiveProtocol.h"
#include "helpers/archive-reader/CharacterConverters.h"
#include "helpers/archive-reader/LibarchiveReader.h"
#include "helpers/archive-reader/Lockdown.h"
#include "helpers/archive-reader/Outbox.h"

#include <array>
#include <clocale>
#include <cwchar>
#include <exception>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace {

using namespace quillmere;
using archiveProtocol::Kind;
using Outcome = ArchiveReader::Outcome;

enum ExitCode { finished = 0, readerLost = 1, notConfined = 3 };

/// What names need is loaded while files can still be opened.
void loadCharacterTypes() {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    wchar_t wide = 0;
    std::mbstate_t state{};
    constexpr std::string_view sample = "\xC3\xA9";
    std::mbrtowc(&wide, sample.data(), sample.size(), &state);
}

void sendPlain(Outbox& outbox, Kind kind) {
    outbox.send([&](std::string& out) { archiveProtocol::appendPlain(out, kind); });
}

void sendFailure(Outbox& outbox, const ArchiveReader& reader) {
    outbox.send([&](std::string& out) { archiveProtocol::appendFailure(out, reader.errorText()); });
}

/// Sends the next header; false after the end or a failure, which are sent too.
bool sendHeader(Outbox& outbox, ArchiveReader& reader, EntryFacts& facts) {
    switch (reader.next(facts)) {
    case Outcome::done:
        outbox.send([&](std::string& out) { archiveProtocol::appendHeader(out, facts); });
        return true;
    case Outcome::end:
        sendPlain(outbox, Kind::end);
        return false;
    case Outcome::failed:
        break;
    }
    sendFailure(outbox, reader);
    return false;
}

void sendAll(Outbox& outbox, ArchiveReader& reader) {
    EntryFacts facts;
    while (sendHeader(outbox, reader, facts)) {
        if (reader.skip() == Outcome::done)
            sendPlain(outbox, Kind::skipped);
        else
            sendFailure(outbox, reader); // whether that ends the reading is the other side's to say
    }
}

void sendOne(Outbox& outbox, ArchiveReader& reader) {
    EntryFacts facts;
    if (!sendHeader(outbox, reader, facts))
        return;
    std::array<char, archiveProtocol::maxData> buffer;
    for (;;) {
        const auto count = reader.read(buffer);
        if (!count)
            return sendFailure(outbox, reader);
        if (*count == 0)
            return sendPlain(outbox, Kind::dataEnd);
        outbox.send([&](std::string& out) { archiveProtocol::appendData(out, {buffer.data(), *count}); });
    }
}

/// Answers one request.
ExitCode serve() {
    loadCharacterTypes();
    const CharacterConverters converters;
    beFirstToGo();
    if (!lockDown())
        return notConfined;
    auto request = archiveProtocol::receiveRequest(STDIN_FILENO);
    if (!request)
        return finished;
    const bool one = request->only.has_value();
    Outbox outbox(STDOUT_FILENO);
    LibarchiveReader reader(std::move(*request));
    sendPlain(outbox, Kind::taken);
    outbox.flush();
    if (one)
        sendOne(outbox, reader);
    else
        sendAll(outbox, reader);
    outbox.flush();
    return finished;
}

} // namespace

int main() {
    try {
        // What exit handlers of libraries might still do is no longer allowed.
        _exit(serve());
    } catch (const std::exception&) {
        _exit(readerLost);
    }
}
