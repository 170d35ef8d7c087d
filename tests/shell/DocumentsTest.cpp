#include "tests/shell/DelegateFixture.h"

#include <sys/stat.h>

namespace quillmere {
namespace {

class DocumentsTest : public ReadyDelegateTest {};

TEST_F(DocumentsTest, AFileIsGrantedAndServed) {
    page().drop({write("Report.TXT", "12345")});
    EXPECT_EQ(received("busy").at(0), (JsonObject{{"type", "busy"}, {"name", "Report.TXT"}, {"requestId", 1}}));
    const auto open = await("open");
    EXPECT_THAT(open, HasText("name", "Report.TXT"));
    EXPECT_THAT(open, HasText("ext", "txt"));
    EXPECT_THAT(open, HasText("originalExt", "txt"));
    EXPECT_EQ(open.at("size").as_int64(), 5);
    EXPECT_EQ(requestId(open), 1);
    EXPECT_FALSE(open.contains("containerToken"));
    EXPECT_EQ(window().title, "Report.TXT — Quillmere");
    EXPECT_EQ(window().representedFile, at("Report.TXT"));
    EXPECT_EQ(fetched(*stringField(open, "url")), "12345");
}

TEST_F(DocumentsTest, OnlyTheLastOfTwoIsShown) {
    page().drop({write("a.txt")});
    page().drop({write("b.txt")});
    settle();
    ASSERT_EQ(received("open").size(), 1U);
    EXPECT_THAT(received("open").at(0), HasText("name", "b.txt"));
    EXPECT_EQ(requestId(received("open").at(0)), 2);
}

TEST_F(DocumentsTest, WhatIsGoneIsAnError) {
    page().drop({at("gone.txt")});
    EXPECT_EQ(received("error").at(0),
              (JsonObject{{"type", "error"},
                          {"name", "gone.txt"},
                          {"message", "The selected item no longer exists or access was denied."},
                          {"requestId", 1}}));
    EXPECT_EQ(window().title, "Quillmere");
}

TEST_F(DocumentsTest, WhatIsNoFileIsRefusedNotWaitedFor) {
    const FileUrl pipe = at("pipe.pdf");
    ASSERT_EQ(::mkfifo(pipe.path().c_str(), 0600), 0);
    page().drop({pipe});
    EXPECT_THAT(await("error"), HasText("message", "“pipe.pdf” is not a regular file."));
    page().drop({FileUrl("/dev/zero")});
    EXPECT_THAT(await("error", 2), HasText("message", "“zero” is not a regular file."));
}

TEST_F(DocumentsTest, OldOfficeFilesGoToTheNativePreview) {
    const FileUrl file = write("report.DOC");
    page().drop({file});
    EXPECT_EQ(received("error").at(0),
              (JsonObject{{"type", "error"}, {"message", "macOS Quick Look is unavailable."}, {"requestId", 1}}));
    desktop_.toolkit.canPreviewFiles = true;
    page().drop({file});
    EXPECT_EQ(received("native-preview").at(0),
              (JsonObject{{"type", "native-preview"}, {"name", "report.DOC"}, {"requestId", 2}}));
    EXPECT_THAT(desktop_.toolkit.previews, testing::ElementsAre(file));
    const auto preview = window().content->find("preview");
    ASSERT_TRUE(preview);
    EXPECT_EQ(std::get<view::Fill>(preview->placement).insets, (view::Insets{.top = 44}));
    const auto& layers = window().content->children();
    EXPECT_EQ(*std::prev(std::ranges::find(layers, window().content->find("toolbar"))), preview);

    page().drop({write("next.txt")});
    EXPECT_FALSE(window().content->find("preview"));

    installLibreOffice();
    page().drop({file});
    EXPECT_THAT(await("error", 2), HasText("name", "report.DOC"));
    EXPECT_EQ(desktop_.toolkit.previews.size(), 1U) << "the converter is asked instead";
}

TEST_F(DocumentsTest, AMediaFileIsConvertedOnceWhenThePageCannotPlayIt) {
    writeProgram("ffmpeg", R"(#!/bin/sh
for last; do :; done; printf '\0\0\0\10ftyp\0\0\0\10mdat\0\0\0\10moov' >"$last"
)");
    page().drop({write("clip.webm", "\x1A\x45\xDF\xA3 codec of the day")});
    const auto open = await("open");
    const auto url = *stringField(open, "url");

    post({{"type", "transcode-media"}, {"url", url + "x"}});
    post({{"type", "transcode-media"}, {"url", 1}});
    post({{"type", "transcode-media"}});
    EXPECT_EQ(received("busy").size(), 1U);

    post({{"type", "transcode-media"}, {"url", url}, {"name", "My clip"}});
    EXPECT_EQ(received("busy").back(), (JsonObject{{"type", "busy"}, {"name", "My clip"}, {"requestId", 2}}));
    const auto converted = await("open", 2);
    EXPECT_THAT(converted, HasText("ext", "mp4"));
    EXPECT_THAT(converted, HasText("originalExt", "webm"));
    EXPECT_THAT(converted, HasText("name", "clip.webm"));
    EXPECT_EQ(converted.at("size").as_int64(), 24);

    post({{"type", "transcode-media"}, {"url", converted.at("url")}});
    EXPECT_EQ(received("error").at(0),
              (JsonObject{{"type", "error"},
                          {"name", "clip.webm"},
                          {"message", "This media codec could not be played after conversion."},
                          {"requestId", 2}}));
}

TEST_F(DocumentsTest, AFailedConversionEndsTheRequestWithoutAName) {
    page().drop({write("clip.webm")});
    const auto url = *stringField(await("open"), "url");
    post({{"type", "transcode-media"}, {"url", url}, {"isAudio", "yes"}});
    EXPECT_THAT(received("busy").back(), HasText("name", "clip.webm"));
    const auto error = await("error");
    EXPECT_FALSE(error.contains("name"));
    EXPECT_EQ(requestId(error), 2);
}

} // namespace
} // namespace quillmere
