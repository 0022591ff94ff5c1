/// @file
/// Text fields of messages.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>

namespace ps::hwapi::common::climate {

/// @return the text of a field, whether or not it has its terminating zero
template <std::size_t N>
std::string TextOf(const char (&field)[N]) {
  return std::string(field, strnlen(field, N));
}

}  // namespace ps::hwapi::common::climate
