/// Exempts what the black box calls.
#include "AaConfig.h"
#include "AaFile.h"
#include "AaSem.h"
#include "AaSysCom.h"
#include "AaSysLog.h"
#include "AaSysTime.h"
#include "AaTrbl.h"
#include "Exempt.h"
#include "HwapiUnit.h"
#include "ddal_board.h"
#include "ddal_product.h"

#include <cstdarg>
#include <cstdio>

using ps::hwapi::common::climate::EnoughMemory;

using Callback = int (*)(const char*, const void*);
using Removed = void (*)(const char*, const void*);
using Entry = void* (*)(void*);

EXEMPT(i32, AaConfigTagGet, (const char* name, void** value), (name, value))
EXEMPT(i32, AaConfigTagGetU32, (const char* name, u32* value), (name, value))
EXEMPT(u32, AaConfigRadGetValue, (u32 id), (id))
EXEMPT(void, AaMemUnRefDbg, (void* memory, const char* file, u32 line), (memory, file, line))

EXEMPT(TAaFile*, AaFileOpen, (const char* path, const char* mode), (path, mode))
EXEMPT(i32, AaFileClose, (TAaFile * file), (file))
EXEMPT(char*, AaFileReadLine, (char* buffer, u32 size, TAaFile* file), (buffer, size, file))
EXEMPT(u32, AaFileWrite, (const void* data, u32 size, u32 count, TAaFile* file), (data, size, count, file))
EXEMPT(i32, AaFileCopy, (const char* source, const char* target), (source, target))
EXEMPT(i32, AaFileRemove, (const char* path), (path))
EXEMPT(TBoolean, AaFileExists, (const char* path), (path))
EXEMPT(TBoolean, AaFileDirExists, (const char* path), (path))
EXEMPT(i32, AaFileCreateDir, (const char* path), (path))
EXEMPT(i32, AaFileListDir, (const char* path, char*** names, u32* count), (path, names, count))
EXEMPT(void, AaFileFreeListDirArray, (char** names, u32 count), (names, count))

EXEMPT(TAaSem*, AaSemCreateC, (u32 count), (count))
EXEMPT(i32, AaSemWait, (TAaSem * semaphore), (semaphore))
EXEMPT(i32, AaSemPost, (TAaSem * semaphore), (semaphore))
EXEMPT(i32, AaSemDestroy, (TAaSem * semaphore), (semaphore))

EXEMPT(i32, AaUtcTimeGet, (SAaTime * now), (now))
EXEMPT(i32, AaSysTimeSleep, (u32 amount, EAaSysTimeScale scale), (amount, scale))

EXEMPT(void*, AaSysComMsgCreate, (u32 id, u32 size, TAaSysComSicad receiver), (id, size, receiver))
EXEMPT(void*, AaSysComMsgGetPayload, (void* msg), (msg))
EXEMPT(u32, AaSysComMsgGetPayloadSize, (void* msg), (msg))
EXEMPT(void, AaSysComMsgSendS, (void** msg, TAaSysComSicad sender), (msg, sender))
EXEMPT(void, AaSysComMsgDestroy, (void** msg), (msg))
EXEMPT(TAaSysComNid, AaSysComGetOwnNid, (), ())
EXEMPT(TAaSysComSicad, AaSysComSicadGet, (u32 task, TAaSysComNid nid), (task, nid))
EXEMPT(u32, AaSysComUserRegister, (u32 task, TAaProEuId eu), (task, eu))
EXEMPT(i32, AaSysComUserDeregister, (u32 task), (task))
EXEMPT(TAaProEuId, AaProEuCurrent, (), ())
EXEMPT(i32, AaSysComEuCreateAndStart,
       (TAaProEuId * eu, const char* name, Entry entry, u32 stack, u32 priority, const void* argument, u32 size),
       (eu, name, entry, stack, priority, argument, size))
EXEMPT(void*, hwapiMsgQueueReceiveSelective, (u32 timeout, const u16* filter), (timeout, filter))

EXEMPT(i32, AaTrblFileRegister,
       (const char* name, const char* path, EAaTrblFilePriority priority, u32 flags, Callback prepare, Callback store,
        Removed remove, const void* context),
       (name, path, priority, flags, prepare, store, remove, context))
EXEMPT(i32, AaTrblFileUnregister, (const char* name), (name))

EXEMPT(u32, ApiGetModuleProductionCode, (char* buffer, u32 size), (buffer, size))
EXEMPT(u32, ApiGetModuleSerialNumber, (char* buffer, u32 size), (buffer, size))
EXEMPT(int, ddal_boot_get_linux_active, (u32 * fileSystem), (fileSystem))
EXEMPT(int, ddal_boot_get_linux_id, (u32 * image), (image))
EXEMPT(int, ddal_boot_get_reset_loop_count, (i32 * count), (count))
EXEMPT(int, ddal_ffs_is_mounted, (u32 fileSystem, u32* state), (fileSystem, state))
EXEMPT(int, ddal_devicetree_get_isti, (u32 index, i32* value), (index, value))
EXEMPT(int, ddal_devicetree_get_ecc_single, (u32 index, i32* value), (index, value))
EXEMPT(int, ddal_devicetree_get_ecc_double, (u32 index, i32* value), (index, value))
EXEMPT(int, ddal_psu_get_product_data, (u32 selector, void* out), (selector, out))
EXEMPT(int, ddal_filter_get_product_data, (u32 selector, void* out), (selector, out))

extern "C" void __real_AaSysLogPrintE(EAaSysLogSeverityLevel level, u32 feature, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
extern "C" void __wrap_AaSysLogPrintE(EAaSysLogSeverityLevel level, u32 feature, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
extern "C" void __wrap_AaSysLogPrintE(EAaSysLogSeverityLevel level, u32 feature, const char* format, ...) {
  const EnoughMemory memory;
  char line[1024];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof(line), format, arguments);
  va_end(arguments);
  __real_AaSysLogPrintE(level, feature, "%s", line);
}
