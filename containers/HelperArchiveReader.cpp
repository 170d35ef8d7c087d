#include "containers/HelperArchiveReader.h"

#include "base/Clock.h"
#include "containers/ContainerMessages.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace quillmere {

using archiveProtocol::Kind;
using archiveProtocol::Message;
using archiveProtocol::Parser;

namespace {

constexpr int pollMilliseconds = 20;
constexpr int pipeBytes = 1 << 20;
constexpr size_t incomingBytes = 1 << 18;
/// Where the helper finds the archive; the rest of the agreement is in archive-reader/main.cpp.
constexpr int archiveDescriptor = 3;

platform::ChildProcess start(const FileUrl& program, const ArchiveRequest& request, const FileDescriptor& output) {
    platform::ProcessSpec spec{.executable = program};
    spec.arguments = {request.raw == RawFormat::accepted ? "raw" : "plain",
                      request.only ? std::to_string(*request.only) : "all"};
    spec.environment = std::vector<std::string>{};
    spec.descriptors = {{.ours = output.get(), .theirs = STDOUT_FILENO},
                        {.ours = request.file.get(), .theirs = archiveDescriptor}};
    return platform::ChildProcess(spec);
}

} // namespace

HelperArchiveReader::HelperArchiveReader(const Helper& helper, ArchiveRequest request)
    : silence_(helper.silence), pulse_(std::move(request.pulse)) {
    try {
        auto pipe = platform::makePipe();
        // A larger pipe only saves turns; one that cannot grow works as well.
        ::fcntl(pipe.readEnd.get(), F_SETPIPE_SZ, pipeBytes);
        pipe_ = std::move(pipe.readEnd);
        process_ = start(helper.program, request, pipe.writeEnd);
    } catch (const std::system_error&) {
        throw ContainerError(messages::readerNotCreated);
    }
}

ArchiveReaderFactory HelperArchiveReader::factory(Helper helper) {
    return [helper = std::move(helper)](ArchiveRequest request) -> std::unique_ptr<ArchiveReader> {
        return std::make_unique<HelperArchiveReader>(helper, std::move(request));
    };
}

bool HelperArchiveReader::takeBytes() {
    const SteadyTime lost = steadyNow() + silence_;
    for (;;) {
        pollfd ready{.fd = pipe_.get(), .events = POLLIN, .revents = 0};
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
        received = ::read(pipe_.get(), incoming_.data(), incoming_.size());
    while (received < 0 && errno == EINTR);
    if (received <= 0)
        return false;
    parser_.add(std::string_view(incoming_).substr(0, static_cast<size_t>(received)));
    return true;
}

std::optional<Message> HelperArchiveReader::receive() {
    while (!over_) {
        Message message;
        const auto result = parser_.next(message);
        if (result == Parser::Result::message && message.kind != Kind::alive)
            return message;
        if (result == Parser::Result::malformed || (result == Parser::Result::incomplete && !takeBytes()))
            over_ = true;
    }
    process_.reset();
    return std::nullopt;
}

ArchiveReader::Outcome HelperArchiveReader::expect(Kind kind, EntryFacts* facts) {
    auto message = receive();
    if (!message)
        return Outcome::failed;
    if (message->kind == kind) {
        if (facts)
            *facts = std::move(message->facts);
        return Outcome::done;
    }
    over_ = true;
    if (message->kind == Kind::end && kind == Kind::header)
        return Outcome::end;
    if (message->kind == Kind::failure)
        errorText_ = std::move(message->text);
    return Outcome::failed;
}

ArchiveReader::Outcome HelperArchiveReader::next(EntryFacts& facts) {
    return expect(Kind::header, &facts);
}

ArchiveReader::Outcome HelperArchiveReader::skip() {
    return expect(Kind::skipped, nullptr);
}

std::optional<size_t> HelperArchiveReader::read(std::span<char> buffer) {
    if (entryComplete_)
        return 0;
    if (data_.empty()) {
        auto message = receive();
        if (!message)
            return std::nullopt;
        if (message->kind == Kind::dataEnd) {
            entryComplete_ = true;
            return 0;
        }
        if (message->kind != Kind::data) {
            over_ = true;
            errorText_ = std::move(message->text);
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
