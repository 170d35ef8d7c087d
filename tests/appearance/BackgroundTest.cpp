#include "appearance/BackgroundPhoto.h"
#include "platform/headless/HeadlessServices.h"
#include "tests/support/Sandbox.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace quillmere {
namespace {

class BackgroundPhotoTest : public Sandbox {
protected:
    std::string kept() const {
        std::ifstream in(photo_.file().filesystemPath(), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    size_t filesInSupport() const {
        const std::filesystem::directory_iterator all(photo_.support.filesystemPath());
        return static_cast<size_t>(std::distance(all, {}));
    }

    BackgroundPhoto photo_{folder("support")};
    platform::HeadlessImageCodec images_;
};

TEST_F(BackgroundPhotoTest, AFailedChoiceKeepsTheFormerPhoto) {
    EXPECT_FALSE(photo_.exists());
    EXPECT_EQ(photo_.changedSeconds(), 0);
    ASSERT_TRUE(photo_.replace(write("one.jpg", "first picture"), images_));
    EXPECT_EQ(images_.lastMaxSide, 2560);
    EXPECT_GT(photo_.changedSeconds(), 1e9);

    EXPECT_FALSE(photo_.replace(write("two.jpg", "broken"), images_));
    EXPECT_FALSE(photo_.replace(root().appending("missing.jpg"), images_));
    EXPECT_EQ(kept(), "first picture");
    EXPECT_TRUE(photo_.replace(write("three.jpg", "second picture"), images_));
    EXPECT_EQ(kept(), "second picture");
    EXPECT_EQ(filesInSupport(), 1U);
}

} // namespace
} // namespace quillmere
