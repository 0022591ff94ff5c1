/// The trace: a line a minute for three hours, and the file that keeps them.
#include "AaConfig.h"
#include "AaSysCom.h"
#include "AaSysTime.h"
#include "BlackBoxData.h"
#include "BlackBoxFile.h"
#include "LifedataDirectory.h"
#include "Log.h"
#include "Patience.h"
#include "RadIds.h"
#include "UtcText.h"

#include <cstring>
#include <new>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

constexpr u32 kSnapshotPeriodSec = 60;
constexpr u32 kFileStoringPeriodSec = 3600;
constexpr u32 kMaxHoursBetweenWrites = 24;
constexpr char kTraceMark[] = "#TEMPANDSPEED";
constexpr u32 kLineSize = 1024;

constexpr const char* kThreadName = "BlackBoxData";
constexpr u32 kStackSize = 1024;
constexpr u32 kPriority = 5;
constexpr u32 kArgumentSize = 4;

/// Hours since the files were written.
std::atomic<u32> fileStoringTimeoutCounter = 0;

/// Holds the semaphore of the ring. Before there is one, nothing is held; nor when a thread that holds it while it
/// writes the file does not come to its end in time: the ring's versions are safe without.
class RingGuard {
 public:
  /// @param taken whether a thread holds the semaphore: nobody else waits for it, since that wait would have no end
  RingGuard(TAaSem* semaphore, std::atomic<bool>& taken, Patience& patience) : m_semaphore(semaphore), m_taken(taken) {
    if (m_semaphore == nullptr) return;
    if (patience.WaitUntil([&taken] { return !taken.exchange(true); })) {
      AaSemWait(m_semaphore);
    } else {
      m_semaphore = nullptr;
    }
  }
  RingGuard(const RingGuard&) = delete;
  RingGuard& operator=(const RingGuard&) = delete;
  ~RingGuard() {
    if (m_semaphore == nullptr) return;
    AaSemPost(m_semaphore);
    m_taken = false;
  }

 private:
  TAaSem* m_semaphore;
  std::atomic<bool>& m_taken;
};

std::string Column(bool failed, i32 value) { return failed ? "error\t" : std::to_string(value) + "\t"; }

/// @return an extreme and a tab; of a long number only the characters that the file has room for
std::string Extreme(bool measured, i32 value) {
  constexpr std::size_t kMostCharacters = 8;
  return measured ? std::to_string(value).substr(0, kMostCharacters) + "\t" : "-\t";
}

template <typename Map>
std::string Names(const Map& records) {
  std::string names;
  for (const auto& [name, record] : records) names += name + "\t";
  return names;
}

void Push(SnapshotRing& ring, std::string line) {
  ring.push_back(std::make_shared<const std::string>(std::move(line)));
  if (ring.size() > kSnapshotRingSize) ring.pop_front();
}

i32 StartThread(void* (*entry)(void*), BlackBoxData* recorder) {
  TAaProEuId euId = 0;
  return AaSysComEuCreateAndStart(&euId, kThreadName, entry, kStackSize, kPriority, &recorder, kArgumentSize);
}

}  // namespace

std::string BlackBoxData::SnapshotLine() const {
  std::string line = UtcText(UtcNow()) + "\t";
  const auto sensors = sensorTempMap.Read();
  for (const auto& [name, sensor] : *sensors) {
    const bool failed = sensor->error != 0;  // before the value, which is then at least as new
    line += Column(failed, sensor->temperature);
  }
  const auto fans = fanSpeedMap.Read();
  for (const auto& [name, fan] : *fans) {
    const bool failed = fan->error != 0;
    line += Column(failed, fan->speed);
  }
  return line + "\n";
}

void BlackBoxData::takeSnapshot() {
  Patience patience;
  TakeSnapshot(patience);
}

void BlackBoxData::TakeSnapshot(Patience& patience) try {
  const std::string line = SnapshotLine();
  CLM_LOG(Debug, "BlackBoxData::takeSnapshot: %s", line.c_str());
  {
    const RingGuard guard(ringBufferSyncSemaphore, ringBufferTaken, patience);
    ringBuffer.Update([&line](SnapshotRing& ring) {
      Push(ring, line);
      return true;
    });
  }
  firstSnapshotDone = 1;
} catch (const std::bad_alloc&) {
  LogOutOfMemory("takeSnapshot");
}

void BlackBoxData::handleSnapshotTimeout() {
  if (blackBoxTemperatureTraceEnabled != 0) takeSnapshot();
}

std::string BlackBoxData::TraceHead() const {
  const auto sensors = sensorTempMap.Read();
  const auto fans = fanSpeedMap.Read();
  const std::string names = Names(*sensors);
  std::string minimums, maximums;
  for (const auto& [name, sensor] : *sensors) {
    const i32 minimum = sensor->minTemperature;
    const bool measured = minimum != SSensorTempValues::kNoMinimum;
    minimums += Extreme(measured, minimum);
    maximums += Extreme(measured, sensor->maxTemperature);
  }
  return "#MINMAX: Minimum and maximum measured temperatures\n"
         "#\t" +
         names + "\n" + "MIN:\t" + minimums + "\n" + "MAX:\t" + maximums + "\n" + "\n" +
         "#TEMPANDSPEED: temperatures and fan speeds\n" + "#                  \t" + names + Names(*fans) + "\n";
}

u32 BlackBoxData::writeTempAndSpeedDataToFile() {
  Patience patience;
  return WriteTraceFile(patience);
}

u32 BlackBoxData::WriteTraceFile(Patience& patience) try {
  const std::string path = PathIn(tempFileLocation);
  if (path.empty()) {
    CLM_LOG(Error,
            "BlackBoxData::writeTempAndSpeedDataToFile(): tag %s was not found, don't know where to store the data",
            kTraceFileTag);
    return 0;
  }
  CLM_LOG(Info, "BlackBoxData::writeTempAndSpeedDataToFile(): writing temperature and fan speed data to file %s",
          path.c_str());
  // Nothing is allocated once the file is open.
  const std::string head = TraceHead();
  std::vector<SnapshotRing::value_type> lines;
  lines.reserve(kSnapshotRingSize);
  TAaFile* const file = AaFileOpen(path.c_str(), "w");
  if (file == nullptr) {
    CLM_LOG(Error, "BlackBoxData::writeTempAndSpeedDataToFile(): failed to open file %s for writing", path.c_str());
    return 0;
  }
  WriteText(head, file);
  {
    const RingGuard guard(ringBufferSyncSemaphore, ringBufferTaken, patience);
    {
      // Not kept for the writes: one that hangs would keep every later version of the ring from being freed.
      const auto ring = ringBuffer.Read();
      lines.assign(ring->begin(), ring->end());
    }
    for (const auto& line : lines) WriteText(*line, file);
  }
  AaFileClose(file);
  return 1;
} catch (const std::bad_alloc&) {
  LogOutOfMemory("writeTempAndSpeedDataToFile");
  return 0;
}

void BlackBoxData::readTempDataFromFile() try {
  const std::string path = PathIn(tempFileLocation);
  CLM_LOG(Debug, "BlackBoxData::readDataFromFile(): reading old temperature and fan speed data from %s", path.c_str());
  // Stays open for the life of the process.
  TAaFile* const file = AaFileOpen(path.c_str(), "r");
  if (file == nullptr) {
    CLM_LOG(Debug, "BlackBoxData::readDataFromFile(): old temperature and fan speed data does not exists");
    return;
  }
  char line[kLineSize] = {};
  do {
    if (AaFileReadLine(line, kLineSize, file) == nullptr) return;
  } while (std::strncmp(line, kTraceMark, sizeof(kTraceMark) - 1) != 0);
  if (AaFileReadLine(line, kLineSize, file) == nullptr) return;

  SnapshotRing restored = *ringBuffer.Read();
  const char* more = nullptr;
  do {
    more = AaFileReadLine(line, kLineSize, file);
    if (line[0] != '\0') Push(restored, line);
  } while (more != nullptr);
  const std::size_t count = restored.size();
  ringBuffer.Set(std::move(restored));
  if (count == 0) return;
  CLM_LOG(Debug, "BlackBoxData::readDataFromFile(): %zd lines of temperature and fan speed data read from %s",
          static_cast<ssize_t>(count), path.c_str());
} catch (const std::bad_alloc&) {
  LogOutOfMemory("readTempDataFromFile");
}

u32 BlackBoxData::enableTemperatureTrace() {
  if (blackBoxInitialized == 0 || blackBoxTemperatureTraceEnabled != 0) return 1;
  CLM_LOG(Debug, "BlackBoxData::enableTemperatureTrace(): starting timer threads for BlackBox data storing\n");
  if (const i32 ret = StartThread(waitingForTheSnapshotTmo, this); ret != 0) {
    CLM_LOG(Error, "BlackBoxData::enableTemperatureTrace(): failed to start thread for snapshot timeout, ret = %d\n",
            ret);
    return 0;
  }
  if (const i32 ret = StartThread(waitingForTheFileStoringTmo, this); ret != 0) {
    CLM_LOG(Error,
            "BlackBoxData::enableTemperatureTrace(): failed to start thread for file storing timeout, ret = %d\n", ret);
    return 0;
  }
  CLM_LOG(Debug, "BlackBoxData::enableTemperatureTrace(): temperature and fan speed tracing enabled\n");
  blackBoxTemperatureTraceEnabled = 1;
  fileStoringTimeoutCounter = 0;
  return 1;
}

void BlackBoxData::handleDataWritingTimeout() {
  const u32 hours = ++fileStoringTimeoutCounter;
  u32 limit = AaConfigRadGetValue(ERadHwapi_BlackBoxUpdateTimer);
  if (limit == 0 || limit > kMaxHoursBetweenWrites) {
    limit = kMaxHoursBetweenWrites;
    CLM_LOG(Debug, "BlackBoxData::handleDataWritingTimeout(): BlackBoxUpdateTimer updated to default value (24h)");
  }
  CLM_LOG(Debug, "BlackBoxData::handleDataWritingTimeout(): timeout %d/%d hours", static_cast<int>(hours),
          static_cast<int>(limit));
  if (hours < limit) return;
  fileStoringTimeoutCounter = 0;
  createDataFiles();
}

void* waitingForTheSnapshotTmo(void* /*argument*/) {
  for (;;) {
    AaSysTimeSleep(kSnapshotPeriodSec, EAaSysTimeScale_Sec);
    BlackBoxData::getInstance()->takeSnapshot();
  }
}

void* waitingForTheFileStoringTmo(void* /*argument*/) {
  for (;;) {
    AaSysTimeSleep(kFileStoringPeriodSec, EAaSysTimeScale_Sec);
    BlackBoxData::getInstance()->handleDataWritingTimeout();
  }
}

}  // namespace ps::hwapi::common::climate
