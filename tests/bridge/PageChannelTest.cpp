#include "tests/bridge/Messages.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

TEST(PageChannel, DropsWhatComesBeforeThePage) {
    tests::Page page;
    PageChannel channel(page);
    channel.sendBusy(1, "early");
    channel.applyPlatformPreferences({{"bgColor", "#000000"}});
    EXPECT_TRUE(page.scripts.empty());

    channel.setReady(true);
    channel.setContainerToken("T");
    channel.sendError(2, std::nullopt, "No.");
    channel.sendError(3, "a.txt", "No.");
    channel.applyPlatformPreferences({{"bgColor", "#000000"}});
    ASSERT_EQ(page.scripts.size(), 3U);
    EXPECT_EQ(page.messages()[0],
              (JsonObject{{"type", "error"}, {"message", "No."}, {"requestId", 2}, {"containerToken", "T"}}));
    EXPECT_EQ(stringField(page.messages()[1], "name"), "a.txt");
    EXPECT_EQ(page.scripts[2], R"(window.Quillmere?.applyPlatformPreferences({"bgColor":"#000000"});)");
}

TEST(PageChannel, CarriesAListingThatWasWrittenBeforehand) {
    tests::Page page;
    PageChannel channel(page);
    channel.setReady(true);
    const auto listing = writeListing({{"token", "T"}, {"entries", json::array{1, 2}}});
    channel.send({{"type", "open"}, {"kind", "container"}}, &listing);
    EXPECT_EQ(page.last("open").at("container"), (json::value{{"token", "T"}, {"entries", json::array{1, 2}}}));

    const WrittenListing unwritable;
    channel.send({{"type", "open"}}, &unwritable);
    EXPECT_EQ(page.scripts.size(), 1U) << "what cannot be written is dropped";
}

} // namespace
} // namespace quillmere
