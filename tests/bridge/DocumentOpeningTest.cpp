#include "bridge/DocumentOpening.h"
#include "base/RegularFile.h"
#include "platform/headless/HeadlessPlatform.h"
#include "tests/bridge/Messages.h"
#include "tests/support/OrdinaryUser.h"
#include "tests/support/Sandbox.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>

namespace quillmere {
namespace {

namespace fs = std::filesystem;

class DocumentOpeningTest : public testing::Test, protected tests::Sandbox, protected DocumentOpening::Host {
protected:
    ~DocumentOpeningTest() override {
        opening_.reset();
        desktop_.executors.main().end();
    }

    void openContainer(const OpenRequest& request) override { browsed.push_back(request.file); }
    void didLeaveListing(bool) override {}
    void showInTitle(const std::string&, std::optional<FileUrl>) override {}
    bool showPreview(const FileUrl&, double) override { return false; }
    void removePreview() override {}
    LocalFiles& localFiles() override { return *files_; }

    /// An entry that was checked when it was chosen in a listing.
    OpenRequest chosen(const FileUrl& file) {
        return {.file = file, .containerToken = "T", .displayName = "chosen", .identity = RegularFile(file).identity()};
    }
    /// Another file takes the name; the first stays where it can be seen to differ.
    void replaceByLink(const FileUrl& file, const FileUrl& target) {
        fs::rename(file.filesystemPath(), at("moved away").filesystemPath());
        fs::create_symlink(target.filesystemPath(), file.filesystemPath());
    }
    void settle() {
        EXPECT_TRUE(desktop_.executors.main().runUntil([&] { return desktop_.executors.isIdle(); }));
        desktop_.executors.main().runPending();
    }
    std::optional<std::string> refusal() const { return stringField(page_.last("error"), "message"); }

    platform::HeadlessPlatform desktop_{root()};
    platform::Confinement confinement_{platform::Confinement::Mode::withoutWall};
    tests::Page page_;
    PageChannel channel_{page_};
    Requests requests_;
    std::shared_ptr<LocalFiles> files_ =
        std::make_shared<LocalFiles>(root(), desktop_.executors, desktop_.contentTypes);
    std::shared_ptr<DocumentOpening> opening_ = std::make_shared<DocumentOpening>(
        static_cast<DocumentOpening::Host&>(*this),
        DocumentOpening::Services{
            .channel = channel_,
            .requests = requests_,
            .executors = desktop_.executors,
            .preparation = std::make_shared<FilePreparation>(FilePreparation::Tools{.images = desktop_.images,
                                                                                    .exporter = desktop_.mediaExporter,
                                                                                    .confinement = confinement_,
                                                                                    .libreOfficeCandidates = {},
                                                                                    .ffmpegCandidates = {}}),
            .cache = at("cache")});
    std::vector<FileUrl> browsed;
};

TEST_F(DocumentOpeningTest, WhatTookTheNameOfACheckedFileIsNeverShown) {
    constexpr const char* refused = "The selected item no longer exists or access was denied.";
    const FileUrl outside = write("outside/secret.txt", "secret");
    struct Row {
        const char* what;
        const char* target;
        std::function<void(const OpenRequest&, const std::function<void()>& swap)> act;
    };
    const Row rows[] = {
        {"at once", "outside/secret.txt",
         [&](const OpenRequest& request, const auto& swap) {
             swap();
             opening_->open(request);
         }},
        {"by a link to a folder", "outside",
         [&](const OpenRequest& request, const auto& swap) {
             swap();
             opening_->open(request);
         }},
        {"while it waited for the page", "outside/secret.txt",
         [&](const OpenRequest& request, const auto& swap) {
             channel_.setReady(false);
             opening_->open(request);
             swap();
             channel_.setReady(true);
             opening_->open(std::get<OpenRequest>(opening_->takePending()));
         }},
        {"after the page has died", "outside",
         [&](const OpenRequest& request, const auto& swap) {
             opening_->open(request);
             settle();
             swap();
             opening_->open(std::get<OpenRequest>(opening_->shown()));
         }},
        {"in the conversion of media", "outside/secret.txt",
         [&](const OpenRequest& request, const auto& swap) {
             opening_->open(request);
             settle();
             const auto url = stringField(page_.last("open"), "url");
             swap();
             opening_->transcodeMedia({.url = url});
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        page_.scripts.clear();
        channel_.setReady(true);
        fs::remove_all(at("moved away").filesystemPath());
        fs::remove(at("folder/a.txt").filesystemPath());
        const FileUrl file = write("folder/a.txt", "checked");
        row.act(chosen(file), [&] { replaceByLink(file, at(row.target)); });
        settle();
        EXPECT_EQ(refusal(), refused);
        EXPECT_TRUE(browsed.empty());
    }
}

TEST_F(DocumentOpeningTest, ARefusedPermissionIsToldInTheSameWordsForEveryKind) {
    channel_.setReady(true);
    for (const char* name : {"a.txt", "a.docx", "a.heic", "a.mpg", "a.mp4"}) {
        const FileUrl file = write(name);
        fs::permissions(file.filesystemPath(), fs::perms::none);
        page_.scripts.clear();
        const tests::OrdinaryUser user(root());
        opening_->open({.file = file});
        settle();
        EXPECT_EQ(refusal(), "You do not have permission to open “" + std::string(name) + "”.");
    }
}

TEST_F(DocumentOpeningTest, OnlyTheNewestRequestIsKeptAndAnswered) {
    opening_->open({.file = write("early.txt")});
    opening_->open({.file = write("a.txt")});
    EXPECT_TRUE(page_.scripts.empty());
    channel_.setReady(true);
    opening_->open(std::get<OpenRequest>(opening_->takePending()));
    EXPECT_FALSE(opening_->hasPendingFile());
    opening_->open({.file = write("b.txt")});
    settle();
    EXPECT_EQ(stringField(page_.last("open"), "name"), "b.txt");
    EXPECT_EQ(page_.messages().size(), 3U) << "two times busy, one time open";

    opening_->open({.file = folder("things")});
    EXPECT_EQ(browsed, std::vector{at("things")});
}

} // namespace
} // namespace quillmere
