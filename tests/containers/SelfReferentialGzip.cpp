#include "tests/containers/SelfReferentialGzip.h"

#include <array>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <utility>
#include <zlib.h>

namespace quillmere::testing {

namespace {

using namespace std::string_literals;

// The file is made of instructions of five bytes each. One is a stored block, "say the next 20 bytes"; the other a
// compressed one, "say the last 20 bytes again". With P and S, of 15 bytes, for what stands around the data:
//
//     file      P  say(P say)  again   say(again say again say)  again                  say(again S)  again     S
//     unpacked     P say       P say   again say again say       again say again say    again S       again S
//
// Read from left to right, both lines are the same.

const std::string say("\x00\x14\x00\xeb\xff", 5);

class Bits {
public:
    void add(unsigned value, int count) { // the lowest first
        for (int i = 0; i < count; ++i)
            addBit(value >> i & 1U);
    }
    void addCode(unsigned code, int count) { // the highest first
        for (int i = count - 1; i >= 0; --i)
            addBit(code >> i & 1U);
    }
    std::string take() { return std::move(bytes_); }

private:
    void addBit(unsigned bit) {
        if (used_ % 8 == 0)
            bytes_ += '\0';
        bytes_.back() = static_cast<char>(static_cast<unsigned char>(bytes_.back()) | bit << (used_ % 8));
        ++used_;
    }

    std::string bytes_;
    int used_ = 0;
};

constexpr int endOfBlockBits = 7; // the code is zero

void beginFixedBlock(Bits& bits) {
    bits.add(0, 1);
    bits.add(1, 2);
}

/// Twice ten bytes from 20 bytes back, which fills 40 bits exactly.
std::string again() {
    Bits bits;
    beginFixedBlock(bits);
    for (int half = 0; half < 2; ++half) {
        bits.addCode(264 - 256, 7);
        bits.addCode(8, 5); // distances from 17
        bits.add(20 - 17, 3);
    }
    bits.addCode(0, endOfBlockBits);
    return bits.take();
}

std::string littleEndian(std::uint32_t value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(value >> shift & 0xff);
    return bytes;
}

/// Two empty blocks, so that the length is right, the last block, empty too, the checksum and the size.
std::string suffix(std::uint32_t checksum, std::uint32_t size) {
    Bits bits;
    for (int i = 0; i < 2; ++i) {
        beginFixedBlock(bits);
        bits.addCode(0, endOfBlockBits);
    }
    bits.add(1, 3);
    return bits.take() + "\x00\x00\xff\xff"s + littleEndian(checksum) + littleEndian(size);
}

std::string fileWith(char letter, std::uint32_t checksum) {
    constexpr std::uint32_t size = 120;
    const std::string p = "\x1f\x8b\x08\x08\x00\x00\x00\x00\x00\x03"s + "loo" + letter + '\0';
    const std::string s = suffix(checksum, size);
    const std::string pair = again() + say;
    return p + say + p + say + pair + pair + pair + pair + again() + s + again() + s;
}

std::uint32_t checksumOf(const std::string& bytes) {
    return static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), 120));
}

/// The checksum that a file which holds it has. Each of its bits changes the file's checksum by the same bits whatever
/// the others are, so that this is a system of 32 equations. Some have no solution.
std::optional<std::uint32_t> ownChecksum(char letter) {
    const std::uint32_t constant = checksumOf(fileWith(letter, 0));
    // A row says: these bits of the solution, added up, give this bit.
    std::array<std::uint64_t, 32> rows{};
    for (unsigned bit = 0; bit < 32; ++bit) {
        const std::uint32_t change = checksumOf(fileWith(letter, 1U << bit)) ^ constant ^ 1U << bit;
        for (unsigned row = 0; row < 32; ++row)
            rows[row] |= std::uint64_t{change >> row & 1U} << bit;
    }
    for (unsigned row = 0; row < 32; ++row)
        rows[row] |= std::uint64_t{constant >> row & 1U} << 32;
    for (unsigned column = 0; column < 32; ++column) {
        unsigned pivot = column;
        while (pivot < 32 && (rows[pivot] >> column & 1U) == 0)
            ++pivot;
        if (pivot == 32)
            return std::nullopt;
        std::swap(rows[pivot], rows[column]);
        for (unsigned row = 0; row < 32; ++row)
            if (row != column && (rows[row] >> column & 1U) != 0)
                rows[row] ^= rows[column];
    }
    std::uint32_t checksum = 0;
    for (unsigned bit = 0; bit < 32; ++bit)
        checksum |= static_cast<std::uint32_t>(rows[bit] >> 32 & 1U) << bit;
    return checksum;
}

} // namespace

std::string selfReferentialGzip() {
    for (char letter = 'a'; letter <= 'z'; ++letter)
        if (const auto checksum = ownChecksum(letter))
            return fileWith(letter, *checksum);
    throw std::runtime_error("no file holds its own checksum");
}

} // namespace quillmere::testing
