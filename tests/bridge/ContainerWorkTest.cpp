#include "bridge/ContainerWork.h"
#include "helpers/archive-reader/LibarchiveReader.h"
#include "platform/headless/HeadlessPlatform.h"
#include "tests/bridge/Messages.h"
#include "tests/support/Sandbox.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

class ContainerWorkTest : public testing::Test, protected tests::Sandbox, protected ContainerWork::Host {
protected:
    ContainerWorkTest() { channel_.setReady(true); }
    ~ContainerWorkTest() override {
        work_.reset();
        desktop_.executors.main().end();
    }

    void willBrowse() override {}
    void openDocument(OpenRequest request) override { opened.push_back(std::move(request)); }
    void didShowListing(const std::string& name, const std::optional<FileUrl>&) override { shownName = name; }
    std::optional<std::string> currentDisplayName() const override { return shownName; }

    void settle() {
        EXPECT_TRUE(desktop_.executors.main().runUntil([&] { return desktop_.executors.isIdle(); }));
        desktop_.executors.main().runPending();
    }
    std::string onlyId() const {
        return *stringField(page_.last("open").at("container").at("entries").at(0).as_object(), "id");
    }

    platform::HeadlessPlatform desktop_{root()};
    tests::Page page_;
    PageChannel channel_{page_};
    Requests requests_;
    std::shared_ptr<ContainerWork> work_ = std::make_shared<ContainerWork>(
        static_cast<ContainerWork::Host&>(*this),
        ContainerWork::Services{
            .channel = channel_, .requests = requests_, .executors = desktop_.executors, .makeBrowser = [this] {
                return std::make_shared<ContainerBrowser>(
                    at("cache"), ContainerBrowser::Options{.readers = LibarchiveReader::factory()});
            }});
    std::vector<OpenRequest> opened;
    std::optional<std::string> shownName;
};

TEST_F(ContainerWorkTest, ListsAndHandsOverWhatWasChosenWithItsIdentity) {
    write("things/note.txt");
    work_->browse({.file = at("things")});
    EXPECT_FALSE(work_->shown()) << "nothing is listed yet";
    settle();
    EXPECT_EQ(shownName, "things");
    const auto token = channel_.containerToken();
    ASSERT_TRUE(token);
    EXPECT_EQ(work_->shown()->token, *token);

    work_->containerAction(inbound::ContainerOpen{.token = token, .id = onlyId()});
    settle();
    ASSERT_EQ(opened.size(), 1U);
    EXPECT_EQ(opened[0].file, at("things/note.txt"));
    EXPECT_EQ(opened[0].containerToken, token);
    EXPECT_TRUE(opened[0].identity);
    work_->leaveListing(true);
    EXPECT_FALSE(work_->shown());
}

TEST_F(ContainerWorkTest, OldTokensAndOvertakenWorkSayNothing) {
    folder("things");
    work_->browse({.file = at("things")});
    settle();
    const size_t said = page_.messages().size();
    work_->containerAction(inbound::ContainerUp{.token = "another"});
    work_->containerAction(inbound::ContainerRefresh{});
    EXPECT_EQ(page_.messages().size(), said);

    work_->containerAction(inbound::ContainerRefresh{.token = channel_.containerToken()});
    requests_.abandon();
    settle();
    EXPECT_EQ(page_.messages().size(), said + 1) << "busy, and no listing after it";
}

} // namespace
} // namespace quillmere
