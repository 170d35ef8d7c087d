#include "bridge/InboundMessage.h"
#include "bridge/OutboundMessage.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

const std::optional<std::string> page = "quillmere://app/index.html";

TEST(InboundMessage, OnlyTheOwnMainFrameIsHeard) {
    const json::value ready = JsonObject{{"type", "ready"}};
    struct Row {
        const char* what;
        platform::ScriptMessage message;
        bool accepted;
    };
    const Row rows[] = {
        {"the page", {ready, true, page}, true},
        {"a subframe", {ready, false, page}, false},
        {"a frame without address", {ready, true, std::nullopt}, false},
        {"a page from elsewhere", {ready, true, "quillmere://evil/index.html"}, false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(acceptMessage(row.message).has_value(), row.accepted) << row.what;
}

TEST(InboundMessage, OtherShapesAndTypesAreIgnored) {
    json::value deep = JsonObject{{"type", "ready"}};
    for (int depth = 0; depth < 2'000; ++depth)
        deep = json::array{std::move(deep)};
    const std::pair<const char*, json::value> ignored[] = {
        {"text", "ready"},
        {"an array", json::array{"ready"}},
        {"null", nullptr},
        {"no type", JsonObject{{"Type", "ready"}}},
        {"a numeric type", JsonObject{{"type", 1}}},
        {"a listed type", JsonObject{{"type", json::array{"ready"}}}},
        {"an unknown type", JsonObject{{"type", "format-disk"}}},
        {"another case", JsonObject{{"type", "Ready"}}},
        {"a blank more", JsonObject{{"type", "ready "}}},
        {"a huge type", JsonObject{{"type", std::string(5'000'000, 'r')}}},
        {"deep nesting", deep},
    };
    for (const auto& [what, body] : ignored)
        EXPECT_FALSE(acceptMessage({body, true, page})) << what;
}

TEST(InboundMessage, ASampleIsAFileNameOnly) {
    const std::pair<std::string, std::optional<std::string>> rows[] = {
        {"a.pdf", "a.pdf"},
        {"../../x.pdf", "x.pdf"},
        {"/etc/passwd", "passwd"},
        {"dir/x.pdf//", "x.pdf"},
        {"..", std::nullopt},
        {"a/..", std::nullopt},
        {".", std::nullopt},
        {"", std::nullopt},
        {"///", std::nullopt},
        {"..x", "..x"},
        {std::string("a\0b", 3), std::nullopt},
    };
    for (const auto& [name, file] : rows)
        EXPECT_EQ(sampleFileName(name), file) << name;
}

TEST(OutboundMessage, FourTypesCarryTheContainer) {
    for (const auto* type :
         {"busy", "open", "error", "native-preview", "init", "clipboard-result", "state", "active"}) {
        JsonObject message{{"type", type}, {"containerToken", "old"}};
        addContainerToken(message, "T");
        const bool carries = std::string_view("busy open error native-preview").find(type) != std::string_view::npos;
        EXPECT_EQ(stringField(message, "containerToken"), carries ? "T" : "old") << type;
    }
    JsonObject busy{{"type", "busy"}};
    addContainerToken(busy, std::nullopt);
    EXPECT_FALSE(busy.contains("containerToken"));
}

} // namespace
} // namespace quillmere
