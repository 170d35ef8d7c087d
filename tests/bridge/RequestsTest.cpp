#include "bridge/Requests.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

TEST(Requests, ANewerOneDropsTheOlderAndStopsItsContainerWork) {
    Requests requests;
    const auto first = requests.begin();
    const auto firstIsStale = requests.stale();
    EXPECT_TRUE(requests.isCurrent(first));
    EXPECT_FALSE(firstIsStale());

    const auto converted = requests.beginAgain();
    EXPECT_FALSE(requests.isCurrent(first));
    EXPECT_FALSE(firstIsStale()) << "the same document asks again: its container is not left";

    const auto second = requests.begin();
    EXPECT_TRUE(first < converted && converted < second);
    EXPECT_TRUE(firstIsStale());
    EXPECT_FALSE(requests.stale()());

    EXPECT_TRUE(requests.isCurrent(requests.abandon()));
    EXPECT_FALSE(requests.isCurrent(second));
}

} // namespace
} // namespace quillmere
