#include "AaProWatch.h"
#include "fake/PlatformTest.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

using Watch = fake::PlatformTest;

TEST_F(Watch, EveryCallIsWrittenDown) {
  AaProRestBegin();
  AaProRestEnd();
  AaProAllAlive(nullptr, 0);
  EXPECT_THAT(fake::Calls(),
              ElementsAre(fake::Call("AaProRestBegin"), fake::Call("AaProRestEnd"), fake::Call("AaProAllAlive", 0)));
}

TEST_F(Watch, AThreadHangsWhereATestAsksForIt) {
  fake::FailCall("AaProAllAlive", 2);
  char name[AAPRO_NAME_SIZE];
  EXPECT_EQ(AaProAllAlive(name, sizeof name), GLO_TRUE);
  EXPECT_EQ(AaProAllAlive(name, sizeof name), GLO_FALSE);
  EXPECT_STREQ(name, "hanging");
}

TEST_F(Watch, ARestThatNobodyBeganIsAViolation) {
  AaProRestEnd();
  EXPECT_THAT(fake::Violations(), ElementsAre("AaProRestEnd without an AaProRestBegin"));
  fake::ClearViolations();
}

}  // namespace
