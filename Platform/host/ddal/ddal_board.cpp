#include "ddal_board.h"

#include "BoardDescription.h"
#include "Export.h"
#include "SimHardware.h"
#include "Sysfs.h"
#include "ddal_error.h"

#include <mntent.h>

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

using namespace hwapi;

namespace {

/// Gives what the description tells.
template <typename Value>
int Give(const std::optional<Value>& told, Value* value) {
  if (value == nullptr) return DDAL_ERR_INVALID;
  if (!told) return DDAL_ERR_NOT_SUPPORTED;
  *value = *told;
  return DDAL_OK;
}

/// Gives the value number @p index of a property that has one.
int Give(u32 index, const std::optional<i32>& told, i32* value) {
  return index == 0 ? Give(told, value) : DDAL_ERR_INVALID;
}

/// @return mount state of a folder as the kernel's table has it; the last mount on it counts
std::optional<u32> MountState(std::string_view folder) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> table(setmntent("/proc/self/mounts", "re"), endmntent);
  if (table == nullptr) return std::nullopt;
  u32 state = DDAL_FFS_UNMOUNTED;
  mntent entry{};
  char text[4096];
  while (getmntent_r(table.get(), &entry, text, sizeof text) != nullptr) {
    if (folder != entry.mnt_dir) continue;
    state = hasmntopt(&entry, MNTOPT_RO) != nullptr ? DDAL_FFS_READ_ONLY : DDAL_FFS_WRITABLE;
  }
  return state;
}

/// @return the number that a counter shows; none when it shows none. One that is too large for its type is at its end.
std::optional<i32> CounterIn(const std::string& text) {
  std::uint64_t count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  if (error == std::errc::invalid_argument) return std::nullopt;
  return error == std::errc() && count < INT32_MAX ? static_cast<i32>(count) : INT32_MAX;
}

/// @return sum of a counter over the kernel's memory controllers; none when it watches no memory
std::optional<i32> MemoryErrors(const char* counter) {
  const std::string controllers = ddal::SysfsRoot() + "/devices/system/edac/mc";
  std::optional<i32> sum;
  for (const std::string& name : ddal::ListFolder(controllers, "mc")) {
    const std::optional<i32> count = CounterIn(ddal::ReadLine(controllers + '/' + name + '/' + counter));
    i32 total = 0;
    if (count) sum = __builtin_add_overflow(sum.value_or(0), *count, &total) ? INT32_MAX : total;
  }
  return sum;
}

/// Gives what the simulator has set, or what the description says until it has.
template <typename Value>
int GiveSet(ddal::Register ddal::SimRegisters::*isSet, Value ddal::SimRegisters::*set, const std::optional<Value>& told,
            Value* value) {
  if (value == nullptr) return DDAL_ERR_INVALID;
  ddal::SimHardware& hardware = ddal::SimHardware::Own();
  ddal::Register flag = 0;
  Value read{};
  const bool given = hardware.Read(ddal::kSimFile->*isSet, &flag) == DDAL_OK && flag != 0 &&
                     hardware.Read(ddal::kSimFile->*set, &read) == DDAL_OK;
  return Give(given ? std::optional(read) : told, value);
}

}  // namespace

GARDDAL_API int ddal_bp_3hu_backplane_type_get(int* type) { return Give(board::OwnBoard().backplaneType, type); }

GARDDAL_API int ddal_boot_get_linux_active(u32* fileSystem) {
  using ddal::SimRegisters;
  return GiveSet(&SimRegisters::linuxActiveIsSet, &SimRegisters::linuxActive, board::OwnBoard().boot.active,
                 fileSystem);
}

GARDDAL_API int ddal_boot_get_linux_id(u32* image) { return Give(board::OwnBoard().boot.image, image); }

GARDDAL_API int ddal_boot_get_reset_loop_count(i32* count) {
  using ddal::SimRegisters;
  return GiveSet(&SimRegisters::resetLoopCountIsSet, &SimRegisters::resetLoopCount,
                 board::OwnBoard().boot.resetLoopCount, count);
}

GARDDAL_API int ddal_ffs_is_mounted(u32 fileSystem, u32* state) {
  if (fileSystem != DDAL_FFS_FS1 && fileSystem != DDAL_FFS_FS2) return DDAL_ERR_INVALID;
  const bool first = fileSystem == DDAL_FFS_FS1;
  const auto& mounts = board::OwnBoard().mounts;
  const auto& told = first ? mounts.fs1 : mounts.fs2;
  return Give(told ? told : MountState(first ? "/ffs/fs1" : "/ffs/fs2"), state);
}

GARDDAL_API int ddal_devicetree_get_isti(u32 index, i32* value) {
  return Give(index, board::OwnBoard().deviceTree.isti, value);
}

GARDDAL_API int ddal_devicetree_get_ecc_single(u32 index, i32* value) {
  const auto& told = board::OwnBoard().deviceTree.eccSingle;
  return Give(index, told ? told : MemoryErrors("ce_count"), value);
}

GARDDAL_API int ddal_devicetree_get_ecc_double(u32 index, i32* value) {
  const auto& told = board::OwnBoard().deviceTree.eccDouble;
  return Give(index, told ? told : MemoryErrors("ue_count"), value);
}
