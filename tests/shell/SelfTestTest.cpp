#include "shell/SelfTest.h"
#include "platform/headless/HeadlessServices.h"
#include "tests/support/Sandbox.h"

namespace quillmere {
namespace {

class SelfTestTest : public Sandbox {
protected:
    platform::HeadlessBundle bundle_{root().appending("Quillmere.app")};
    platform::HeadlessImageCodec images_;
};

TEST_F(SelfTestTest, TheBundlesIconsDecide) {
    write("Quillmere.app/Contents/Resources/good.png", "picture");
    write("Quillmere.app/Contents/Resources/bad.png", "broken");
    const std::string missing = "Error Domain=Quillmere.SelfTest Code=1 \"Bundle resources are missing.\"\n";
    const std::string undecodable =
        "Error Domain=Quillmere.SelfTest Code=2 \"A document icon could not be decoded.\"\n";
    const JsonObject good{{"CFBundleTypeIconFile", "good.png"}};
    struct Row {
        const char* what;
        std::optional<JsonObject> properties;
        std::string error;
    };
    const Row rows[] = {
        {"two good icons", JsonObject{{"CFBundleDocumentTypes", json::array{good, good}}}, ""},
        {"no document types", JsonObject{{"CFBundleDocumentTypes", json::array{}}}, ""},
        {"no property list", std::nullopt, missing},
        {"an empty property list", JsonObject{}, missing},
        {"no list of types", JsonObject{{"Other", 1}}, missing},
        {"types that are no list", JsonObject{{"CFBundleDocumentTypes", "x"}}, missing},
        {"a type that is no dictionary", JsonObject{{"CFBundleDocumentTypes", json::array{good, 1}}}, missing},
        {"a type without an icon", JsonObject{{"CFBundleDocumentTypes", json::array{good, JsonObject{}}}}, undecodable},
        {"an icon that is no text",
         JsonObject{{"CFBundleDocumentTypes", json::array{JsonObject{{"CFBundleTypeIconFile", 1}}}}}, undecodable},
        {"an icon that is missing",
         JsonObject{{"CFBundleDocumentTypes", json::array{JsonObject{{"CFBundleTypeIconFile", "none.png"}}}}},
         undecodable},
        {"an icon that is no picture",
         JsonObject{{"CFBundleDocumentTypes", json::array{JsonObject{{"CFBundleTypeIconFile", "bad.png"}}}}},
         undecodable},
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
