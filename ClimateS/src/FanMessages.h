/// @file
/// The variable-length requests and responses of fan control: their layouts as tables, and bounded access to them.
#pragma once

#include "PayloadView.h"
#include "messages/FanControl.h"

#include <cstddef>
#include <cstdint>

namespace ps::hwapi::common::climate {

/// Where the parts of a request lie; offsets and sizes in bytes.
struct FanRequestLayout {
  const char* name;        ///< of the message
  std::size_t receiver;    ///< offset of the recipient's address; 0: the message has none
  std::size_t timePeriod;  ///< offset of the period; 0: the message has none
  std::size_t numOfItems;  ///< offset of the number of items
  std::size_t items;       ///< offset of the first item
};

/// Where the parts of a response lie.
struct FanResponseLayout {
  std::size_t timePeriod;  ///< as in the request
  std::size_t numOfItems;
  std::size_t items;
};

inline constexpr std::size_t kFanRequestItemSize = sizeof(SFanSpeedParam);
inline constexpr std::size_t kFanResponseItemSize = sizeof(SFanSpeedResp);
static_assert(sizeof(SFanPwmFreqParam) == kFanRequestItemSize);
static_assert(sizeof(SFanPwmFreqResp) == kFanResponseItemSize);

inline constexpr FanRequestLayout kPwmFreqRequest = {.name = "API_SET_FAN_PWM_FREQ_REQ_MSG",
                                                     .receiver = 0,
                                                     .timePeriod = 0,
                                                     .numOfItems = offsetof(SApiSetFanPwmFreqReq, numOfItems),
                                                     .items = offsetof(SApiSetFanPwmFreqReq, unit)};
inline constexpr FanRequestLayout kSpeedRequest = {.name = "API_SET_FAN_SPEED_REQ_MSG",
                                                   .receiver = offsetof(SApiSetFanSpeedReq, receiver),
                                                   .timePeriod = 0,
                                                   .numOfItems = offsetof(SApiSetFanSpeedReq, numOfItems),
                                                   .items = offsetof(SApiSetFanSpeedReq, unit)};
inline constexpr FanRequestLayout kSpeedRequest2 = {.name = "API2_SET_FAN_SPEED_REQ_MSG",
                                                    .receiver = offsetof(SApi2SetFanSpeedReq, receiver),
                                                    .timePeriod = offsetof(SApi2SetFanSpeedReq, timePeriod),
                                                    .numOfItems = offsetof(SApi2SetFanSpeedReq, numOfItems),
                                                    .items = offsetof(SApi2SetFanSpeedReq, unit)};

inline constexpr FanResponseLayout kPwmFreqResponse = {.timePeriod = 0,
                                                       .numOfItems = offsetof(SApiSetFanPwmFreqResp, numOfItems),
                                                       .items = offsetof(SApiSetFanPwmFreqResp, unit)};
inline constexpr FanResponseLayout kSpeedResponse = {.timePeriod = 0,
                                                     .numOfItems = offsetof(SApiSetFanSpeedResp, numOfItems),
                                                     .items = offsetof(SApiSetFanSpeedResp, unit)};
inline constexpr FanResponseLayout kSpeedResponse2 = {.timePeriod = offsetof(SApi2SetFanSpeedResp, timePeriod),
                                                      .numOfItems = offsetof(SApi2SetFanSpeedResp, numOfItems),
                                                      .items = offsetof(SApi2SetFanSpeedResp, unit)};

/// A received request; fields beyond the payload's end are zero. The message outlives it.
class FanRequest {
 public:
  FanRequest(PayloadView payload, const FanRequestLayout& layout) : m_payload(payload), m_layout(layout) {}

  u32 TransactionId() const { return m_payload.Get<u32>(0); }
  u32 NumOfItems() const { return m_payload.Get<u32>(m_layout.numOfItems); }
  SMessageAddress Receiver() const { return m_payload.Get<SMessageAddress>(m_layout.receiver); }
  u32 TimePeriod() const { return m_payload.Get<u32>(m_layout.timePeriod); }
  /// @return the item's fan, as the wire has it
  EFanUnit Fan(u32 item) const { return m_payload.Get<EFanUnit>(ItemOffset(item)); }
  /// @return the item's second field: speed or PWM frequency
  u32 Value(u32 item) const { return m_payload.Get<u32>(ItemOffset(item) + sizeof(EFanUnit)); }

  /// Converts a request that was written in the other byte order, in place.
  void SwapBytes();
  /// @return the number of items that are to be handled; 0 items and a payload whose size does not fit the number are
  ///         a size error: logged, *failed is set, and one item is handled
  u32 CheckedNumOfItems(bool* failed) const;

 private:
  std::size_t ItemOffset(u32 item) const { return m_layout.items + std::size_t{item} * kFanRequestItemSize; }

  PayloadView m_payload;
  const FanRequestLayout& m_layout;
};

/// A response under construction; what lies beyond its end is not written. The message outlives it.
class FanResponse {
 public:
  FanResponse(void* msg, const FanResponseLayout& layout) : m_payload(msg), m_layout(layout) {}

  void SetHead(u32 transactionId, u32 numOfItems) {
    m_payload.Put(0, transactionId);
    m_payload.Put(m_layout.numOfItems, numOfItems);
  }
  void SetTimePeriod(u32 seconds) { m_payload.Put(m_layout.timePeriod, seconds); }
  void SetItem(u32 item, EFanUnit fan, u32 value, EStatus status) {
    const std::size_t offset = m_layout.items + std::size_t{item} * kFanResponseItemSize;
    m_payload.Put(offset, fan);
    m_payload.Put(offset + offsetof(SFanSpeedResp, param.speed), value);
    m_payload.Put(offset + offsetof(SFanSpeedResp, status), status);
  }
  void SetOutcome(EStatus status, const char* text);

  /// @return payload size for a number of items, in the 16 bits that the item count has there
  static int SizeFor(const FanResponseLayout& layout, u32 numOfItems) {
    const int more = static_cast<std::int16_t>(numOfItems - 1);
    return more * static_cast<int>(kFanResponseItemSize) + static_cast<int>(layout.items + kFanResponseItemSize);
  }

 private:
  PayloadView m_payload;
  const FanResponseLayout& m_layout;
};

}  // namespace ps::hwapi::common::climate
