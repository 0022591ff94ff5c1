#include "FanMessages.h"

#include "ClimateService.h"
#include "Log.h"

#include <algorithm>
#include <cstdint>

namespace ps::hwapi::common::climate {

void FanRequest::SwapBytes() {
  m_payload.Swap32(0);
  m_payload.Swap16(m_layout.receiver + offsetof(SMessageAddress, task));
  if (m_layout.timePeriod != 0) m_payload.Swap32(m_layout.timePeriod);
  m_payload.Swap32(m_layout.numOfItems);

  const u32 items = NumOfItems();
  for (u32 i = 0; i < items && ItemOffset(i) < m_payload.Size(); ++i) {
    m_payload.Swap32(ItemOffset(i));
    m_payload.Swap32(ItemOffset(i) + sizeof(EFanUnit));
  }
}

u32 FanRequest::CheckedNumOfItems(bool* failed) const {
  const u32 items = NumOfItems();
  const std::uint64_t expected = m_layout.items + std::uint64_t{std::max(items, 1u)} * kFanRequestItemSize;
  if (items != 0 && m_payload.Size() == expected) return items;
  CLM_LOG(Error, "Message payload size seems wrong in %s (size %d != calculated size %d)", m_layout.name,
          static_cast<int>(m_payload.Size()), static_cast<int>(expected));
  *failed = true;
  return 1;
}

void FanResponse::SetOutcome(EStatus status, const char* text) {
  constexpr std::size_t kResponse = offsetof(SApiSetFanSpeedResp, response);
  static_assert(kResponse == offsetof(SApiSetFanPwmFreqResp, response));
  static_assert(kResponse == offsetof(SApi2SetFanSpeedResp, response));
  m_payload.Put(kResponse + offsetof(SHwapiOpResp, status), status);
  SHwapiOpResp response{};
  ClimateService::ClearAndFillInfotext(response.info, text);
  m_payload.Put(kResponse + offsetof(SHwapiOpResp, info), response.info);
}

}  // namespace ps::hwapi::common::climate
