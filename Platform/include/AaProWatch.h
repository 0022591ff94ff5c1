/// @file
/// Whether the threads of this process go on. Watched are those that AaSysComEuCreateAndStart started, and the
/// platform's own for messages of other processes, timers, tags and troubleshooting files, and the one that looks.
///
/// A thread is at work or at rest. At rest it waits for what may never come: in AaSysTimeSleep, in AaSysComMsgReceive,
/// and between AaProRestBegin and AaProRestEnd. Whoever waits for a semaphore or a file is at work. Every function may
/// be called from every thread unless it says otherwise.
#pragma once

#include "GloTypes.h"

/// Bytes that suffice for the name of a thread and its terminating zero.
inline constexpr u32 AAPRO_NAME_SIZE = 16;

extern "C" {

/// The calling thread rests from here on. Rests may be nested: it does until the first one ends. Harmless on a thread
/// that is not watched.
void AaProRestBegin(void);
/// The calling thread is at work again. Each call ends one AaProRestBegin of the same thread.
void AaProRestEnd(void);

/// Looks at the watched threads. One that is at work at three looks in a row, and has not rested from the first to the
/// last, hangs. To be called by one thread, with the same time between the looks: a thread may be at work for twice
/// that time. When the looks stop because that thread or the one for timers hangs, the log names it once.
/// @param name receives the name of a thread that hangs, "" when there is none; cut to @p size; null: not wanted
/// @param size bytes that @p name has room for, AAPRO_NAME_SIZE or more for every name as a whole
/// @return GLO_FALSE when a thread hangs
TBoolean AaProAllAlive(char* name, u32 size);

}  // extern "C"
