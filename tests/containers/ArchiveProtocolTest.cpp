#include "containers/ArchiveProtocol.h"

#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace quillmere::testing {
namespace {

using namespace archiveProtocol;

std::string frame(uint32_t length, unsigned char kind, const std::string& body) {
    std::string bytes(reinterpret_cast<const char*>(&length), sizeof length);
    return bytes + static_cast<char>(kind) + body;
}

TEST(ArchiveProtocol, WhatIsSentArrivesHoweverItIsCut) {
    const EntryFacts facts{.name = "a/b",
                           .format = "ustar",
                           .type = S_IFREG,
                           .size = 5,
                           .modified = -7,
                           .encrypted = true,
                           .hardLink = true};
    std::string stream;
    appendHeader(stream, facts);
    appendHeader(stream, EntryFacts{});
    appendPlain(stream, Kind::skipped);
    appendData(stream, std::string(maxData, 'd'));
    appendFailure(stream, "words");
    appendFailure(stream, std::nullopt);
    for (const size_t step : {size_t{1}, size_t{7}, stream.size()}) {
        Parser parser;
        std::vector<Message> messages;
        size_t dataBytes = 0;
        for (size_t at = 0; at < stream.size(); at += step) {
            parser.add(std::string_view(stream).substr(at, step));
            Message message;
            while (parser.next(message) == Parser::Result::message) {
                dataBytes += message.data.size();
                message.data = {};
                messages.push_back(message);
                message = {};
            }
        }
        ASSERT_EQ(messages.size(), 6U);
        EXPECT_EQ(messages[0].facts, facts);
        EXPECT_EQ(messages[1].facts, EntryFacts{});
        EXPECT_EQ(messages[2].kind, Kind::skipped);
        EXPECT_EQ(dataBytes, maxData);
        EXPECT_EQ(messages[4].text, "words");
        EXPECT_EQ(messages[5].text, std::nullopt);
    }
}

TEST(ArchiveProtocol, LongNamesAreCutBetweenCharacters) {
    std::string stream;
    EntryFacts facts;
    facts.name = std::string(maxName - 1, 'n') + "\xC3\xA4";
    appendHeader(stream, facts);
    Parser parser;
    parser.add(stream);
    Message message;
    ASSERT_EQ(parser.next(message), Parser::Result::message);
    EXPECT_EQ(message.facts.name->size(), maxName - 1);
}

TEST(ArchiveProtocol, LiesAreNoticed) {
    std::string header;
    EntryFacts facts;
    facts.name = "n";
    facts.format = "f";
    appendHeader(header, facts);
    std::string badFlags = header;
    badFlags[5] = '\x7f';
    std::string formatTooLong = header;
    formatTooLong[5 + 21] = '\x70';
    const std::pair<const char*, std::string> cases[] = {
        {"unknown kind", frame(0, 99, "")},
        {"kind zero", frame(0, 0, "")},
        {"length beyond all bounds", frame(0xFFFFFFFF, 5, "")},
        {"data beyond a block", frame(maxData + 1, 5, "")},
        {"empty data", frame(0, 5, "")},
        {"end with a body", frame(1, 3, "x")},
        {"header without a body", frame(0, 1, "")},
        {"header too short", frame(10, 1, "0123456789")},
        {"unknown flags", badFlags},
        {"format beyond the frame", formatTooLong},
        {"failure without a body", frame(0, 4, "")},
        {"failure with words it has not", frame(2, 4, std::string("\0x", 2))},
    };
    for (const auto& [label, bytes] : cases) {
        Parser parser;
        parser.add(bytes);
        Message message;
        EXPECT_EQ(parser.next(message), Parser::Result::malformed) << label;
    }
}

} // namespace
} // namespace quillmere::testing
