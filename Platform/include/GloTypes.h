/// @file
/// Base types of every platform interface.
#pragma once

#include <cstdint>

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using i32 = std::int32_t;

/// Truth value as the platform passes it: 32 bits, 0 is false, anything else is true.
using TBoolean = u32;

inline constexpr TBoolean GLO_FALSE = 0;
inline constexpr TBoolean GLO_TRUE = 1;

/// The platform's null pointer.
#define GLO_NULL nullptr
