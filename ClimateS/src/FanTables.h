/// @file
/// How many fans each hardware version of a board has.
#pragma once

#include "HwapiUnit.h"

namespace ps::hwapi::common::climate {

/// Fans of a unit version.
struct FansOfVersion {
  EUnitVersion version;
  u32 fans;
};

inline constexpr FansOfVersion kFansOfVersion[] = {
    {.version = EUnitVersion_Kela, .fans = 2},  {.version = EUnitVersion_Kelb, .fans = 2},
    {.version = EUnitVersion_Pivoa, .fans = 2}, {.version = EUnitVersion_Vyga, .fans = 2},
    {.version = EUnitVersion_Kelbn, .fans = 2}, {.version = EUnitVersion_Pivod, .fans = 2},
    {.version = EUnitVersion_Kelg, .fans = 2},  {.version = EUnitVersion_Vyda, .fans = 3},
    {.version = EUnitVersion_Vydj, .fans = 3},  {.version = EUnitVersion_Vyea, .fans = 3},
    {.version = EUnitVersion_Kelf, .fans = 3},  {.version = EUnitVersion_Pivob, .fans = 0},
    {.version = EUnitVersion_Kele, .fans = 0},  {.version = EUnitVersion_Kelh, .fans = 0},
    {.version = EUnitVersion_Zun, .fans = 0},
};

/// Versions whose indoor cabinet decides: the smaller one has more fans.
inline constexpr EUnitVersion kVersionsByCabinet[] = {EUnitVersion_Kelc, EUnitVersion_Keld};
inline constexpr int kBackplane2Hu = 1;
inline constexpr u32 kFansIn2HuCabinet = 3;
inline constexpr u32 kFansIn3HuCabinet = 2;

}  // namespace ps::hwapi::common::climate
