#include "Messaging.h"

#include <gtest/gtest.h>

namespace contract {
namespace {

TEST(Address, OfTheOwnNodeIsTheBoardsOne) { EXPECT_EQ(AaSysComGetOwnNid(), rig::kOwnNid); }

TEST(Address, IsMadeOfTaskAndNode) { EXPECT_EQ(AaSysComSicadGet(0x04B6, 0x0301), 0x030104B6u); }

TEST(Address, UsesTheLowest16BitsOfTheTask) { EXPECT_EQ(AaSysComSicadGet(0xABCD04B6, 0x0301), 0x030104B6u); }

TEST(Address, OfTaskZeroIsTheNodes) { EXPECT_EQ(AaSysComSicadGet(0, 0x0301), 0x03010000u); }

TEST(Address, IsMadeOfItsThreeParts) { EXPECT_EQ(AaSysComNmapGetSicad(0xFE, 0x21, 0xFFFF), 0xFE21FFFFu); }

TEST(Address, TellsItsBoardAndCpu) {
  EXPECT_EQ(AaSysComNmapGetBoard(0xFE21FFFF), 0xFE);
  EXPECT_EQ(AaSysComNmapGetCpu(0xFE21FFFF), 0x21);
}

TEST(ByteOrder, OfTwoBytesIsSwapped) { EXPECT_EQ(AaSysComEnd16Swap(0x12FE), 0xFE12); }

TEST(ByteOrder, OfFourBytesIsReversed) { EXPECT_EQ(AaSysComEnd32Swap(0x123456FE), 0xFE563412u); }

}  // namespace
}  // namespace contract
