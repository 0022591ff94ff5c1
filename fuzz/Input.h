/// @file
/// The bytes of one made-up input, taken one after the other.
#pragma once

#include "fake/Recorder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace fuzz {

/// Reads from the beginning to the end; behind the end there are zeros. The bytes outlive the input.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : m_next(data), m_end(data + size) {}

  bool IsEmpty() const { return m_next == m_end; }
  std::uint8_t Byte() { return IsEmpty() ? std::uint8_t{0} : *m_next++; }
  /// @return as many bytes as asked for, or as there are left
  fake::Bytes Take(std::size_t size) {
    const std::uint8_t* const begin = m_next;
    m_next += std::min(size, static_cast<std::size_t>(m_end - m_next));
    return fake::Bytes(begin, m_next);
  }

 private:
  const std::uint8_t* m_next;
  const std::uint8_t* m_end;
};

}  // namespace fuzz
