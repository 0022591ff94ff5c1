#include "AaProWatch.h"
#include "AaSysTime.h"

#include <gtest/gtest.h>

#include <string>

namespace contract {
namespace {

/// More looks than a thread may be at work for.
constexpr int kManyLooks = 5;

/// Such rows of looks, a tenth of a second apart: a thread of the platform that has just begun is at work for longer
/// than a row takes.
constexpr int kTries = 200;

/// @return the name of a thread that hangs after many looks, "" when there is none
std::string HangingAfterManyLooks() {
  char name[AAPRO_NAME_SIZE] = "untouched";
  for (int tries = 0; tries < kTries; ++tries) {
    for (int i = 0; i < kManyLooks; ++i) AaProAllAlive(name, sizeof name);
    if (name[0] == '\0') break;
    AaSysTimeSleep(100, EAaSysTimeScale_Millisec);
  }
  return name;
}

TEST(Watch, FindsAllThreadsAliveWhenNoneHangs) {
  EXPECT_EQ(AaProAllAlive(nullptr, 0), GLO_TRUE);
  EXPECT_EQ(HangingAfterManyLooks(), "");
}

TEST(Watch, LetsAThreadRestAsLongAsItLikes) {
  AaProRestBegin();
  AaProRestBegin();
  AaProRestEnd();
  EXPECT_EQ(HangingAfterManyLooks(), "");
  AaProRestEnd();
}

TEST(Watch, WritesNoMoreOfANameThanThereIsRoomFor) {
  char name[2] = {'x', 'x'};
  EXPECT_EQ(AaProAllAlive(name, 1), GLO_TRUE);
  EXPECT_EQ(name[0], '\0');
  EXPECT_EQ(name[1], 'x');
}

}  // namespace
}  // namespace contract
