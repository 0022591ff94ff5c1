/// What the troubleshooting service asks of the black box.
#include "AaTrbl.h"
#include "BlackBoxData.h"
#include "BlackBoxFile.h"
#include "Log.h"

#include <new>

namespace ps::hwapi::common::climate {

/// A file that is collected, and how it is made when there is none. Which one is meant tells the first row whose path
/// contains the asked name.
struct BlackBoxData::CollectedFile {
  Published<std::string> BlackBoxData::*location;
  u32 (BlackBoxData::*create)();
};

constexpr BlackBoxData::CollectedFile BlackBoxData::kCollectedFiles[] = {
    {.location = &BlackBoxData::blackboxFileLocation, .create = &BlackBoxData::createBlackboxFile},
    {.location = &BlackBoxData::tempFileLocation, .create = &BlackBoxData::writeTempAndSpeedDataToFile},
    {.location = &BlackBoxData::alarmFileLocation, .create = &BlackBoxData::copyAlarmsFile},
    {.location = &BlackBoxData::sfpFileLocation, .create = &BlackBoxData::CopySfpFileIfThereIsOne},
};

u32 BlackBoxData::CopySfpFileIfThereIsOne() { return CanBeRead(PathIn(oamSfpFileLocation)) ? copySfpFile() : 1; }

bool BlackBoxData::IsReadyForTechlog(const std::string& fileName) {
  for (const CollectedFile& row : kCollectedFiles) {
    const std::string path = PathIn(this->*row.location);
    if (path.find(fileName) == std::string::npos) continue;
    return CanBeRead(path) || (this->*row.create)() != 0;
  }
  if (isStoredFile(fileName)) {
    CLM_LOG(Debug, "BlackBoxData::prepareFileForTechlog(): %s file is a stored file", fileName.c_str());
    return true;
  }
  CLM_LOG(Error, "BlackBoxData::prepareFileForTechlog(): unknown file: %s", fileName.c_str());
  return false;
}

int BlackBoxData::prepareFileForTechlog(const char* fileName) try {
  const std::string name = fileName != nullptr ? fileName : "";
  if (!IsReadyForTechlog(name)) {
    CLM_LOG(Warning, "BlackBoxData::prepareFileForTechlog(): %s file is not ready for techlog upload", name.c_str());
    return EAaTrblCbStatus_NotReady;
  }
  CLM_LOG(Debug, "BlackBoxData::prepareFileForTechlog(): %s file is ready for techlog upload", name.c_str());
  return EAaTrblCbStatus_Ok;
} catch (const std::bad_alloc&) {
  LogOutOfMemory("prepareFileForTechlog");
  return EAaTrblCbStatus_NotReady;
}

int techlogPrepareFileCb(const char* fileName, const void* /*context*/) {
  return BlackBoxData::getInstance()->prepareFileForTechlog(fileName);
}

int techlogStoreFileCb(const char* /*fileName*/, const void* /*context*/) { return EAaTrblCbStatus_Ok; }

void techlogDeleteFileCb(const char* /*fileName*/, const void* /*context*/) {}

}  // namespace ps::hwapi::common::climate
