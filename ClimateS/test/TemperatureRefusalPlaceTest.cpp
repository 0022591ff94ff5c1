/// Where the handlers of temperature measurement say that they refused a message.
#include "ServiceOnBoard.h"

#include <ostream>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

constexpr u32 kRequest = 0x2B29;
constexpr u32 kExpiry = 0x203F;

/// A message that is refused, and what its refusal says.
struct RefusedMessage {
  const char* name;
  u32 id;
  std::vector<u32> words;
  const char* failingCall;  ///< null: nothing fails
  const char* description;

  friend std::ostream& operator<<(std::ostream& out, const RefusedMessage& refused) { return out << refused.name; }
};

const RefusedMessage kRefusedMessages[] = {
    {.name = "RequestWithoutReply",
     .id = kRequest,
     .words = {0, 6, 1000, 0, 0},
     .failingCall = "AaSysComMsgCreateReply",
     .description = "Creation of API_TEMP_MEAS_RESP_MSG failed"},
    {.name = "RequestWithoutPayload",
     .id = kRequest,
     .words = {},
     .failingCall = nullptr,
     .description = "Payload missing from API_TEMP_MEAS_REQ_MSG"},
    {.name = "ExpiryWithoutPayload",
     .id = kExpiry,
     .words = {},
     .failingCall = nullptr,
     .description = "Payload missing from API_TEMPERATURE_POLL_TIMER_IND_MSG"},
    {.name = "ExpiryWithoutIndication",
     .id = kExpiry,
     .words = {7},
     .failingCall = "AaSysComMsgCreate",
     .description = "Creation of API_TEMP_MEAS_IND_MSG failed"},
};

class TemperatureRefusalPlaceTest : public ServiceOnBoardTest, public testing::WithParamInterface<RefusedMessage> {
 protected:
  TemperatureRefusalPlaceTest() { Start(EUnitVersion_Kela); }
};

TEST_P(TemperatureRefusalPlaceTest, IsTheFileByItsNameAloneAndTheLine) {
  const RefusedMessage& refused = GetParam();
  if (refused.failingCall != nullptr) fake::FailCall(refused.failingCall);
  try {
    fake::Dispatch({.id = refused.id, .payload = Words(refused.words), .sender = kRequester});
    FAIL() << "nothing was thrown";
  } catch (const MsgHandlingException& refusal) {
    EXPECT_EQ(refusal.getDescription(), refused.description);
    EXPECT_EQ(refusal.getFile(), "ClimateServiceTemperature.cpp");
    EXPECT_GT(refusal.getLine(), 0u);
  }
}

INSTANTIATE_TEST_SUITE_P(Of, TemperatureRefusalPlaceTest, testing::ValuesIn(kRefusedMessages),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace ps::hwapi::common::climate
