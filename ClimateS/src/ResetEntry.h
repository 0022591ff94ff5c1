/// @file
/// An entry of the reset history, taken apart.
#pragma once

#include <cstddef>
#include <string>

namespace ps::hwapi::common::climate {

/// The entry's words. An entry reads: time, reset text, " : ", category, extended information, boot state.
struct ResetEntry {
  /// What separates the reset text from the category.
  static constexpr const char* kCategoryMark = " : ";
  static constexpr std::size_t kTextSize = 90;
  static constexpr std::size_t kCategorySize = 40;
  static constexpr std::size_t kExtendedSize = 60;

  /// Takes an entry apart; what it lacks is empty.
  explicit ResetEntry(const std::string& entry);

  char text[kTextSize] = {};          ///< what stands before the first ':' behind the time
  char category[kCategorySize] = {};  ///< the word behind it
  char extended[kExtendedSize] = {};  ///< the word behind that
};

}  // namespace ps::hwapi::common::climate
