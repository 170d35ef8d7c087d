#include "prepare/ResultFormat.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillmere {

namespace {

/// Fewer bytes than asked for at the end of the file.
std::string bytesAt(const RegularFile& file, uint64_t offset, size_t count) {
    std::string bytes(count, '\0');
    size_t received = 0;
    while (received < count) {
        auto* rest = reinterpret_cast<std::byte*>(bytes.data()) + received;
        const size_t more = file.read(offset + received, rest, count - received);
        if (more == 0)
            break;
        received += more;
    }
    bytes.resize(received);
    return bytes;
}

/// The trailer stands at the end and leads to a cross-reference, which is a table or an object.
bool isWholePdf(const RegularFile& file) {
    constexpr size_t tailSize = 1024;
    constexpr auto mark = std::string_view("startxref");
    const uint64_t size = file.size();
    if (!bytesAt(file, 0, 5).starts_with("%PDF-"))
        return false;
    const std::string tail = bytesAt(file, size - std::min<uint64_t>(size, tailSize), tailSize);
    const size_t start = tail.rfind(mark);
    if (start == std::string::npos || tail.find("%%EOF", start) == std::string::npos)
        return false;
    const size_t digits = tail.find_first_of("0123456789", start + mark.size());
    uint64_t offset = 0;
    if (digits == std::string::npos ||
        std::from_chars(tail.data() + digits, tail.data() + tail.size(), offset).ec != std::errc() || offset >= size)
        return false;
    const std::string reference = bytesAt(file, offset, 64);
    return reference.starts_with("xref") ||
           (!reference.empty() && reference[0] >= '0' && reference[0] <= '9' && reference.find(" obj") < 32);
}

uint64_t bigEndian(std::string_view bytes) {
    uint64_t value = 0;
    for (const char byte : bytes)
        value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

/// Boxes fill the file from its first byte to its last, and what plays and how it plays is among them.
bool isWholeMpeg4(const RegularFile& file) {
    const uint64_t size = file.size();
    bool hasIndex = false;
    bool hasData = false;
    uint64_t offset = 0;
    while (offset < size) {
        const std::string header = bytesAt(file, offset, 16);
        if (header.size() < 8)
            return false;
        const std::string_view type = std::string_view(header).substr(4, 4);
        if (offset == 0 && type != "ftyp")
            return false;
        hasIndex |= type == "moov";
        hasData |= type == "mdat";
        uint64_t length = bigEndian(std::string_view(header).substr(0, 4));
        if (length == 1 && header.size() == 16)
            length = bigEndian(std::string_view(header).substr(8, 8));
        else if (length == 0)
            length = size - offset;
        if (length < 8 || length > size - offset)
            return false;
        offset += length;
    }
    return hasIndex && hasData;
}

} // namespace

const char* extensionOf(ResultFormat format) {
    switch (format) {
    case ResultFormat::png:
        return "png";
    case ResultFormat::pdf:
        return "pdf";
    case ResultFormat::mp4:
        return "mp4";
    case ResultFormat::m4a:
        break;
    }
    return "m4a";
}

bool isWhole(const RegularFile& file, ResultFormat format) {
    switch (format) {
    case ResultFormat::png:
        return true; // our own worker tells of writes that fail
    case ResultFormat::pdf:
        return isWholePdf(file);
    case ResultFormat::mp4:
    case ResultFormat::m4a:
        break;
    }
    return isWholeMpeg4(file);
}

} // namespace quillmere
