/// @file
/// Counting semaphores. Wait and post may be called from every thread. Results are 0 on success, else an errno value
/// (EINVAL: null).
#pragma once

#include "GloTypes.h"

/// A semaphore.
struct TAaSem;

extern "C" {

/// @return a semaphore with that count, destroyed by the caller with AaSemDestroy; null when memory is short
TAaSem* AaSemCreateC(u32 initialCount);
/// Waits until the count is above 0 and takes one.
i32 AaSemWait(TAaSem* semaphore);
/// Adds one to the count.
i32 AaSemPost(TAaSem* semaphore);
/// Frees the semaphore; nobody may wait for it then.
i32 AaSemDestroy(TAaSem* semaphore);

}  // extern "C"
