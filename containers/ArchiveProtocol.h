#pragma once

#include "containers/ArchiveReader.h"

#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

/// What the archive reader program says to the one who asked, over one pipe: frames of a length, a kind and a body, in
/// the machine's own byte order. Nothing that comes in is trusted: every length is bounded before it is used. The
/// program is told what to read by one message on a socket (SOCK_SEQPACKET), which carries the archive's descriptor
/// along.
namespace archiveProtocol {

enum class Kind : unsigned char {
    header = 1, ///< the facts of one entry
    skipped,    ///< the entry's data was passed over
    end,        ///< no more entries
    failure,    ///< a step failed, with the reader's words or none
    data,       ///< 1 to `maxData` bytes of the wanted entry
    dataEnd,    ///< the wanted entry is complete
    taken       ///< the request has come in and its reading begins; the first word
};

inline constexpr size_t maxName = 65'535;
inline constexpr size_t maxFormat = 255;
inline constexpr size_t maxText = 1'024;
inline constexpr size_t maxData = 65'536;

/// Writing: each adds one frame. Longer names, formats and texts are cut; a name that is cut is refused by its length
/// anyway.
void appendHeader(std::string& out, const EntryFacts& facts);
void appendFailure(std::string& out, const std::optional<std::string>& text);
void appendData(std::string& out, std::string_view bytes);
void appendPlain(std::string& out, Kind kind);

struct Message {
    Kind kind = Kind::taken;
    EntryFacts facts{};                ///< of a header
    std::optional<std::string> text{}; ///< of a failure
    std::string_view data{};           ///< of data; valid until the parser is used again
};

/// Sends everything of the request but its pulse; false when nobody takes it.
bool sendRequest(int socket, const ArchiveRequest& request);
/// Waits for the request; nothing when the other side has gone or said something else.
std::optional<ArchiveRequest> receiveRequest(int socket);

/// Takes the stream apart.
class Parser {
public:
    enum class Result { message, incomplete, malformed };

    void add(std::string_view bytes);
    /// Fills in what the message's kind has; the rest of `message` is as it was.
    Result next(Message& message);

private:
    std::string buffer_;
    size_t start_ = 0;
};

} // namespace archiveProtocol

} // namespace quillmere
