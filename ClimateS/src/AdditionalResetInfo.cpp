#include "AdditionalResetInfo.h"

#include "Log.h"
#include "ddal_board.h"

#include <unistd.h>

#include <algorithm>

namespace ps::hwapi::common::climate {

AdditionalResetInfo::AdditionalResetInfo() {
  acquireResetLoopCounter();
  determineRealRunningPartition();
}

void AdditionalResetInfo::acquireResetLoopCounter() {
  i32 value = 0;
  if (ddal_boot_get_reset_loop_count(&value) != 0) {
    CLM_LOG(Error, "Failed to read CPLD RLC register");
    resetLoopCounterValue = CPLD_READ_ERROR;
    return;
  }
  CLM_LOG(Info, "Reset loop counter value -> %d", value);
  resetLoopCounterValue = value;
  if (value >= FallbackRLCValueZun) isFallbackActive = true;
}

void AdditionalResetInfo::determineRealRunningPartition() {
  char target[30] = {};
  const ssize_t length = readlink(runningPartitionSymbolicLink.c_str(), target, sizeof(target));
  if (length < 0) {
    CLM_LOG(Error, "Failed to follow running partition symbolic link");
    return;
  }
  const std::string link(target, static_cast<std::size_t>(length));  // a long target fills all of the buffer
  const auto found = std::find(partitionNames.begin(), partitionNames.end(), link);
  runningPartition = static_cast<ePartitionNumber>(found - partitionNames.begin());
  if (runningPartition == PARTITION_INVALID) CLM_LOG(Error, "Failed to compare symbolic link name");
  checkFallbackSwitch();
  const std::string& name =
      runningPartition == PARTITION_INVALID ? runningPartitionSymbolicLink : partitionNames[runningPartition];
  CLM_LOG(Info, "Running partition -> %s, Reset partition -> %s", link.c_str(), name.c_str());
}

void AdditionalResetInfo::checkFallbackSwitch() {
  if (!isFallbackActive || runningPartition == PARTITION_INVALID) return;
  runningPartition = runningPartition == PARTITION_1 ? PARTITION_2 : PARTITION_1;
}

std::string AdditionalResetInfo::getAdditionalResetInfoString() const {
  std::string text = " Runnig partition: ";
  if (runningPartition == PARTITION_INVALID) {
    text += "Invalid";
  } else {
    text += partitionNames[runningPartition];
    if (isFallbackActive) text += " FALLBACK";
  }
  text += " RLC: ";
  if (resetLoopCounterValue == CPLD_READ_ERROR) return text + "Error";
  if (resetLoopCounterValue == CPLD_READ_NOT_SUPPORTED) return text + "Not applicable";
  return text + std::to_string(resetLoopCounterValue);
}

std::string AdditionalResetInfo::operator+(const std::string& text) const {
  return text + getAdditionalResetInfoString();
}

std::string AdditionalResetInfo::operator+(const char* text) const { return text + getAdditionalResetInfoString(); }

std::string operator+(const std::string& text, const AdditionalResetInfo& info) {
  return text + info.getAdditionalResetInfoString();
}

}  // namespace ps::hwapi::common::climate
