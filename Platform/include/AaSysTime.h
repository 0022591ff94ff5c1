/// @file
/// Timers, sleeping and the board's clocks. All times are board time: a board description may let it run faster than
/// the host's. Every function may be called from every thread.
#pragma once

#include "GloTypes.h"

/// A running timer; 0 is none.
using TAaSysTimerId = u32;

/// Unit of an amount of time.
enum EAaSysTimeScale : u32 { EAaSysTimeScale_Microsec = 0, EAaSysTimeScale_Millisec = 1, EAaSysTimeScale_Sec = 2 };

/// A calendar time.
struct SAaTime {
  u32 year;      ///< full year, e.g. 2024
  u32 month;     ///< 1 to 12
  u32 day;       ///< 1 to 31
  u32 hour;      ///< 0 to 23
  u32 minute;    ///< 0 to 59
  u32 second;    ///< 0 to 59
  u32 millisec;  ///< 0 to 999
};
static_assert(sizeof(SAaTime) == 28);

extern "C" {

/// Starts a timer. At each expiry a copy of @p msg is sent to its receiver with its sender. Periods are kept on a
/// monotonic grid: late expiries do not shift later ones, and expiries that were missed whole are skipped.
/// @param id       out: the timer; untouched on failure
/// @param firstUs  microseconds to the first expiry
/// @param periodUs microseconds between later expiries; 0: expires once
/// @param msg      the message to send; belongs to the timer on success, stays the caller's on failure
/// @return 0 on success, else an errno value (EINVAL: null argument)
i32 AaSysTimermCreate(TAaSysTimerId* id, u32 firstUs, u32 periodUs, void* msg);
/// Stops a timer and frees its message. Copies that are already sent stay queued.
/// @return 0; also for 0, an expired timer or an unknown one, which are harmless
i32 AaSysTimerDelete(TAaSysTimerId id);

/// Suspends the calling thread.
/// @return 0, or EINVAL for an unknown scale
i32 AaSysTimeSleep(u32 amount, EAaSysTimeScale scale);

/// Reads the board's clock as UTC.
/// @return 0, or an errno value when the clock cannot be read; *now is untouched then
i32 AaUtcTimeGet(SAaTime* now);
/// Reads the board's clock as local time; otherwise as AaUtcTimeGet.
i32 AaLocalTimeGet(SAaTime* now);
/// Sets the board's clock, for every process of the board. Timers and sleeps are not moved by it.
/// @return 0; EINVAL when @p utc is no calendar time, another errno value when the clock cannot be set
i32 AaUtcTimeSet(const SAaTime* utc);

}  // extern "C"
