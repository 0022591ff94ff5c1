#include "Steps.h"

#include "messages/Autodet.h"
#include "messages/FanControl.h"
#include "messages/MessageIds.h"

#include <cstddef>
#include <iterator>

namespace fuzz {
namespace {

constexpr u32 kTimePasses = 0;
/// Every message that the service can have a handler for; those of fans come often.
constexpr u32 kIds[] = {
    API_SET_FAN_PWM_FREQ_REQ_MSG,
    API_SET_FAN_PWM_FREQ_REQ_MSG,
    API_SET_FAN_SPEED_REQ_MSG,
    API_SET_FAN_SPEED_REQ_MSG,
    API2_SET_FAN_SPEED_REQ_MSG,
    API2_SET_FAN_SPEED_REQ_MSG,
    API_FAN_SPEED_POLL_TIMER_IND_MSG,
    API_FAN_SPEED_POLL_TIMER_IND_MSG,
    API_TEMP_MEAS_REQ_MSG,
    API_TEMPERATURE_POLL_TIMER_IND_MSG,
    API_STORE_BLACKBOX_DATA_REQ_MSG,
    API_BLACKBOX_STORE_FILE_REQ_MSG,
    API_RESET_EVENT_NOTIF_SUBSCRIBE_RESP_MSG,
    API2_RESET_REQ_MSG,
    AACONFIG_TAG_PUBLIC_SET_NOTIF_MSG,
    API_GET_BLACKBOX_RESET_INFO_REQ_MSG,
    API_AUTODET_RESP_MSG,
    API_AUTODET_UNIT_IND_MSG,
    kTimePasses,
    kTimePasses,
};

constexpr const char* kFailing[] = {
    "AaSysComMsgCreateReply",
    "AaSysComMsgCreate",
    "AaSysTimermCreate",
    "AaSysTimerDelete",
    "AaSysComMsgGetPayload",
    "AaSysComMsgGetPayloadSize",
    "ddal_fan_set_fan_pwm_freq",
    "ddal_fan_set_pwm",
    "ddal_fan_get_rpm",
    "ddal_fan_get_fan_pwm_freq",
    "ddal_fan_get_pwm",
    "ddal_temp_get_curr",
    "AaFileOpen",
    "AaFileWrite",
    "AaUtcTimeGet",
};
/// Second bytes of a step below this let a call fail.
constexpr std::size_t kFailingChoices = std::size(kFailing) * 8;

constexpr TAaSysComSicad kSenders[] = {0x01018000, 0x010104AD, 0x010104B6, 0};
constexpr TAaSysComSicad kReceiver = 0x010104AD;

/// Where a fan request has its number of items, and its items.
struct Layout {
  u32 id;
  std::size_t numOfItems;
  std::size_t items;
};
constexpr Layout kLayouts[] = {
    {.id = API_SET_FAN_PWM_FREQ_REQ_MSG,
     .numOfItems = offsetof(SApiSetFanPwmFreqReq, numOfItems),
     .items = offsetof(SApiSetFanPwmFreqReq, unit)},
    {.id = API_SET_FAN_SPEED_REQ_MSG,
     .numOfItems = offsetof(SApiSetFanSpeedReq, numOfItems),
     .items = offsetof(SApiSetFanSpeedReq, unit)},
    {.id = API2_SET_FAN_SPEED_REQ_MSG,
     .numOfItems = offsetof(SApi2SetFanSpeedReq, numOfItems),
     .items = offsetof(SApi2SetFanSpeedReq, unit)},
};
constexpr std::size_t kItem = sizeof(SFanSpeedParam);

/// Numbers of items that no payload holds, among them such whose size in 32 bits would wrap around.
constexpr u32 kHuge[] = {8192, 0x10000, 0x10001, 0x20000001, 0x7FFFFFFF, 0x80000001, 0xFFFFFFFE, 0xFFFFFFFF};

/// Writes a number into as much of the payload as there is.
void Put(fake::Bytes& payload, std::size_t offset, u32 number, bool otherEndian = false) {
  for (std::size_t i = 0; i < sizeof(number) && offset + i < payload.size(); ++i) {
    const std::size_t shift = 8 * (otherEndian ? sizeof(number) - 1 - i : i);
    payload[offset + i] = static_cast<std::uint8_t>(number >> shift);
  }
}

void SetNumOfItems(const Layout& layout, fake::Message& message, u32 number) {
  Put(message.payload, layout.numOfItems, number, message.otherEndian);
}

/// Gives the payload that many items: what is too much is cut off, what is missing repeats the first one.
void Resize(const Layout& layout, fake::Message& message, std::size_t items) {
  fake::Bytes& payload = message.payload;
  std::size_t from = payload.size();
  payload.resize(layout.items + items * kItem);
  for (from = std::max(from, layout.items + kItem); from < payload.size(); ++from)
    payload[from] = payload[from - kItem];
  SetNumOfItems(layout, message, static_cast<u32>(items));
}

/// Lets an indication tell of a unit that there is: in one of three slots and of every variant.
void SetUnit(fake::Bytes& payload, std::uint8_t choice) {
  constexpr u32 kVariants[] = {0x00, 0x0C, 0x11, 0x16};
  constexpr std::size_t kUnit = offsetof(SApiAutodetUnitInd, unitInformation);
  const u32 slot = 2u + choice % 3u;
  const u32 variant = kVariants[choice / 3u % std::size(kVariants)];
  const u32 family = 1u + choice / 12u % 6u;
  Put(payload, kUnit + offsetof(SUnitInformation, unit_id), family << 4 | slot);
  Put(payload, kUnit + offsetof(SUnitInformation, hw_sw_id), variant << 12);
}

/// @param shape  what is done, see kStretched
/// @param choice any number
void Shape(fake::Message& message, std::uint8_t shape, std::uint8_t choice) {
  if (message.id == API_AUTODET_UNIT_IND_MSG && shape % 2 != 0) {
    SetUnit(message.payload, choice);
    if (shape % 4 == 3) Put(message.payload, offsetof(SApiAutodetUnitInd, autodetectionState), EAdetState_UnPlugged);
  }
  const auto* layout =
      std::find_if(std::begin(kLayouts), std::end(kLayouts), [&](const Layout& one) { return one.id == message.id; });
  if (layout == std::end(kLayouts)) return;
  if (shape == kStretched) {
    // From a few less than what a response can hold to the most that a request can hold.
    Resize(*layout, message, 5450u + choice % 16u * 182u);
  } else if (shape % 4 == 2) {
    const std::size_t held = message.payload.size() < layout->items ? 0 : message.payload.size() - layout->items;
    Resize(*layout, message, std::max<std::size_t>(1, held / kItem));
  } else if (shape % 4 == 3) {
    SetNumOfItems(*layout, message, kHuge[choice % std::size(kHuge)]);
  }
}

}  // namespace

Step NextStep(Input& input) {
  Step step;
  fake::Message& message = step.message;
  message.id = kIds[input.Byte() % std::size(kIds)];
  if (const std::uint8_t failing = input.Byte(); failing != 0 && failing < kFailingChoices) {
    step.failing = kFailing[failing / 8];
    step.nth = 1 + failing % 4;
    step.onwards = (failing & 4) != 0;
  }
  const std::uint8_t shape = input.Byte();
  const std::uint8_t origin = input.Byte();
  const std::uint8_t size = input.Byte();
  message.otherEndian = (origin & kOtherEndianBit) != 0;
  message.sender = kSenders[origin % std::size(kSenders)];
  message.receiver = kReceiver;
  step.microseconds = std::uint64_t{size} * 1000000;
  message.payload = input.Take(size);
  Shape(message, shape, static_cast<std::uint8_t>(origin / std::size(kSenders)));
  return step;
}

}  // namespace fuzz
