#include "containers/ConfinedArchiveReader.h"

#include <algorithm>
#include <cstring>

namespace quillmere {

using archiveProtocol::Kind;
using archiveProtocol::Message;
using archiveProtocol::Parser;

namespace {

constexpr size_t incomingBytes = 1 << 18;

} // namespace

ConfinedArchiveReader::ConfinedArchiveReader(std::shared_ptr<ReaderProcesses> processes, const ArchiveRequest& request)
    : processes_(std::move(processes)), pulse_(request.pulse), process_(processes_->employ(request)) {}

ConfinedArchiveReader::~ConfinedArchiveReader() {
    dismiss();
}

void ConfinedArchiveReader::dismiss() noexcept {
    if (process_)
        processes_->dismiss(std::move(*process_));
    process_.reset();
}

ArchiveReaderFactory ConfinedArchiveReader::factory(const FileUrl& program) {
    return [processes = std::make_shared<ReaderProcesses>(program)](
               const ArchiveRequest& request) -> std::unique_ptr<ArchiveReader> {
        return std::make_unique<ConfinedArchiveReader>(processes, request);
    };
}

bool ConfinedArchiveReader::takeBytes() {
    if (!process_->awaitAnswer(pulse_))
        return false;
    incoming_.resize(incomingBytes);
    const size_t received = process_->readAnswer(incoming_);
    parser_.add(std::string_view(incoming_).substr(0, received));
    return received > 0;
}

const Message* ConfinedArchiveReader::receive() {
    while (!over_) {
        const auto result = parser_.next(message_);
        if (result == Parser::Result::message)
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
    if (message->kind == Kind::failure)
        errorText_ = message->text;
    // Data that could not be passed over is the caller's to judge; a next header may follow.
    over_ = message->kind != Kind::failure || kind != Kind::skipped;
    return message->kind == Kind::end && kind == Kind::header ? Outcome::end : Outcome::failed;
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
