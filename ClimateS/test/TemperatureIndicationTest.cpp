/// The poll timer's expiries, and the measurement indications that they bring.
#include "ServiceOnBoard.h"

#include <bit>

namespace ps::hwapi::common::climate {
namespace {

constexpr u32 kTimerId = 0x203F;
constexpr u32 kIndicationId = 0x2B2B;
constexpr std::uint64_t kAtOnce = 1;
constexpr std::uint64_t kSecond = 1000000;

class TemperatureIndicationTest : public ServiceOnBoardTest {
 protected:
  TemperatureIndicationTest() {
    Start(EUnitVersion_Kela);
    fake::SetTemperature(0x10005, 45500);
  }

  static fake::Message Expiry(fake::Bytes payload) {
    return {.id = kTimerId, .payload = std::move(payload), .sender = kOtherClient, .receiver = kTemperatureEndpoint};
  }
  static fake::Message Expiry(u32 sensorType) { return Expiry(Words({sensorType})); }

  /// @return the indication
  template <typename Content>
  static fake::Message Poll(const Content& content) {
    return AnswerTo(Expiry(content), kIndicationId);
  }

  static void Request(u32 command, u32 sensorType, u32 clientAddr = 0) {
    fake::Dispatch({.id = 0x2B29, .payload = Words({command, sensorType, 1000, 0, clientAddr}), .sender = kRequester});
  }
  static std::vector<fake::Message> Indications() { return fake::SentMessages(kIndicationId); }
};

TEST_F(TemperatureIndicationTest, FirstIndicationFollowsTheStartAtOnce) {
  Request(0, 7);
  Pass(kAtOnce);
  ASSERT_EQ(Indications().size(), 1u);
  EXPECT_EQ(Indications()[0].receiver, kRequester);
}

TEST_F(TemperatureIndicationTest, OneFollowsEachInterval) {
  Request(0, 7);
  Pass(kAtOnce);
  Pass(kSecond);
  Pass(kSecond);
  EXPECT_EQ(Indications().size(), 3u);
}

TEST_F(TemperatureIndicationTest, GoesToTheClientAddressOfTheStart) {
  Request(0, 7, kOtherClient);
  Pass(kAtOnce);
  ASSERT_EQ(Indications().size(), 1u);
  EXPECT_EQ(Indications()[0].receiver, kOtherClient);
}

TEST_F(TemperatureIndicationTest, NoneFollowsAStop) {
  Request(0, 7);
  Request(1, 7);
  Pass(10 * kSecond);
  EXPECT_TRUE(Indications().empty());
}

TEST_F(TemperatureIndicationTest, ExpiryThatWasQueuedBeforeAStopIsStillAnswered) {
  Request(0, 7);
  fake::AdvanceTime(kAtOnce);
  Request(1, 7);
  fake::DispatchQueued();
  EXPECT_EQ(Indications().size(), 1u);
}

TEST_F(TemperatureIndicationTest, HasTheServiceAsSender) {
  fake::SetOwnNid(0x0708);
  EXPECT_EQ(Poll(7u).sender, 0x070804B6u);
}

TEST_F(TemperatureIndicationTest, CarriesHeadAndOneEntryForEachSensor) {
  const u32 degrees = std::bit_cast<u32>(45.5f);
  EXPECT_EQ(Poll(7u).payload, Words({7, 1, 11, degrees, 0, 0, 0, 0, 1, 0}));
}

TEST_F(TemperatureIndicationTest, FailedSensorCarriesItsFaultCode) {
  fake::FailTemperature(0x10005, -3);
  EXPECT_EQ(Poll(7u).payload, Words({7, 1, 11, 0, 0, 0, 0, 0, 0, 3}));
}

TEST_F(TemperatureIndicationTest, LengthFollowsFromTheNumberOfSensors) {
  const fake::Message indication = Poll(6u);
  EXPECT_EQ(WordAt(indication, 4), 5u);
  EXPECT_EQ(indication.payload.size(), 168u);
}

TEST_F(TemperatureIndicationTest, GroupWithoutSensorsSendsItsHeadOnly) { EXPECT_EQ(Poll(4u).payload, Words({4, 0})); }

TEST_F(TemperatureIndicationTest, CarriesTheTypeThatWasAskedForWhereTypesShareAGroup) {
  Start(EUnitVersion_Vyga);
  Request(0, 3);
  Pass(kAtOnce);
  ASSERT_EQ(Indications().size(), 1u);
  EXPECT_EQ(WordAt(Indications()[0], 0), 3u);
  EXPECT_EQ(WordAt(Indications()[0], 8), 13u);
}

TEST_F(TemperatureIndicationTest, PowerAmplifierOfAnRfAsicThatIsOffFailsWith1004) {
  Start(EUnitVersion_Vyda);
  fake::SetRfAsic(0, 0);
  const fake::Message indication = Poll(9u);
  EXPECT_EQ(WordAt(indication, 8 + 2 * 32), 37u);
  EXPECT_EQ(WordAt(indication, 8 + 2 * 32 + 24), 0u);
  EXPECT_EQ(WordAt(indication, 8 + 2 * 32 + 28), 1004u);
}

TEST_F(TemperatureIndicationTest, ExpiryOfATypeWithoutAGroupIsDroppedSilently) {
  for (const u32 sensorType : {0u, 5u, 15u, 44u, 0xFFFFFFFFu}) EXPECT_EQ(Refusal(Expiry(sensorType)), "");
  EXPECT_TRUE(fake::SentMessages().empty());
  EXPECT_TRUE(fake::LogLines().empty());
}

TEST_F(TemperatureIndicationTest, ExpiryOfAGroupThatThisUnitLacksIsDroppedSilently) {
  EXPECT_EQ(Refusal(Expiry(9u)), "");
  EXPECT_TRUE(fake::SentMessages().empty());
}

TEST_F(TemperatureIndicationTest, ExpiryWithoutPayloadIsRefused) {
  EXPECT_EQ(Refusal(Expiry(fake::Bytes{})),
            "Message handling error: Payload missing from API_TEMPERATURE_POLL_TIMER_IND_MSG");
}

TEST_F(TemperatureIndicationTest, ExpiryWithAShortPayloadIsFilledWithZeros) {
  EXPECT_EQ(WordAt(Poll(fake::Bytes{7}), 0), 7u);
}

TEST_F(TemperatureIndicationTest, ExpiryWithALongPayloadIsReadFromItsBeginning) {
  EXPECT_EQ(WordAt(Poll(Words({7, 6, 6})), 0), 7u);
}

TEST_F(TemperatureIndicationTest, IndicationThatCannotBeCreatedIsRefusedBeforeSensorsAreRead) {
  fake::FailCall("AaSysComMsgCreate");
  EXPECT_EQ(Refusal(Expiry(7u)), "Message handling error: Creation of API_TEMP_MEAS_IND_MSG failed");
  EXPECT_TRUE(fake::SentMessages().empty());
  EXPECT_TRUE(fake::Calls("ddal_temp_get_curr").empty());
}

}  // namespace
}  // namespace ps::hwapi::common::climate
