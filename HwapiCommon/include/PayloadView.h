/// @file
/// Bounded access to payloads whose length the wire decides.
#pragma once

#include "AaSysCom.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace ps::hwapi::common {

/// A message's payload of a variable number of items. Bytes outside the payload read as zero and are not written.
/// Owns nothing; the message outlives the view.
class PayloadView {
 public:
  explicit PayloadView(void* msg)
      : m_data(static_cast<u8*>(AaSysComMsgGetPayload(msg))),
        m_size(m_data != nullptr ? AaSysComMsgGetPayloadSize(msg) : 0) {}
  /// @param data null: there is no payload, whatever @p size is
  PayloadView(void* data, std::size_t size) : m_data(static_cast<u8*>(data)), m_size(data != nullptr ? size : 0) {}

  /// @return payload size in bytes
  std::size_t Size() const { return m_size; }

  template <typename T>
  T Get(std::size_t offset) const {
    static_assert(std::is_trivially_copyable_v<T>);
    T value{};
    if (const std::size_t held = Held(offset, sizeof(T)); held != 0) {
      std::memcpy(static_cast<void*>(&value), m_data + offset, held);
    }
    return value;
  }

  template <typename T>
  void Put(std::size_t offset, const T& value) {
    static_assert(std::is_trivially_copyable_v<T>);
    if (const std::size_t held = Held(offset, sizeof(T)); held != 0) std::memcpy(m_data + offset, &value, held);
  }

  /// Converts a 32-bit field of the other byte order.
  void Swap32(std::size_t offset) { Put(offset, AaSysComEnd32Swap(Get<u32>(offset))); }
  /// Converts a 16-bit field of the other byte order.
  void Swap16(std::size_t offset) { Put(offset, AaSysComEnd16Swap(Get<u16>(offset))); }

 private:
  std::size_t Held(std::size_t offset, std::size_t size) const {
    if (offset >= m_size) return 0;
    return size < m_size - offset ? size : m_size - offset;
  }

  u8* m_data;
  std::size_t m_size;
};

}  // namespace ps::hwapi::common
