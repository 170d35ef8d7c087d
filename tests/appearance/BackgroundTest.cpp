#include "appearance/BackgroundPhoto.h"
#include "platform/headless/HeadlessServices.h"
#include "tests/support/Sandbox.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

class BackgroundPhotoTest : public testing::Test, protected tests::Sandbox {
protected:
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
    EXPECT_FALSE(photo_.replace(at("missing.jpg"), images_));
    EXPECT_EQ(read(photo_.file()), "first picture");
    EXPECT_TRUE(photo_.replace(write("three.jpg", "second picture"), images_));
    EXPECT_EQ(read(photo_.file()), "second picture");
    EXPECT_EQ(names("support").size(), 1U);
}

} // namespace
} // namespace quillmere
