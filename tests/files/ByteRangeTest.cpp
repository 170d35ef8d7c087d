#include "files/ByteRange.h"

#include "base/Errors.h"

#include <gtest/gtest.h>
#include <string>

namespace quillmere {
namespace {

constexpr const char* invalid = "Invalid byte range.";
constexpr const char* unsatisfiable = "Unsatisfiable byte range.";

TEST(ByteRange, FollowsTheTable) {
    struct Row {
        std::optional<std::string> header;
        uint64_t size;
        std::optional<ByteRange> range;
        const char* message = nullptr;
    };
    constexpr uint64_t huge = UINT64_MAX;
    const Row rows[] = {
        {std::nullopt, 100, ByteRange{0, 100, false}},
        {std::nullopt, 0, ByteRange{0, 0, false}},
        {"bytes=10-19", 100, ByteRange{10, 10, true}},
        {"bytes=-8", 100, ByteRange{92, 8, true}},
        {"bytes=90-", 100, ByteRange{90, 10, true}},
        {"bytes=0-", 100, ByteRange{0, 100, true}},
        {"bytes=50-1000", 100, ByteRange{50, 50, true}},
        {"bytes=-500", 100, ByteRange{0, 100, true}},
        {"bytes=+5-+9", 100, ByteRange{5, 5, true}},
        {"bytes=99-99", 100, ByteRange{99, 1, true}},
        {"bytes=0-0", 1, ByteRange{0, 1, true}},
        {"bytes=0-18446744073709551615", huge, ByteRange{0, huge, true}},
        {"bytes=-18446744073709551615", 100, ByteRange{0, 100, true}},
        {"bytes=0000000000000000000000010-19", 100, ByteRange{10, 10, true}},
        {"bytes=100-", 100, std::nullopt, unsatisfiable},
        {"bytes=abc-5", 100, std::nullopt, unsatisfiable},
        {"bytes= 10-19", 100, std::nullopt, unsatisfiable},
        {"bytes=+-5", 100, std::nullopt, unsatisfiable},
        {"bytes=++1-5", 100, std::nullopt, unsatisfiable},
        {"bytes=18446744073709551616-", 100, std::nullopt, unsatisfiable},
        {"bytes=0x1-5", 100, std::nullopt, unsatisfiable},
        {"bytes=0-0", 0, std::nullopt, invalid},
        {"bytes=2-1", 100, std::nullopt, invalid},
        {"bytes=-0", 100, std::nullopt, invalid},
        {"bytes=-", 100, std::nullopt, invalid},
        {"bytes=-+", 100, std::nullopt, invalid},
        {"bytes=", 100, std::nullopt, invalid},
        {"bytes=5", 100, std::nullopt, invalid},
        {"bytes=1-2-3", 100, std::nullopt, invalid},
        {"bytes=--1", 100, std::nullopt, invalid},
        {"bytes=5-x", 100, std::nullopt, invalid},
        {"bytes=10-19 ", 100, std::nullopt, invalid},
        {"bytes=0-18446744073709551616", 100, std::nullopt, invalid},
        {"bytes=0-1,3-4", 100, std::nullopt, invalid},
        {"bytes=200-,", 100, std::nullopt, invalid},
        {"Bytes=0-1", 100, std::nullopt, invalid},
        {" bytes=0-1", 100, std::nullopt, invalid},
        {"nope", 100, std::nullopt, invalid},
        {"", 100, std::nullopt, invalid},
        {std::string("bytes=1\0-5", 10), 100, std::nullopt, unsatisfiable},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.header.value_or("(none)") + " of " + std::to_string(row.size));
        try {
            const ByteRange range = byteRange(row.header, row.size);
            ASSERT_TRUE(row.range) << "accepted";
            EXPECT_EQ(range, *row.range);
        } catch (const FileFailure& failure) {
            EXPECT_FALSE(row.range) << "refused";
            EXPECT_STREQ(failure.what(), row.message);
        }
    }
}

} // namespace
} // namespace quillmere
