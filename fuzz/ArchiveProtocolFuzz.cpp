// Whatever a reader says: nothing is read beyond what came, and what is understood can be said again.

#include "containers/ArchiveProtocol.h"
#include "fuzz/Require.h"

#include <algorithm>
#include <cstdint>

using namespace quillmere;
using namespace archiveProtocol;
using fuzz::require;

namespace {

std::string sayAgain(const Message& message) {
    std::string bytes;
    if (message.kind == Kind::header)
        appendHeader(bytes, message.facts);
    else if (message.kind == Kind::failure)
        appendFailure(bytes, message.text);
    else if (message.kind == Kind::data)
        appendData(bytes, message.data);
    else
        appendPlain(bytes, message.kind);
    return bytes;
}

void requireSame(const Message& first) {
    Parser parser;
    parser.add(sayAgain(first));
    Message again;
    require(parser.next(again) == Parser::Result::message && again.kind == first.kind);
    require(first.kind != Kind::header || again.facts == first.facts);
    require(first.kind != Kind::failure || again.text == first.text);
    require(again.data == first.data);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    // The first byte says in how large pieces the rest arrives.
    const size_t step = std::max<size_t>(data[0], 1);
    const std::string_view stream = fuzz::textOf(data + 1, size - 1);
    Parser parser;
    for (size_t at = 0; at < stream.size(); at += step) {
        parser.add(stream.substr(at, step));
        for (;;) {
            Message message;
            const auto result = parser.next(message);
            if (result == Parser::Result::malformed)
                return 0;
            if (result == Parser::Result::incomplete)
                break;
            requireSame(message);
        }
    }
    return 0;
}
