// Reads one archive for the desktop program, in a process that can be killed at any time and can do nothing else.
//
//     quillmere-archive-reader raw|plain all|POSITION
//
// The archive is descriptor 3, open for reading; the answer is frames on standard output (ArchiveProtocol.h). For "all"
// it is each header followed by "skipped", for a position that one header and the data of its entry.

#include "containers/ArchiveProtocol.h"
#include "containers/LibarchiveReader.h"
#include "containers/archive-reader/Lockdown.h"
#include "containers/archive-reader/Outbox.h"

#include <array>
#include <charconv>
#include <clocale>
#include <cwchar>
#include <exception>
#include <string_view>
#include <unistd.h>

namespace {

using namespace quillmere;
using archiveProtocol::Kind;
using Outcome = ArchiveReader::Outcome;

constexpr int archiveDescriptor = 3;

enum ExitCode { finished = 0, readerLost = 1, badUsage = 2, notConfined = 3 };

std::optional<ArchiveRequest> requestFrom(int count, char** arguments) {
    if (count != 3)
        return std::nullopt;
    const std::string_view raw = arguments[1];
    const std::string_view which = arguments[2];
    if (raw != "raw" && raw != "plain")
        return std::nullopt;
    ArchiveRequest request{.file = FileDescriptor(archiveDescriptor),
                           .raw = raw == "raw" ? RawFormat::accepted : RawFormat::refused};
    if (which != "all") {
        int64_t position = 0;
        const auto [end, error] = std::from_chars(which.data(), which.data() + which.size(), position);
        if (error != std::errc() || end != which.data() + which.size() || position < 1)
            return std::nullopt;
        request.only = position;
    }
    return request;
}

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
        if (reader.skip() != Outcome::done)
            return sendFailure(outbox, reader);
        sendPlain(outbox, Kind::skipped);
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

} // namespace

int main(int count, char** arguments) {
    try {
        auto request = requestFrom(count, arguments);
        if (!request)
            return badUsage;
        const bool one = request->only.has_value();
        loadCharacterTypes();
        {
            Outbox outbox(STDOUT_FILENO);
            if (!lockDown())
                _exit(notConfined);
            LibarchiveReader reader(std::move(*request));
            if (one)
                sendOne(outbox, reader);
            else
                sendAll(outbox, reader);
        }
        // What exit handlers of libraries might still do is no longer allowed.
        _exit(finished);
    } catch (const std::exception&) {
        _exit(readerLost);
    }
}
