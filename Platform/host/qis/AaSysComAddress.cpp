// Addresses and byte order.
#include "AaSysCom.h"

#include "BoardDescription.h"
#include "Export.h"

QIS_EXPORT u16 AaSysComEnd16Swap(u16 value) { return __builtin_bswap16(value); }

QIS_EXPORT u32 AaSysComEnd32Swap(u32 value) { return __builtin_bswap32(value); }

QIS_EXPORT TAaSysComNid AaSysComGetOwnNid(void) {
  const hwapi::board::Node& node = hwapi::board::OwnBoard().node;
  return u32{node.board} << 8 | node.cpu;
}

QIS_EXPORT TAaSysComSicad AaSysComSicadGet(u32 task, TAaSysComNid nid) { return nid << 16 | (task & 0xFFFFu); }

QIS_EXPORT u8 AaSysComNmapGetBoard(TAaSysComSicad sicad) { return static_cast<u8>(sicad >> 24); }

QIS_EXPORT u8 AaSysComNmapGetCpu(TAaSysComSicad sicad) { return static_cast<u8>(sicad >> 16 & 0xFFu); }

QIS_EXPORT TAaSysComSicad AaSysComNmapGetSicad(u8 board, u8 cpu, u16 task) {
  return u32{board} << 24 | u32{cpu} << 16 | task;
}
