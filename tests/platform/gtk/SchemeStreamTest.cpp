#include "platform/gtk/scheme/SchemeStream.h"

#include <cstring>
#include <gtest/gtest.h>

namespace quillmere::platform::gtk {
namespace {

Chunk chunkOf(const std::string& text) {
    Chunk chunk{std::make_unique<std::byte[]>(text.size()), text.size()};
    std::memcpy(chunk.bytes.get(), text.data(), text.size());
    return chunk;
}

void turnLoop() {
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
}

/// Reads as the web view does: a few bytes at a time, the next read from within the callback of the last.
class Reader {
public:
    Reader(GObjectRef<GInputStream> stream, size_t atOnce) : stream_(std::move(stream)), buffer_(atOnce) { read(); }
    ~Reader() { turnLoop(); }

    std::string text;
    int reads = 0;
    bool ended = false;
    std::string error;
    GCancellable* cancellable() const { return cancellable_.get(); }

private:
    void read() {
        g_input_stream_read_async(stream_.get(), buffer_.data(), buffer_.size(), G_PRIORITY_LOW, cancellable_.get(),
                                  &Reader::completed, this);
    }
    static void completed(GObject* stream, GAsyncResult* result, gpointer data) {
        auto& self = *static_cast<Reader*>(data);
        GError* failure = nullptr;
        const gssize count = g_input_stream_read_finish(G_INPUT_STREAM(stream), result, &failure);
        const GlibError error(failure);
        ++self.reads;
        if (count > 0) {
            self.text.append(self.buffer_.data(), static_cast<size_t>(count));
            return self.read();
        }
        self.ended = true;
        self.error = error ? error->message : "";
    }

    GObjectRef<GInputStream> stream_;
    GObjectRef<GCancellable> cancellable_ = GObjectRef<GCancellable>::adopt(g_cancellable_new());
    std::vector<char> buffer_;
};

class SchemeStreamTest : public testing::Test {
protected:
    std::shared_ptr<SchemeStream> body = SchemeStream::make(std::make_shared<SchemeFlow>());
};

TEST_F(SchemeStreamTest, FirstReadWaitsForTheFirstChunkAndAChunkIsTakenInOneTurn) {
    Reader reader(body->makeInputStream(), 4);
    turnLoop();
    EXPECT_EQ(reader.reads, 0);
    body->push(chunkOf("a quiet lake"));
    EXPECT_EQ(reader.text, "a quiet lake");
    EXPECT_EQ(reader.reads, 3);
    body->push(chunkOf(" at dawn"));
    body->finish();
    turnLoop();
    EXPECT_EQ(reader.text, "a quiet lake at dawn");
    EXPECT_TRUE(reader.ended);
    EXPECT_EQ(reader.error, "");
}

TEST_F(SchemeStreamTest, WhatWasGivenBeforeAFailureStillArrives) {
    body->push(chunkOf("half"));
    body->fail("The disk is gone.");
    Reader reader(body->makeInputStream(), 100);
    EXPECT_EQ(reader.reads, 0) << "a read was completed before the call that began it returned";
    turnLoop();
    EXPECT_EQ(reader.text, "half");
    EXPECT_EQ(reader.error, "The disk is gone.");
}

TEST_F(SchemeStreamTest, AStopIsToldOnceEndsTheReadAndFreesTheServingThread) {
    int stops = 0;
    body->onStop([&] { ++stops; });
    Reader reader(body->makeInputStream(), 100);
    g_cancellable_cancel(reader.cancellable());
    EXPECT_EQ(stops, 1);
    body->push(chunkOf("too late"));
    body->finish();
    turnLoop();
    EXPECT_TRUE(reader.ended);
    EXPECT_EQ(reader.text, "");
    EXPECT_NE(reader.error, "");
    body->stop();
    EXPECT_EQ(stops, 1);
}

TEST_F(SchemeStreamTest, IsReadyWhenTheChunkIsTakenOrTheAnswerStopped) {
    for (const bool taken : {true, false}) {
        const auto stream = SchemeStream::make(std::make_shared<SchemeFlow>());
        int ready = 0;
        stream->whenReady([&] { ++ready; });
        EXPECT_EQ(ready, 1) << "there was nothing to wait for";
        stream->push(chunkOf("waits for a reader"));
        stream->whenReady([&] { ++ready; });
        turnLoop();
        EXPECT_EQ(ready, 1);
        if (taken) {
            Reader reader(stream->makeInputStream(), 100);
            turnLoop();
            EXPECT_EQ(reader.text, "waits for a reader");
            EXPECT_EQ(ready, 2);
            stream->finish();
        } else {
            stream->stop();
        }
        EXPECT_EQ(ready, 2);
    }
}

TEST_F(SchemeStreamTest, TheStreamObjectKeepsTheBodyUntilItIsLetGo) {
    const std::weak_ptr<SchemeStream> watched = body;
    {
        Reader reader(body->makeInputStream(), 100);
        body->finish();
        body.reset();
        EXPECT_FALSE(watched.expired());
        EXPECT_TRUE(reader.ended);
    }
    EXPECT_TRUE(watched.expired());
}

} // namespace
} // namespace quillmere::platform::gtk
