/// @file
/// What the platform calls of the black box. All of it is of the process's one, BlackBoxData::getInstance().
#pragma once

namespace ps::hwapi::common::climate {

// Callbacks of the troubleshooting service, on its threads.
int techlogPrepareFileCb(const char* fileName, const void* context);
int techlogStoreFileCb(const char* fileName, const void* context);
void techlogDeleteFileCb(const char* fileName, const void* context);

// Threads; the first two never end.
void* waitingForTheSnapshotTmo(void* argument);
void* waitingForTheFileStoringTmo(void* argument);
void* waitingForNTPTime(void* argument);

}  // namespace ps::hwapi::common::climate
