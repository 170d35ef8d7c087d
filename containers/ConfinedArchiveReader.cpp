#include "containers/ConfinedArchiveReader.h"

#include "base/Clock.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace quillmere {

using archiveProtocol::Kind;
using archiveProtocol::Message;
using archiveProtocol::Parser;

namespace {

constexpr int pollMilliseconds = 20;
constexpr size_t incomingBytes = 1 << 18;

} // namespace

ConfinedArchiveReader::ConfinedArchiveReader(std::shared_ptr<ReaderProcesses> processes,
                                             std::chrono::milliseconds silence, ArchiveRequest request)
    : processes_(std::move(processes)), silence_(silence), pulse_(std::move(request.pulse)),
      process_(processes_->employ(request)) {}

ConfinedArchiveReader::~ConfinedArchiveReader() {
    dismiss();
}

void ConfinedArchiveReader::dismiss() noexcept {
    if (process_)
        processes_->dismiss(std::move(*process_));
    process_.reset();
}

ArchiveReaderFactory ConfinedArchiveReader::factory(const Options& options) {
    return [processes = std::make_shared<ReaderProcesses>(options.program),
            silence = options.silence](ArchiveRequest request) -> std::unique_ptr<ArchiveReader> {
        return std::make_unique<ConfinedArchiveReader>(processes, silence, std::move(request));
    };
}

bool ConfinedArchiveReader::takeBytes() {
    const SteadyTime lost = steadyNow() + silence_;
    for (;;) {
        pollfd ready{.fd = process_->answers.get(), .events = POLLIN, .revents = 0};
        const int count = ::poll(&ready, 1, pollMilliseconds);
        pulse_();
        if (count < 0 && errno != EINTR)
            return false;
        if (count > 0)
            break;
        if (steadyNow() > lost)
            return false;
    }
    incoming_.resize(incomingBytes);
    ssize_t received = 0;
    do
        received = ::read(process_->answers.get(), incoming_.data(), incoming_.size());
    while (received < 0 && errno == EINTR);
    if (received <= 0)
        return false;
    parser_.add(std::string_view(incoming_).substr(0, static_cast<size_t>(received)));
    return true;
}

const Message* ConfinedArchiveReader::receive() {
    while (!over_) {
        const auto result = parser_.next(message_);
        if (result == Parser::Result::message && message_.kind != Kind::alive)
            return &message_;
        if (result == Parser::Result::malformed || (result == Parser::Result::incomplete && !takeBytes()))
            over_ = true;
    }
    dismiss();
    return nullptr;
}

ArchiveReader::Outcome ConfinedArchiveReader::expect(Kind kind, EntryFacts* facts) {
    const Message* message = receive();
    if (!message)
        return Outcome::failed;
    if (message->kind == kind) {
        if (facts)
            std::swap(*facts, message_.facts); // both keep the room of their texts
        return Outcome::done;
    }
    over_ = true;
    if (message->kind == Kind::end && kind == Kind::header)
        return Outcome::end;
    if (message->kind == Kind::failure)
        errorText_ = message->text;
    return Outcome::failed;
}

ArchiveReader::Outcome ConfinedArchiveReader::next(EntryFacts& facts) {
    return expect(Kind::header, &facts);
}

ArchiveReader::Outcome ConfinedArchiveReader::skip() {
    return expect(Kind::skipped, nullptr);
}

std::optional<size_t> ConfinedArchiveReader::read(std::span<char> buffer) {
    if (entryComplete_)
        return 0;
    if (data_.empty()) {
        const Message* message = receive();
        if (!message)
            return std::nullopt;
        if (message->kind == Kind::dataEnd) {
            entryComplete_ = true;
            return 0;
        }
        if (message->kind != Kind::data) {
            over_ = true;
            errorText_ = message->text;
            return std::nullopt;
        }
        data_ = message->data;
    }
    const size_t count = std::min(buffer.size(), data_.size());
    std::memcpy(buffer.data(), data_.data(), count);
    data_.remove_prefix(count);
    return count;
}

} // namespace quillmere
