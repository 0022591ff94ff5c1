/// @file
/// A platform that has enough memory, and whose allocations do not count, whatever the service has: the linker (--wrap)
/// leads a function that is named here through a wrapper.
#pragma once

#include "FailingMemory.h"

#define EXEMPT(result, name, parameters, arguments)              \
  extern "C" result __real_##name parameters;                    \
  extern "C" result __wrap_##name parameters {                   \
    const ps::hwapi::common::climate::EnoughMemory exemptMemory; \
    return __real_##name arguments;                              \
  }
