#pragma once

#include "helpers/archive-reader/LibarchiveReader.h"
#include "platform/headless/HeadlessPlatform.h"
#include "shell/QuillmereDelegate.h"
#include "tests/support/Sandbox.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace quillmere {

/// The delegate on a platform in memory, driven like a user and a page would.
class DelegateTest : public testing::Test, protected tests::Sandbox {
protected:
    DelegateTest() {
        write("Quillmere.app/Contents/Resources/app/index.html", "<!doctype html>");
        write("Quillmere.app/Contents/Resources/mac-shell.js", "// prepares the page");
        write("Quillmere.app/Contents/Resources/samples/note.txt", "a sample");
    }

    ~DelegateTest() override {
        delegate_.reset();
        desktop_.executors.main().end();
    }

    void launch() {
        delegate_ = QuillmereDelegate::make(
            desktop_.platform(), {.preparation = preparation_,
                                  .makeContainerBrowser =
                                      [](const FileUrl& cache) {
                                          return std::make_shared<ContainerBrowser>(
                                              cache, ContainerBrowser::Options{.readers = LibarchiveReader::factory()});
                                      },
                                  .log = [](const std::string&) {}});
        desktop_.application.launch(*delegate_);
    }

    void launchAndGetReady() {
        launch();
        post({{"type", "ready"}});
        desktop_.executors.main().runPending();
    }

    platform::HeadlessWindow& window() { return *desktop_.toolkit.window; }
    platform::HeadlessWebView& page() { return *desktop_.toolkit.web; }
    void post(const JsonObject& body) { page().post(body); }

    /// The messages of one type that the page has received.
    std::vector<JsonObject> received(const std::string& type) {
        std::vector<JsonObject> found;
        for (auto& message : page().messages())
            if (stringField(message, "type") == type)
                found.push_back(std::move(message));
        return found;
    }

    /// Lets work go on until the page has received `count` messages of the type, and returns the last.
    JsonObject await(const std::string& type, size_t count = 1) {
        EXPECT_TRUE(desktop_.executors.main().runUntil([&] { return received(type).size() >= count; }))
            << "no " << type << " number " << count;
        const auto all = received(type);
        return all.empty() ? JsonObject() : all.back();
    }

    /// Lets all work under way come to its end.
    void settle() {
        EXPECT_TRUE(desktop_.executors.main().runUntil([&] { return desktop_.executors.isIdle(); }));
        desktop_.executors.main().runPending();
    }

    static int64_t requestId(const JsonObject& message) { return message.at("requestId").as_int64(); }

    /// The body with which an address is answered.
    std::string fetched(const std::string& path) {
        const auto task = page().fetch({.url = "quillmere://app" + path, .method = "GET", .range = {}});
        EXPECT_TRUE(desktop_.executors.main().runUntil([&] { return task->isOver(); }));
        return task->body;
    }

    void installLibreOffice() { writeProgram("soffice", "#!/bin/sh\nexit 1\n"); }

    platform::HeadlessPlatform desktop_{root()};
    platform::Confinement confinement_{platform::Confinement::Mode::withoutWall};
    std::shared_ptr<const FilePreparation> preparation_ =
        std::make_shared<FilePreparation>(FilePreparation::Tools{.images = desktop_.images,
                                                                 .exporter = desktop_.mediaExporter,
                                                                 .confinement = confinement_,
                                                                 .libreOfficeCandidates = {at("soffice")},
                                                                 .ffmpegCandidates = {at("ffmpeg")}});
    std::shared_ptr<QuillmereDelegate> delegate_;
};

/// The same, with a page that has said that it is ready.
class ReadyDelegateTest : public DelegateTest {
protected:
    void SetUp() override { launchAndGetReady(); }
};

MATCHER_P2(HasText, key, text, "") {
    return stringField(arg, key) == text;
}

} // namespace quillmere
