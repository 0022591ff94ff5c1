/// The configuration file, the copies of logs, and the copy of the board file for the other image.
#include "BlackBoxData.h"
#include "BlackBoxFile.h"
#include "Log.h"
#include "ddal_board.h"

#include <cstdio>
#include <new>

namespace ps::hwapi::common::climate {
namespace {

constexpr u32 kConfigLineSize = 256;
constexpr const char* kRunningFileSystem = "/ffs/run/";
constexpr const char* kStandbyBoardFile = "/ffs/stb/config/lifedata/blackbox";

constexpr u32 kActiveImage = 0;
constexpr u32 kPassiveImage = 1;

/// Reads a file to its end.
/// @return what it holds, lines as the platform gives them; of one that is longer than @p wanted bytes, a beginning
///         that is longer as well
std::string ContentOf(TAaFile* file, std::size_t wanted) {
  std::string content;
  char line[kConfigLineSize] = {};
  const char* more = nullptr;
  do {
    more = AaFileReadLine(line, kConfigLineSize, file);
    if (content.size() <= wanted) content += line;
  } while (more != nullptr);
  return content;
}

/// @return the file system that does not run; 0, which is none, when that cannot be told
u32 NonRunningFileSystem(u32 runningSw, u32 activeFs) {
  if (runningSw != kActiveImage && runningSw != kPassiveImage) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, ERadHwapi_PrintBlackboxService,
                   "BlackboxData::CopyFileToNonRunningFS() Invalid running file id %d", static_cast<int>(runningSw));
    return 0;
  }
  if (activeFs != DDAL_FFS_FS1 && activeFs != DDAL_FFS_FS2) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, ERadHwapi_PrintBlackboxService,
                   "BlackboxData::CopyFileToNonRunningFS() Invalid active file id %d, runningSw %d",
                   static_cast<int>(activeFs), static_cast<int>(runningSw));
    return 0;
  }
  if (runningSw == kPassiveImage) return activeFs;
  return activeFs == DDAL_FFS_FS1 ? DDAL_FFS_FS2 : DDAL_FFS_FS1;
}

/// Asks the drivers which file system does not run.
/// @return it; 0, which is none, when that cannot be told
u32 AskNonRunningFileSystem() {
  u32 runningSw = 0;
  if (const int code = ddal_boot_get_linux_id(&runningSw); code != 0) {
    CLM_LOG(Error, "BlackBoxData::CopyFileToNonRunningFS() Running SW Id reading failed, ddal return code: %d (0x%x)",
            code, static_cast<u32>(code));
    return 0;
  }
  CLM_LOG(Info, "BlackBoxData::CopyFileToNonRunningFS() Running Sw: %s", runningSw != 0 ? "Passive" : "Active");
  u32 activeFs = 0;
  if (const int code = ddal_boot_get_linux_active(&activeFs); code != 0) {
    CLM_LOG(Error, "BlackBoxData::CopyFileToNonRunningFS() Active SW Id reading failed, ddal return code: %d (0x%x)",
            code, static_cast<u32>(code));
    return 0;
  }
  CLM_LOG(Info, "BlackBoxData::CopyFileToNonRunningFS() Active Filesystem: %d (0x%x)", static_cast<int>(activeFs),
          activeFs);
  return NonRunningFileSystem(runningSw, activeFs);
}

bool IsWritable(u32 fileSystem) {
  u32 state = 0;
  if (const int code = ddal_ffs_is_mounted(fileSystem, &state); code != 0) {
    CLM_LOG(Error,
            "BlackBoxData::CopyFileToNonRunningFS () ddal_ffs_is_mounted failed when checking passive filesystem "
            "(id=%d), ddal status = %d",
            static_cast<int>(fileSystem), code);
    return false;
  }
  if (state == DDAL_FFS_UNMOUNTED || state == DDAL_FFS_READ_ONLY) {
    CLM_LOG(Info,
            "BlackBoxData::CopyFileToNonRunningFS() Blackbox file copying not possible because non-running FS (id=%d) "
            "is not mounted or FS is read only mode",
            static_cast<int>(fileSystem));
    return false;
  }
  return true;
}

void TakeOver(const char* oldPath, const std::string& path) {
  if (!CanBeRead(oldPath)) return;
  AaFileCopy(oldPath, path.c_str());
  std::remove(oldPath);
}

}  // namespace

std::string BlackBoxData::ConfigFileText() const {
  return "# temperature log for blackbox\n"
         "temp=" +
         PathIn(tempFileLocation) +
         "\n"
         "# alarm log for blackbox\n"
         "alarm=" +
         PathIn(alarmFileLocation) +
         "\n"
         "# sfp log for blackbox\n"
         "sfp=" +
         PathIn(sfpFileLocation) +
         "\n"
         "# blackbox data file\n"
         "blackbox=" +
         PathIn(blackboxFileLocation) + "\n";
}

bool BlackBoxData::ConfigFileIsRight(const std::string& path, const std::string& wanted) {
  ReadFile file = OpenToRead(path);
  if (file == nullptr) {
    CLM_LOG(Debug, "BlackBoxData::createConfigFile(): configuration file needs to be created");
    return false;
  }
  const std::string content = ContentOf(file.get(), wanted.size());
  file.reset();
  if (content == wanted) return true;
  CLM_LOG(Debug, "BlackBoxData::createConfigFile(): configuration file needs to be updated");
  return false;
}

u32 BlackBoxData::createConfigFile() try {
  const std::string path = PathIn(configFileLocation);
  const std::string wanted = ConfigFileText();
  if (ConfigFileIsRight(path, wanted)) {
    CLM_LOG(Debug, "BlackBoxData::createConfigFile(): %s was ok", path.c_str());
    return 1;
  }
  TAaFile* const file = AaFileOpen(path.c_str(), "w");
  if (file == nullptr) {
    CLM_LOG(Error, "BlackBoxData::createConfigFile(): Failed to open %s", path.c_str());
    return 0;
  }
  WriteText(wanted, file);
  AaFileClose(file);
  CLM_LOG(Debug, "BlackBoxData::createConfigFile(): %s prepared", path.c_str());
  CLM_LOG(Debug, "BlackBoxData::createConfigFile(): temperature file: %s", tempFileLocation.Read()->c_str());
  CLM_LOG(Debug, "BlackBoxData::createConfigFile(): alarm file: %s", alarmFileLocation.Read()->c_str());
  CLM_LOG(Debug, "BlackBoxData::createConfigFile(): sfp file: %s", sfpFileLocation.Read()->c_str());
  CLM_LOG(Debug, "BlackBoxData::createConfigFile(): blackbox file: %s", blackboxFileLocation.Read()->c_str());
  return 1;
} catch (const std::bad_alloc&) {
  LogOutOfMemory("createConfigFile");
  return 0;
}

u32 BlackBoxData::copyAlarmsFile() { return CopyLog("copyAlarmsFile", oamAlarmFileLocation, alarmFileLocation); }

u32 BlackBoxData::copySfpFile() { return CopyLog("copySfpFile", oamSfpFileLocation, sfpFileLocation); }

u32 BlackBoxData::CopyLog(const char* operation, const Published<std::string>& source,
                          const Published<std::string>& target) try {
  const std::string from = PathIn(source);
  const std::string to = PathIn(target);
  if (!CanBeRead(from)) {
    CLM_LOG(Warning, "BlackBoxData::%s(): File %s does not exist, can't create %s.", operation, from.c_str(),
            to.c_str());
    return 0;
  }
  if (AaFileCopy(from.c_str(), to.c_str()) != 0) {
    CLM_LOG(Error, "BlackBoxData::%s(): failed to copy %s to %s", operation, from.c_str(), to.c_str());
    return 0;
  }
  CLM_LOG(Info, "BlackBoxData::%s(): file copy from %s to %s done", operation, from.c_str(), to.c_str());
  return 1;
} catch (const std::bad_alloc&) {
  LogOutOfMemory(operation);
  return 0;
}

void BlackBoxData::CopyFileToNonRunningFS() try {
  const u32 fileSystem = AskNonRunningFileSystem();
  if (fileSystem == 0 || !IsWritable(fileSystem)) return;
  const std::string path = PathIn(blackboxFileLocation);
  if (!CanBeRead(path)) {
    CLM_LOG(Error, "BlackBoxData::CopyFileToNonRunningFS() %s file does not exists", path.c_str());
    return;
  }
  if (AaFileCopy(path.c_str(), kStandbyBoardFile) != 0) {
    CLM_LOG(Error, "BlackBoxData::CopyFileToNonRunningFS() Blackbox file copying is not possible");
    return;
  }
  CLM_LOG(Info,
          "BlackBoxData::CopyFileToNonRunningFS() Running FS is '%s'. Blackbox file copying succeeded to non-running "
          "FS: '%s'",
          kRunningFileSystem, kStandbyBoardFile);
} catch (const std::bad_alloc&) {
  LogOutOfMemory("CopyFileToNonRunningFS");
}

void BlackBoxData::cleanupOldFiles() try {
  TakeOver("/ffs/run/logs/blackbox_alarms", PathIn(alarmFileLocation));
  TakeOver("/ffs/run/logs/blackbox_temperature", PathIn(tempFileLocation));
} catch (const std::bad_alloc&) {
  LogOutOfMemory("cleanupOldFiles");
}

}  // namespace ps::hwapi::common::climate
