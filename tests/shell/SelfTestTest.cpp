#include "shell/SelfTest.h"
#include "platform/headless/HeadlessServices.h"
#include "tests/support/Sandbox.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

class SelfTestTest : public testing::Test, protected tests::Sandbox {
protected:
    platform::HeadlessBundle bundle_{at("Quillmere.app")};
    platform::HeadlessImageCodec images_;
};

TEST_F(SelfTestTest, TheBundlesIconsDecide) {
    write("Quillmere.app/Contents/Resources/good.png", "picture");
    write("Quillmere.app/Contents/Resources/bad.png", "broken");
    const std::string missing = "Error Domain=Quillmere.SelfTest Code=1 \"Bundle resources are missing.\"\n";
    const std::string undecodable =
        "Error Domain=Quillmere.SelfTest Code=2 \"A document icon could not be decoded.\"\n";
    const JsonObject good{{"CFBundleTypeIconFile", "good.png"}};
    const auto icon = [](json::value name) { return JsonObject{{"CFBundleTypeIconFile", std::move(name)}}; };
    const auto types = [](json::value list) { return JsonObject{{"CFBundleDocumentTypes", std::move(list)}}; };
    struct Row {
        const char* what;
        std::optional<JsonObject> properties;
        std::string error;
    };
    const Row rows[] = {
        {"two good icons", types(json::array{good, good}), ""},
        {"no document types", types(json::array{}), ""},
        {"no property list", std::nullopt, missing},
        {"no list of types", JsonObject{{"Other", 1}}, missing},
        {"types that are no list", types("x"), missing},
        {"a type that is no dictionary", types(json::array{good, 1}), missing},
        {"a type without an icon", types(json::array{good, JsonObject{}}), undecodable},
        {"an icon that is no text", types(json::array{icon(1)}), undecodable},
        {"an icon that is missing", types(json::array{icon("none.png")}), undecodable},
        {"an icon that is no picture", types(json::array{icon("bad.png")}), undecodable},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        bundle_.properties = row.properties;
        const auto report = runSelfTest(bundle_, images_);
        EXPECT_EQ(report.error, row.error);
        EXPECT_EQ(report.status, row.error.empty() ? 0 : 1);
        EXPECT_EQ(report.output,
                  row.error.empty()
                      ? "Quillmere macOS byte-range, registration-path and document-icon self-tests passed\n"
                      : "");
    }
}

} // namespace
} // namespace quillmere
