/// @file
/// Troubleshooting files: files that travel with the technical log. Both functions may be called from every thread.
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

extern "C" {

/// Registers a file. The callbacks run on a platform thread, one at a time.
/// @param name     name under which the file travels, unique in the process
/// @param path     full path
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
/// Takes a file out of the registry.
/// @return EAaTrblRet_Ok, else EAaTrblRet_Failed when the name is unknown
i32 AaTrblFileUnregister(const char* name);

}  // extern "C"
