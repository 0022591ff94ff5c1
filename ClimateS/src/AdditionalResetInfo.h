/// @file
/// The board's boot state, as it stands behind each entry of the reset history.
#pragma once

#include "GloTypes.h"

#include <array>
#include <string>

namespace ps::hwapi::common::climate {

enum ePartitionNumber { PARTITION_1 = 0, PARTITION_2 = 1, PARTITION_INVALID = 2 };

/// Which partition is considered the running one, and how often in a row the board was reset: as they are when the
/// object is made. Used by one thread at a time.
class AdditionalResetInfo {
 public:
  static constexpr i32 FallbackRLCValueZun = 7;       ///< from this counter value on the boot falls back
  static constexpr i32 CPLD_READ_ERROR = -1;          ///< the counter cannot be read
  static constexpr i32 CPLD_READ_NOT_SUPPORTED = -2;  ///< the board has no counter

  AdditionalResetInfo();
  virtual ~AdditionalResetInfo() = default;

  /// @name Steps of the construction
  ///@{
  void acquireResetLoopCounter();
  void checkFallbackSwitch();
  void determineRealRunningPartition();
  ///@}

  /// @return e.g. " Runnig partition: /ffs/fs1 RLC: 0", with its leading blank
  std::string getAdditionalResetInfoString() const;

  /// @return @p text, then the information: the text comes first although it stands behind the operator
  std::string operator+(const std::string& text) const;
  std::string operator+(const char* text) const;

 private:
  std::array<std::string, 2> partitionNames = {"/ffs/fs1", "/ffs/fs2"};
  const std::string runningPartitionSymbolicLink = "/ffs/run";
  i32 resetLoopCounterValue = CPLD_READ_ERROR;
  ePartitionNumber runningPartition = PARTITION_INVALID;
  bool isFallbackActive = false;
};

/// @return @p text, then the information
std::string operator+(const std::string& text, const AdditionalResetInfo& info);

}  // namespace ps::hwapi::common::climate
