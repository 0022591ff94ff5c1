/// @file
/// What unit this is, and selective receive. Every function may be called from every thread.
#pragma once

#include "GloTypes.h"

/// Board family.
enum EUnitType : u32 {
  EUnitType_Kel = 9,
  EUnitType_Pivo = 10,
  EUnitType_Vyd = 11,
  EUnitType_Vyg = 12,
  EUnitType_Zun = 19,
  EUnitType_Unknown = 22
};

/// Hardware version of a board.
enum EUnitVersion : u32 {
  EUnitVersion_Unallocated = 0,
  EUnitVersion_Kela = 15,
  EUnitVersion_Kelb = 16,
  EUnitVersion_Kelc = 17,
  EUnitVersion_Keld = 18,
  EUnitVersion_Pivoa = 24,
  EUnitVersion_Pivob = 25,
  EUnitVersion_Vyda = 26,
  EUnitVersion_Vydj = 27,
  EUnitVersion_Vyea = 28,
  EUnitVersion_Vyga = 30,
  EUnitVersion_Kele = 31,
  EUnitVersion_Kelbn = 33,
  EUnitVersion_Pivoc = 38,
  EUnitVersion_Pivod = 39,
  EUnitVersion_Kelf = 41,
  EUnitVersion_Kelh = 43,
  EUnitVersion_Zun = 51,
  EUnitVersion_Kelg = 58
};

extern "C" {

/// @return board family of this unit; EUnitType_Unknown when it is not told
EUnitType ApiGetLocalUnitType(void);
/// @return hardware version of this unit; EUnitVersion_Unallocated when it is not told
EUnitVersion ApiGetLocalUnitVersion(void);
/// Reads the module's production code into @p buffer, cut to @p size - 1 characters and zero-terminated.
/// @return 1 on success, else 0
u32 ApiGetModuleProductionCode(char* buffer, u32 size);
/// Reads the module's serial number, as ApiGetModuleProductionCode.
u32 ApiGetModuleSerialNumber(char* buffer, u32 size);

/// Waits for a message to the calling EU with one of the ids of @p filter (a count, then that many ids); others stay
/// queued, in order.
/// @return the message, owned by the caller; null after @p timeoutUs microseconds
void* hwapiMsgQueueReceiveSelective(u32 timeoutUs, const u16* filter);

}  // extern "C"
