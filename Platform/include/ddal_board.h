/// @file
/// What the board itself tells: backplane, boot data, flash file systems, device tree.
#pragma once

#include "GloTypes.h"

/// File systems as the boot data name them.
inline constexpr u32 DDAL_FFS_FS1 = 53;  ///< mounted at /ffs/fs1
inline constexpr u32 DDAL_FFS_FS2 = 54;  ///< mounted at /ffs/fs2

/// Mount state of a flash file system.
enum EDdalMountState : u32 { DDAL_FFS_UNMOUNTED = 0, DDAL_FFS_READ_ONLY = 1, DDAL_FFS_WRITABLE = 2 };

extern "C" {

/// Reads the indoor cabinet's backplane: 1 is the 2HU cabinet, any other value the 3HU one.
int ddal_bp_3hu_backplane_type_get(int* type);

/// Reads the file system of the active software image (DDAL_FFS_FS1 or DDAL_FFS_FS2).
int ddal_boot_get_linux_active(u32* fileSystem);
/// Reads which software image runs: 0 active, 1 passive.
int ddal_boot_get_linux_id(u32* image);
/// Reads the counter of resets in a row that the boot logic keeps.
int ddal_boot_get_reset_loop_count(i32* count);

/// Reads the mount state of a flash file system (EDdalMountState).
int ddal_ffs_is_mounted(u32 fileSystem, u32* state);

/// Reads the unit's ISTI number; @p index is 0.
int ddal_devicetree_get_isti(u32 index, i32* value);
/// Reads the counter of corrected memory errors; @p index is 0.
int ddal_devicetree_get_ecc_single(u32 index, i32* value);
/// Reads the counter of uncorrected memory errors; @p index is 0.
int ddal_devicetree_get_ecc_double(u32 index, i32* value);

}  // extern "C"
