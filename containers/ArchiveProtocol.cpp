#include "containers/ArchiveProtocol.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>

namespace quillmere::archiveProtocol {

namespace {

constexpr size_t prefixBytes = sizeof(uint32_t) + 1;

constexpr unsigned hasName = 1;
constexpr unsigned hasSize = 2;
constexpr unsigned isEncrypted = 4;
constexpr unsigned isSymbolicLink = 8;
constexpr unsigned isHardLink = 16;
constexpr unsigned allFlags = 31;

template <typename Number>
void put(std::string& out, Number number) {
    char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    out.append(bytes, sizeof number);
}

void begin(std::string& out, Kind kind, size_t bodyBytes) {
    put(out, static_cast<uint32_t>(bodyBytes));
    put(out, static_cast<uint8_t>(kind));
}

/// Cut to at most `limit` bytes, not inside a UTF-8 sequence.
std::string_view cut(std::string_view text, size_t limit) {
    if (text.size() <= limit)
        return text;
    while (limit > 0 && (static_cast<unsigned char>(text[limit]) & 0xC0U) == 0x80)
        --limit;
    return text.substr(0, limit);
}

/// Reads a frame's body; a body that ends too early stays `good() == false`.
class Body {
public:
    explicit Body(std::string_view bytes) : rest_(bytes) {}

    template <typename Number>
    Number take() {
        Number number{};
        if (const std::string_view bytes = take(sizeof number); bytes.size() == sizeof number)
            std::memcpy(&number, bytes.data(), bytes.size());
        return number;
    }
    std::string_view take(size_t count) {
        good_ = good_ && count <= rest_.size();
        if (!good_)
            return {};
        const std::string_view taken = rest_.substr(0, count);
        rest_.remove_prefix(count);
        return taken;
    }
    std::string_view rest() { return take(rest_.size()); }
    bool good() const { return good_; }

private:
    std::string_view rest_;
    bool good_ = true;
};

/// Takes over a text, into the room that is there already.
void assign(std::optional<std::string>& text, std::string_view value) {
    if (!text)
        text.emplace();
    text->assign(value);
}

bool readHeader(std::string_view bytes, EntryFacts& facts) {
    Body body(bytes);
    const unsigned flags = body.take<uint8_t>();
    facts.type = body.take<uint32_t>();
    const auto size = body.take<int64_t>();
    facts.modified = body.take<int64_t>();
    facts.format = body.take(body.take<uint8_t>());
    const std::string_view name = body.rest();
    if (!body.good() || (flags & ~allFlags) != 0 || (!(flags & hasName) && !name.empty()))
        return false;
    if (flags & hasName)
        assign(facts.name, name);
    else
        facts.name.reset();
    facts.size = flags & hasSize ? std::optional<int64_t>(size) : std::nullopt;
    facts.encrypted = (flags & isEncrypted) != 0;
    facts.symbolicLink = (flags & isSymbolicLink) != 0;
    facts.hardLink = (flags & isHardLink) != 0;
    return true;
}

bool readFailure(std::string_view bytes, std::optional<std::string>& text) {
    Body body(bytes);
    const auto present = body.take<uint8_t>();
    const std::string_view words = body.rest();
    if (!body.good() || present > 1 || (present == 0 && !words.empty()))
        return false;
    text = present ? std::optional<std::string>(words) : std::nullopt;
    return true;
}

/// The request without its descriptor.
struct RequestBody {
    int64_t only = 0; ///< 0 stands for all entries
    int64_t raw = 0;
};

/// Room for the message and its one descriptor.
struct RequestMessage {
    RequestBody body{};
    iovec part{.iov_base = &body, .iov_len = sizeof body};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr head{};

    RequestMessage() {
        head.msg_iov = &part;
        head.msg_iovlen = 1;
        head.msg_control = control;
        head.msg_controllen = sizeof control;
    }
    RequestMessage(const RequestMessage&) = delete;
    RequestMessage& operator=(const RequestMessage&) = delete;
};

constexpr size_t headerFixedBytes = 1 + sizeof(uint32_t) + 2 * sizeof(int64_t) + 1;

/// The largest body of a kind; nothing for a kind that does not exist.
std::optional<size_t> bodyLimit(uint8_t kind) {
    switch (static_cast<Kind>(kind)) {
    case Kind::header:
        return headerFixedBytes + maxFormat + maxName;
    case Kind::failure:
        return 1 + maxText;
    case Kind::data:
        return maxData;
    case Kind::skipped:
    case Kind::end:
    case Kind::dataEnd:
    case Kind::taken:
        return 0;
    }
    return std::nullopt;
}

} // namespace

void appendHeader(std::string& out, const EntryFacts& facts) {
    const std::string_view name = facts.name ? cut(*facts.name, maxName) : std::string_view();
    const std::string_view format = cut(facts.format, maxFormat);
    begin(out, Kind::header, headerFixedBytes + format.size() + name.size());
    unsigned flags = 0;
    flags |= facts.name ? hasName : 0U;
    flags |= facts.size ? hasSize : 0U;
    flags |= facts.encrypted ? isEncrypted : 0U;
    flags |= facts.symbolicLink ? isSymbolicLink : 0U;
    flags |= facts.hardLink ? isHardLink : 0U;
    put(out, static_cast<uint8_t>(flags));
    put(out, facts.type);
    put(out, facts.size.value_or(0));
    put(out, facts.modified);
    put(out, static_cast<uint8_t>(format.size()));
    out += format;
    out += name;
}

void appendFailure(std::string& out, const std::optional<std::string>& text) {
    const std::string_view words = text ? cut(*text, maxText) : std::string_view();
    begin(out, Kind::failure, 1 + words.size());
    put(out, static_cast<uint8_t>(text ? 1 : 0));
    out += words;
}

void appendData(std::string& out, std::string_view bytes) {
    begin(out, Kind::data, bytes.size());
    out += bytes;
}

void appendPlain(std::string& out, Kind kind) {
    begin(out, kind, 0);
}

bool sendRequest(int socket, const ArchiveRequest& request) {
    RequestMessage message;
    message.body = {.only = request.only.value_or(0), .raw = request.raw == RawFormat::accepted ? 1 : 0};
    cmsghdr* passing = CMSG_FIRSTHDR(&message.head);
    passing->cmsg_level = SOL_SOCKET;
    passing->cmsg_type = SCM_RIGHTS;
    passing->cmsg_len = CMSG_LEN(sizeof(int));
    const int file = request.file.get();
    std::memcpy(CMSG_DATA(passing), &file, sizeof file);
    ssize_t sent = 0;
    do
        sent = ::sendmsg(socket, &message.head, MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    return sent == sizeof message.body;
}

std::optional<ArchiveRequest> receiveRequest(int socket) {
    RequestMessage message;
    ssize_t received = 0;
    do
        received = ::recvmsg(socket, &message.head, MSG_CMSG_CLOEXEC);
    while (received < 0 && errno == EINTR);
    const cmsghdr* passed = received > 0 ? CMSG_FIRSTHDR(&message.head) : nullptr;
    if (!passed || passed->cmsg_level != SOL_SOCKET || passed->cmsg_type != SCM_RIGHTS ||
        passed->cmsg_len != CMSG_LEN(sizeof(int)))
        return std::nullopt;
    int file = -1;
    std::memcpy(&file, CMSG_DATA(passed), sizeof file);
    ArchiveRequest request{.file = FileDescriptor(file)};
    if (received != sizeof message.body || message.body.only < 0)
        return std::nullopt;
    request.raw = message.body.raw != 0 ? RawFormat::accepted : RawFormat::refused;
    if (message.body.only > 0)
        request.only = message.body.only;
    return request;
}

void Parser::add(std::string_view bytes) {
    buffer_.erase(0, start_);
    start_ = 0;
    buffer_ += bytes;
}

Parser::Result Parser::next(Message& message) {
    const std::string_view waiting = std::string_view(buffer_).substr(start_);
    if (waiting.size() < prefixBytes)
        return Result::incomplete;
    Body prefix(waiting.substr(0, prefixBytes));
    const size_t length = prefix.take<uint32_t>();
    const auto kind = prefix.take<uint8_t>();
    const auto limit = bodyLimit(kind);
    if (!limit || length > *limit)
        return Result::malformed;
    if (waiting.size() - prefixBytes < length)
        return Result::incomplete;

    const std::string_view body = waiting.substr(prefixBytes, length);
    start_ += prefixBytes + length;
    message.kind = static_cast<Kind>(kind);
    bool good = true;
    if (message.kind == Kind::header) {
        good = readHeader(body, message.facts);
    } else if (message.kind == Kind::failure) {
        good = readFailure(body, message.text);
    } else if (message.kind == Kind::data) {
        good = !body.empty();
        message.data = body;
    }
    return good ? Result::message : Result::malformed;
}

} // namespace quillmere::archiveProtocol
