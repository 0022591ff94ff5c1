/// @file
/// Status of responses and of endpoints.
#pragma once

#include "GloTypes.h"

enum EStatus : u32 {
  EStatus_NoError = 0,
  EStatus_UndefinedError = 1,
  EStatus_InvalidParam = 4,
  EStatus_Initialized = 6,    ///< value of the online tag of an endpoint that is served
  EStatus_NotInitialized = 7  ///< value of the online tag of an endpoint that has gone
};
