/// @file
/// The board's black box: the latest readings with their extremes, a trace of the last three hours, the board file,
/// copies of logs and of files that others hand over, and the history of resets.
#pragma once

#include "AaFile.h"
#include "AaSem.h"
#include "BlackBoxCallbacks.h"
#include "BlackBoxRecords.h"
#include "HwapiUnit.h"
#include "Published.h"

#include <string>

namespace ps::hwapi::common::climate {

class Patience;

/// The recorder. Sensors and fans are known by name; values are kept and written exactly as they are reported.
///
/// Nothing here throws: an operation that runs out of memory logs that and loses what it was about to record. Only the
/// steps, which other operations take, leave std::bad_alloc to those. Unless said otherwise an operation may be called
/// from every thread, at the same time as any other; none waits for the driver calls of another thread, nor for its
/// file calls longer than a second. Results are 1 for done and 0 for not done; each failure has its log line.
class BlackBoxData {
 public:
  BlackBoxData();
  BlackBoxData(const BlackBoxData&) = delete;
  BlackBoxData& operator=(const BlackBoxData&) = delete;
  ~BlackBoxData();  ///< nobody may use the recorder any more

  /// @return the process's recorder, created with the first call and never destroyed
  static BlackBoxData* getInstance();

  /// Takes the black box into use: reads where its files are, hands them to the troubleshooting service, brings the
  /// configuration file up to date, reads the trace and the reset history back, and asks the reset service for the last
  /// reset; waits for that service as long as it takes. Once, on the service thread.
  /// @return 1, or 0 at the first step that fails
  u32 init(EUnitType unitType);
  u32 isInitialized() const { return blackBoxInitialized; }  ///< 1 once init succeeded, else 0
  /// @return 1 while readings are recorded, else 0
  u32 isTemperatureTraceEnabled() const { return blackBoxTemperatureTraceEnabled; }
  /// Begins to record readings and starts the threads that take snapshots and write the files. Service thread.
  /// @return 1, also when nothing is to be done; 0 when a thread cannot be started
  u32 enableTemperatureTrace();

  /// @name Sensors and fans. Adding a known name and removing an unknown one do nothing. Service thread.
  ///@{
  void addSensor(std::string sensorName);
  void removeSensor(std::string sensorName);
  void addFan(std::string fanName);
  ///@}

  /// @name Readings, dropped until recording began; they take no memory. Service thread.
  ///@{
  /// @param temperature thousandths of a degree Celsius
  void addTemperature(const char* sensorName, int temperature);
  void addTemperature(std::string sensorName, int temperature) { addTemperature(sensorName.c_str(), temperature); }
  /// The sensor could not be read.
  void addTemperatureError(const char* sensorName);
  void addTemperatureError(std::string sensorName) { addTemperatureError(sensorName.c_str()); }
  /// @param speed revolutions a minute
  void addFanSpeed(std::string fanName, int speed);
  /// The fan could not be read.
  void addFanSpeedError(std::string fanName);
  ///@}

  /// @name The trace
  ///@{
  /// Adds a line with the latest readings to the ring; the oldest of more than 180 lines goes.
  void takeSnapshot();
  /// Takes a snapshot if readings are recorded.
  void handleSnapshotTimeout();
  /// An hour has passed: writes the files when ERadHwapi_BlackBoxUpdateTimer hours have.
  void handleDataWritingTimeout();
  /// Rewrites the trace file. @return 1, or 0 when it cannot be opened
  u32 writeTempAndSpeedDataToFile();
  /// Fills the ring with the newest lines of the trace file. Before any other thread uses the ring.
  void readTempDataFromFile();
  ///@}

  /// @name The other files
  ///@{
  /// Writes all black-box files, once initialized.
  void createDataFiles();
  /// The same before the board may go down: waits, a second at most, for an older board file that another thread is
  /// putting in place, after which that thread writes the newest history.
  void createDataFilesBeforeReset();
  /// Writes the file that tells other tools where the black-box files are, unless it is right. @return 1, else 0
  u32 createConfigFile();
  /// Writes the board file. @return 1, or 0 when it cannot be created
  u32 createBlackboxFile();
  u32 blackBoxFileExists() const;  ///< 1 when the board file can be opened, else 0
  /// Step: finds the software builds of both file systems; empty texts when unknown.
  void getBtsSoftwareVersion(std::string& active, std::string& passive);
  /// Copy the alarm log and the SFP log of the O&M side. @return 1, else 0
  u32 copyAlarmsFile();
  u32 copySfpFile();
  /// Copies the board file to the file system that does not run, so that it survives a switch to the other image.
  void CopyFileToNonRunningFS();
  void cleanupOldFiles();  ///< takes over what earlier software kept elsewhere
  ///@}

  /// @name Stored files. Service thread. Those between copyFile and registerSelfTestFiles are steps.
  ///@{
  /// Stores a copy of a file under a name with a time and a key.
  /// @param maxFiles   older copies with the same key that may stay, at most 2
  /// @param sourceFile path; null counts as empty
  /// @param targetFile the key; null or empty: the name behind the source's last "/"
  /// @return 1 when it is stored and registered, else 0
  u32 copyFile(u32 maxFiles, const char* sourceFile, const char* targetFile);
  /// @param fileToSave out: the key
  u32 CheckFilesExist(std::string& fileToSave, const char* sourceFile, const char* targetFile);
  /// Removes the oldest copies of a key until only @p maxFiles are left.
  void calculateAndRemovePreviousFiles(u32 maxFiles, std::string key);
  u32 addStoredFile(std::string key, std::string sourceFile, std::string timeStamp);
  /// Removes a stored copy and its registration. @param path full path
  void removeStoredFile(std::string path);
  /// @return 14 digits, the time now
  std::string createTimeStamp();
  /// Finds the copies of earlier runs again.
  void registerSelfTestFiles();
  ///@}

  /// Step. @return the text behind the last "/", or all of it
  static std::string basename(const std::string& path);
  /// Step. @param fileName name without a path
  bool isStoredFile(const std::string& fileName) const;
  /// Makes sure that a file exists before it is collected. @return EAaTrblCbStatus_Ok or EAaTrblCbStatus_NotReady
  int prepareFileForTechlog(const char* fileName);

  /// @name The reset history
  ///@{
  /// Reads the entries of the board file. Before any other thread uses the history.
  void readResetReasonsFromFile();
  /// Asks the reset service for the last reset and lets it be stored once the clock is set. Service thread.
  void checkResetType();
  /// Step. @return an ERPresetType, or 0xFFFFFFFF when it cannot be told
  u32 readResetTypeFromRpram();
  /// Takes the word " requested" out of the newest entry. @return 1 when it was there, else 0
  u32 updateLastResetResonIfRequested();
  /// Step: starts the thread that stores the reason of the last start when the clock is set.
  void startWaitingForNTPTime(u32 resetType);
  /// The clock is set: stores the reason of the last start, unless that is done, and writes the board file.
  void writeResetReasonToBlackbox();
  /// Adds an entry with the time now, before it the reason of the last start if that still waits. At most 10 stay.
  void addResetReasonWithTimestamp(std::string reason);
  /// Takes the newest entry apart.
  /// @param category     out: a word, at least 40 bytes; "Unknown" when there is none
  /// @param extendedInfo out: at least 60 bytes
  void ResetStateInfo(char* category, char* extendedInfo) const;
  ///@}

 private:
  struct PathTag;
  struct CollectedFile;
  struct BoardFile;
  static const PathTag kPathTags[];
  static const CollectedFile kCollectedFiles[];

  bool ReadPathTag(const PathTag& row);
  std::string SnapshotLine() const;
  std::string TraceHead() const;
  std::string ConfigFileText() const;
  static bool ConfigFileIsRight(const std::string& path, const std::string& wanted);
  TAaFile* OpenBoardFile() const;
  BoardFile AskForBoardFile();
  bool PutInPlace(TAaFile* file, const std::deque<std::string>& resets) const;
  void WriteDataFiles(Patience& patience);
  void TakeSnapshot(Patience& patience);
  u32 WriteTraceFile(Patience& patience);
  static u32 CopyLog(const char* operation, const Published<std::string>& source, const Published<std::string>& target);
  u32 CopySfpFileIfThereIsOne();
  bool IsReadyForTechlog(const std::string& fileName);
  std::string NewestReset() const;
  bool FindResetReason(u32 resetType);

  Published<SensorTempMap> sensorTempMap;
  Published<FanSpeedMap> fanSpeedMap;
  Published<SnapshotRing> ringBuffer;
  std::atomic<EUnitType> unitType = EUnitType_Kel;
  Published<storedFileMap> storedFiles;
  Published<std::string> tempFileLocation;
  Published<std::string> configFileLocation;
  Published<std::string> alarmFileLocation;
  Published<std::string> sfpFileLocation;
  Published<std::string> blackboxFileLocation;
  Published<std::string> oamAlarmFileLocation;
  Published<std::string> oamSfpFileLocation;
  std::atomic<u32> blackBoxTemperatureTraceEnabled = 0;
  std::atomic<u32> blackBoxInitialized = 0;
  std::atomic<u32> firstSnapshotDone = 0;
  std::atomic<TAaSem*> ringBufferSyncSemaphore = nullptr;
  std::atomic<bool> ringBufferTaken = false;  ///< a thread holds the semaphore
  Published<ResetHistory> resetReasonAndTimestamp;
  std::atomic<u32> boardFileWriters = 0;  ///< threads in the file calls of a board file
  std::string resetReasonReadInStartup;   ///< written before the thread that reads it is started
};

}  // namespace ps::hwapi::common::climate
