/// @file
/// Makes what this library defines of the contract visible outside it.
#pragma once

#pragma GCC visibility push(default)
#include "Service.h"
#pragma GCC visibility pop

#define NUB_API extern "C" __attribute__((visibility("default")))
