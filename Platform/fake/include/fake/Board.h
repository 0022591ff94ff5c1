/// @file
/// What the board and its unit tell.
#pragma once

#include "GloTypes.h"
#include "HwapiUnit.h"
#include "ddal_board.h"
#include "ddal_product.h"

#include <map>
#include <string>

namespace fake {

/// The board; after a Reset as written here.
struct BoardData {
  int backplaneType = 0;
  u32 activeFileSystem = DDAL_FFS_FS1;
  u32 runningImage = 0;
  i32 resetLoopCount = 0;
  std::map<u32, u32> mountStates = {{DDAL_FFS_FS1, DDAL_FFS_WRITABLE}, {DDAL_FFS_FS2, DDAL_FFS_WRITABLE}};
  i32 isti = 0;
  i32 eccSingle = 0;
  i32 eccDouble = 0;
  /// Product data by selector; one that is missing answers DDAL_ERR_NO_DEVICE.
  std::map<u32, std::string> psu = {};
  std::map<u32, std::string> filter = {};  ///< the texts
  std::map<u32, i32> filterNumbers = {};   ///< the numbers, e.g. of DDAL_FILTER_HWSWID
  bool unterminated = false;               ///< product texts fill their buffer: a zero stands there only when it fits
  std::string initProblem = {};            ///< makes ddal_init fail when it is not empty
};

/// The unit; after a Reset as written here.
struct UnitData {
  EUnitType type = EUnitType_Kel;
  EUnitVersion version = EUnitVersion_Kela;
  std::string productionCode = "472000A";
  std::string serialNumber = "K9000000001";
  bool unterminated = false;  ///< the two texts fill their buffer: a zero stands there only when it fits
};

/// The board's data, to be changed in place. Not guarded: change it while no other thread uses the platform.
BoardData& Board();
/// The unit's data, likewise.
UnitData& Unit();

}  // namespace fake
