// What unit this is, and selective receive.
#include "AaSysCom.h"
#include "HwapiUnit.h"
#include "TestBoard.h"

#include <gtest/gtest.h>

namespace {

class HwapiUnitTest : public testing::Test {
 protected:
  TestBoard m_board;
  char m_text[32] = "?";
};

TEST_F(HwapiUnitTest, TheUnitIsTheOneDescribed) {
  m_board.Describe("[unit]\ntype = 'Vyd'\nversion = 'Vydj'");
  EXPECT_EQ(ApiGetLocalUnitType(), EUnitType_Vyd);
  EXPECT_EQ(ApiGetLocalUnitVersion(), EUnitVersion_Vydj);
}

TEST_F(HwapiUnitTest, AUnitThatIsNotDescribedIsUnknown) {
  m_board.Describe("");
  EXPECT_EQ(ApiGetLocalUnitType(), EUnitType_Unknown);
  EXPECT_EQ(ApiGetLocalUnitVersion(), EUnitVersion_Unallocated);
}

TEST_F(HwapiUnitTest, CodesAreCutToTheBuffer) {
  m_board.Describe("[unit]\nproduct_code = '084010A.101'\nserial_number = 'K9140800037'");
  EXPECT_EQ(ApiGetModuleProductionCode(m_text, sizeof m_text), 1u);
  EXPECT_STREQ(m_text, "084010A.101");
  EXPECT_EQ(ApiGetModuleSerialNumber(m_text, 4), 1u);
  EXPECT_STREQ(m_text, "K91");
}

TEST_F(HwapiUnitTest, CodesThatAreNotDescribedAreNoSuccess) {
  m_board.Describe("");
  EXPECT_EQ(ApiGetModuleProductionCode(m_text, sizeof m_text), 0u);
  EXPECT_EQ(ApiGetModuleSerialNumber(m_text, sizeof m_text), 0u);
}

TEST_F(HwapiUnitTest, ABufferWithoutRoomIsNoSuccess) {
  m_board.Describe("[unit]\nproduct_code = 'P'");
  EXPECT_EQ(ApiGetModuleProductionCode(m_text, 0), 0u);
  EXPECT_EQ(ApiGetModuleProductionCode(nullptr, 8), 0u);
}

TEST_F(HwapiUnitTest, SelectiveReceiveTakesTheListedMessageFirst) {
  m_board.Describe("");
  const u32 task = AaSysComUserRegister(0, AaProEuCurrent());
  for (const u32 id : {1u, 2u}) {
    void* msg = AaSysComMsgCreate(id, 0, AaSysComSicadGet(task, AaSysComGetOwnNid()));
    AaSysComMsgSend(&msg);
  }
  const u16 second[] = {1, 2};
  const u16 first[] = {1, 1};
  for (const u16* filter : {second, first}) {
    void* msg = hwapiMsgQueueReceiveSelective(10'000'000, filter);
    EXPECT_EQ(AaSysComMsgGetId(msg), filter[1]);
    AaSysComMsgDestroy(&msg);
  }
  EXPECT_EQ(hwapiMsgQueueReceiveSelective(1, first), nullptr);
}

}  // namespace
