// Whether the threads of the process go on.
#include "AaProWatch.h"

#include "Export.h"
#include "MissedLooks.h"
#include "ThreadWatch.h"

using hwapi::qis::Rest;
using hwapi::qis::WatchedThread;

QIS_EXPORT void AaProRestBegin(void) { Rest::Begin(); }

QIS_EXPORT void AaProRestEnd(void) { Rest::End(); }

QIS_EXPORT TBoolean AaProAllAlive(char* name, u32 size) {
  hwapi::qis::MissedLooks::Own()->Looked();
  return WatchedThread::AllAlive(name, size) ? GLO_TRUE : GLO_FALSE;
}
