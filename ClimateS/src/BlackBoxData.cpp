#include "BlackBoxData.h"

#include "AaConfig.h"
#include "AaTrbl.h"
#include "BlackBoxFile.h"
#include "LifedataDirectory.h"
#include "Log.h"
#include "Patience.h"
#include "TechlogFile.h"

#include <memory>
#include <new>

namespace ps::hwapi::common::climate {
namespace {

struct ReleaseText {
  void operator()(void* text) const { AaMemUnRefDbg(text, __FILE_NAME__, __LINE__); }
};

/// Takes over the reference to a tag's text; null is the empty text.
std::string TakeText(void* text) {
  const std::unique_ptr<void, ReleaseText> reference(text);
  return text != nullptr ? static_cast<const char*>(text) : "";
}

}  // namespace

/// A tag with the path of a file.
struct BlackBoxData::PathTag {
  const char* tag;
  Published<std::string> BlackBoxData::*location;
  bool collected;     ///< the file travels with the technical log
  bool resultLogged;  ///< the line of a tag that cannot be read tells the result
};

constexpr BlackBoxData::PathTag BlackBoxData::kPathTags[] = {
    {.tag = "app.hwapi.blackbox.config.file",
     .location = &BlackBoxData::configFileLocation,
     .collected = false,
     .resultLogged = true},
    {.tag = "app.hwapi.blackbox.file",
     .location = &BlackBoxData::blackboxFileLocation,
     .collected = true,
     .resultLogged = true},
    {.tag = kTraceFileTag, .location = &BlackBoxData::tempFileLocation, .collected = true, .resultLogged = true},
    {.tag = "app.hwapi.blackbox.alarms.file",
     .location = &BlackBoxData::alarmFileLocation,
     .collected = true,
     .resultLogged = true},
    {.tag = "app.hwapi.blackbox.oam.alarms.file",
     .location = &BlackBoxData::oamAlarmFileLocation,
     .collected = false,
     .resultLogged = false},
    {.tag = "app.hwapi.blackbox.sfp.file",
     .location = &BlackBoxData::sfpFileLocation,
     .collected = true,
     .resultLogged = true},
    {.tag = "app.hwapi.blackbox.oam.sfp.file",
     .location = &BlackBoxData::oamSfpFileLocation,
     .collected = false,
     .resultLogged = false},
};

BlackBoxData::BlackBoxData() = default;

BlackBoxData::~BlackBoxData() {
  if (TAaSem* const semaphore = ringBufferSyncSemaphore.exchange(nullptr)) AaSemDestroy(semaphore);
}

BlackBoxData* BlackBoxData::getInstance() {
  static auto* const instance = new BlackBoxData;
  return instance;
}

u32 BlackBoxData::init(EUnitType type) try {
  unitType = type;
  if (AaFileDirExists(kLifedataDirectory) == GLO_FALSE && AaFileCreateDir(kLifedataDirectory) != 0) {
    CLM_LOG(Error, "BlackBoxData::init(): Failed to get create directory %s", kLifedataDirectory);
    return 0;
  }
  for (const PathTag& row : kPathTags) {
    if (!ReadPathTag(row)) return 0;
  }
  if (createConfigFile() == 0) return 0;
  cleanupOldFiles();
  readTempDataFromFile();
  readResetReasonsFromFile();
  checkResetType();
  ringBufferSyncSemaphore = AaSemCreateC(1);
  blackBoxInitialized = 1;
  CLM_LOG(Info, "BlackBoxData::init(): blackbox initialized successfully");
  registerSelfTestFiles();
  return 1;
} catch (const std::bad_alloc&) {
  LogOutOfMemory("init");
  return 0;
}

bool BlackBoxData::ReadPathTag(const PathTag& row) {
  void* value = nullptr;
  const i32 ret = AaConfigTagGet(row.tag, &value);
  if (ret != 0 && value == nullptr) {
    if (row.resultLogged) {
      CLM_LOG(Error, "BlackBoxData::init(): Failed to get tag %s, ret=%d", row.tag, ret);
    } else {
      CLM_LOG(Error, "BlackBoxData::init(): Failed to get tag %s", row.tag);
    }
    return false;
  }
  const std::string path = TakeText(value);
  (this->*row.location).Set(path);
  if (!row.collected) return true;
  const i32 registered = RegisterTechlogFile(basename(path), path);
  if (registered == EAaTrblRet_Ok) return true;
  CLM_LOG(Error, "BlackBoxData::init(): Failed to get register file %s to AaTrbl, ret=%d", row.tag, registered);
  return false;
}

void BlackBoxData::createDataFiles() {
  Patience patience;
  WriteDataFiles(patience);
}

void BlackBoxData::createDataFilesBeforeReset() {
  Patience patience;
  WriteDataFiles(patience);
  patience.WaitUntil([this] { return boardFileWriters == 0; });
}

void BlackBoxData::WriteDataFiles(Patience& patience) {
  if (blackBoxInitialized == 0) return;
  createBlackboxFile();
  copyAlarmsFile();
  copySfpFile();
  if (blackBoxTemperatureTraceEnabled == 0) return;
  if (firstSnapshotDone == 0) TakeSnapshot(patience);
  WriteTraceFile(patience);
}

void LogOutOfMemory(const char* operation) { CLM_LOG(Error, "BlackBoxData::%s(): out of memory", operation); }

}  // namespace ps::hwapi::common::climate
