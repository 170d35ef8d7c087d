#include "tests/shell/DelegateFixture.h"

namespace quillmere {
namespace {

class ContainerOperationsTest : public ReadyDelegateTest {
protected:
    ContainerOperationsTest() {
        folder("things/inner");
        write("things/note.txt", "12345");
        write("things/inner/deep.txt");
    }

    /// Opens the folder and returns its listing message.
    JsonObject browse() {
        page().drop({at("things")});
        return await("open");
    }

    static std::string token(const JsonObject& message) { return *stringField(message, "containerToken"); }

    static std::string idOf(const JsonObject& listing, const std::string& name) {
        for (const auto& entry : listing.at("container").at("entries").as_array())
            if (stringField(entry.as_object(), "name") == name)
                return *stringField(entry.as_object(), "id");
        return {};
    }

    void openEntry(const JsonObject& listing, const std::string& name) {
        post({{"type", "container-open"}, {"token", token(listing)}, {"id", idOf(listing, name)}});
    }
};

TEST_F(ContainerOperationsTest, AFolderIsListed) {
    const auto listing = browse();
    EXPECT_EQ(received("busy").at(0), (JsonObject{{"type", "busy"}, {"name", "things"}, {"requestId", 1}}));
    EXPECT_THAT(listing, HasText("kind", "container"));
    EXPECT_THAT(listing, HasText("name", "things"));
    EXPECT_EQ(stringField(listing.at("container").as_object(), "token"), token(listing));
    EXPECT_EQ(window().title, "things — Quillmere");
    EXPECT_EQ(window().representedFile, at("things"));
}

TEST_F(ContainerOperationsTest, OldPreviewsGoBehindTheFirstListing) {
    const std::string old = "home/.cache/Quillmere/ContainerPreviews/0E1F5C9A-4B7D-4C55-9A6D-2F6B1C3D4E5F";
    write(old + "/entry/a.txt");
    std::filesystem::last_write_time(at(old).filesystemPath(),
                                     std::filesystem::file_time_type::clock::now() - std::chrono::days(20));
    browse();
    settle();
    EXPECT_FALSE(std::filesystem::exists(at(old).filesystemPath()));
}

TEST_F(ContainerOperationsTest, DocumentsKeepTheirContainer) {
    const auto listing = browse();
    openEntry(listing, "note.txt");
    const auto open = await("open", 2);
    EXPECT_THAT(open, HasText("name", "note.txt"));
    EXPECT_EQ(token(open), token(listing));
    EXPECT_EQ(token(received("busy").back()), token(listing));
    EXPECT_EQ(window().title, "note.txt — Quillmere");
    EXPECT_EQ(window().representedFile, at("things/note.txt"));

    desktop_.toolkit.canPreviewFiles = true;
    write("things/old.doc");
    post({{"type", "container-refresh"}, {"token", token(listing)}});
    openEntry(await("open", 3), "old.doc");
    EXPECT_EQ(token(await("native-preview")), token(listing));
    EXPECT_EQ(std::get<view::Fill>(window().content->find("preview")->placement).insets.top, 84);
    post({{"type", "container-refresh"}, {"token", token(listing)}});
    EXPECT_FALSE(window().content->find("preview"));
}

TEST_F(ContainerOperationsTest, OnlyTheCurrentTokenCounts) {
    post({{"type", "container-up"}, {"token", "none yet"}});
    const auto listing = browse();
    for (const auto* type : {"container-open", "container-up", "container-refresh"}) {
        post({{"type", type}, {"token", "another"}, {"id", "1"}});
        post({{"type", type}, {"token", 1}});
        post({{"type", type}});
    }
    settle();
    EXPECT_EQ(received("busy").size(), 1U);

    post({{"type", "container-open"}, {"token", token(listing)}, {"id", 5}});
    const auto error = await("error");
    EXPECT_THAT(error, HasText("message", "Select an item to open."));
    EXPECT_THAT(error, HasText("name", "things"));
    EXPECT_EQ(token(error), token(listing));
}

TEST_F(ContainerOperationsTest, ANewerRequestOvertakes) {
    const auto listing = browse();
    openEntry(listing, "note.txt");
    openEntry(listing, "inner");
    settle();
    ASSERT_EQ(received("open").size(), 2U);
    EXPECT_NE(idOf(received("open").back(), "deep.txt"), "");

    page().drop({at("things")});
    page().drop({write("outside.txt")});
    settle();
    ASSERT_EQ(received("open").size(), 3U);
    EXPECT_THAT(received("open").back(), HasText("name", "outside.txt"));
    EXPECT_FALSE(received("open").back().contains("containerToken"));
    EXPECT_EQ(received("error").size(), 0U) << "overtaken work says nothing";
}

TEST_F(ContainerOperationsTest, AFolderThatVanishesIsAnErrorWithItsToken) {
    const auto listing = browse();
    std::filesystem::remove_all(at("things").filesystemPath());
    post({{"type", "container-refresh"}, {"token", token(listing)}});
    const auto error = await("error");
    EXPECT_THAT(error, HasText("name", "things"));
    EXPECT_EQ(token(error), token(listing));
    EXPECT_FALSE(stringField(error, "message")->empty());
}

TEST_F(ContainerOperationsTest, WorkForADelegateThatIsGoneIsDropped) {
    page().drop({at("things")});
    delegate_.reset();
    settle();
}

} // namespace
} // namespace quillmere
