/// @file
/// Troubleshooting files: files that travel with the technical log. A process registers its files; a collector visits
/// those of every process of the board. Every function may be called from every thread unless it says otherwise.
#pragma once

#include "GloTypes.h"

/// How early a file is collected.
enum EAaTrblFilePriority : u32 {
  EAaTrblFilePriority_Low = 0,
  EAaTrblFilePriority_Normal = 1,
  EAaTrblFilePriority_High = 2
};

/// Results of the registry.
enum EAaTrblRet : i32 { EAaTrblRet_Ok = 0, EAaTrblRet_Failed = 1 };

/// Results of the callbacks.
enum EAaTrblCbStatus : i32 { EAaTrblCbStatus_Ok = 0, EAaTrblCbStatus_Failed = 1, EAaTrblCbStatus_NotReady = 2 };

/// What became of a file that a collector asked for. Where it says "process", no single file may be concerned.
enum EAaTrblCollect : i32 {
  EAaTrblCollect_Ok = 0,         ///< its content is there
  EAaTrblCollect_NotReady = 1,   ///< prepare answered EAaTrblCbStatus_NotReady
  EAaTrblCollect_Failed = 2,     ///< prepare answered anything else, or threw
  EAaTrblCollect_NoFile = 3,     ///< prepare was content, but the file cannot be opened, or is no regular one
  EAaTrblCollect_Withdrawn = 4,  ///< it was taken out of the registry meanwhile
  EAaTrblCollect_Gone = 5,       ///< its process ended meanwhile
  EAaTrblCollect_NoAnswer = 6,   ///< its process did not answer in time, now or for an earlier file
  EAaTrblCollect_Refused = 7     ///< its process does not hand files to this user
};

/// A file as a collector sees it. Valid during the visitor's call only.
struct SAaTrblFile {
  const char* name;              ///< as it was registered; may hold any characters. Null: the process as a whole
  const char* path;              ///< as it was registered, in the root of its process; null where name is
  EAaTrblFilePriority priority;  ///< as it was registered
  u32 process;                   ///< process id
  EAaTrblCollect result;         ///< what became of it
  i32 error;                     ///< errno value of EAaTrblCollect_NoFile, else 0
  int content;                   ///< descriptor of a regular file, at its beginning, to be read only; the platform
                                 ///< closes it after the call. -1 unless the result is EAaTrblCollect_Ok
};

/// Called for a file, on the thread of AaTrblCollect.
/// @return GLO_TRUE when the content was copied: the file's store callback is called then
using TAaTrblVisitor = TBoolean (*)(const SAaTrblFile* file, void* context);

/// Most bytes of a name and of a path, without the terminating zero.
inline constexpr u32 AATRBL_MAX_NAME = 255;
inline constexpr u32 AATRBL_MAX_PATH = 4095;

extern "C" {

/// Registers a file. The callbacks run on a platform thread, one at a time; what they throw is caught and logged.
/// @param name     name under which the file travels, unique in the process, at most AATRBL_MAX_NAME bytes
/// @param path     full path, at most AATRBL_MAX_PATH bytes
/// @param priority how early it is collected
/// @param flags    0
/// @param prepare  called before the file is copied; EAaTrblCbStatus_Ok lets it be copied
/// @param store    called after it was copied
/// @param remove   called when it was deleted by the collector
/// @param context  handed to the callbacks; stays the caller's
/// @return EAaTrblRet_Ok, else EAaTrblRet_Failed
i32 AaTrblFileRegister(const char* name, const char* path, EAaTrblFilePriority priority, u32 flags,
                       int (*prepare)(const char*, const void*), int (*store)(const char*, const void*),
                       void (*remove)(const char*, const void*), const void* context);
/// Takes a file out of the registry. A callback that runs at this moment goes on to its end.
/// @return EAaTrblRet_Ok, else EAaTrblRet_Failed when the name is unknown
i32 AaTrblFileUnregister(const char* name);

/// Visits the registered files of every process of the board, those of high priority first, of one priority by process
/// and in the order of their registration. Each file is prepared in its process, opened there and handed to the
/// visitor, then stored. A file that cannot be had is visited too, with the reason as its result, and so is a process
/// that tells nothing of its files. Not to be called from a callback of a file.
/// @param timeoutMs longest wait for one answer of a process, in milliseconds of real time, whatever the board's clock
///                  does; a process that takes longer is not asked again
/// @param visitor   called for each file
/// @param context   handed to the visitor
/// @return EAaTrblRet_Ok when at least one process told its files, else EAaTrblRet_Failed
i32 AaTrblCollect(u32 timeoutMs, TAaTrblVisitor visitor, void* context);

}  // extern "C"
