#include "AaConfig.h"
#include "AaSem.h"
#include "AaSysCom.h"
#include "BenchBoard.h"
#include "Benches.h"
#include "BlackBoxData.h"
#include "Endpoints.h"
#include "Msg.h"
#include "Process.h"
#include "messages/MessageIds.h"
#include "messages/ResetProofRam.h"
#include "messages/Status.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace bench {
namespace {

namespace common = ps::hwapi::common;
using common::climate::BlackBoxData;

constexpr int kSensors = 34;
constexpr int kFans = 6;
constexpr int kLines = 180;
constexpr int kWarmUpRounds = 20;
constexpr int kRoundsInMemory = 2000;
constexpr int kRoundsOnDisk = 200;

constexpr const char* kTrace = "/ffs/run/config/lifedata/blackbox_temperature";
constexpr const char* kFolder = "/ffs/run/config/lifedata";
constexpr const char* kBareFile = "/ffs/run/config/lifedata/bare";
constexpr const char* kBareTemporary = "/ffs/run/config/lifedata/.bare.new";

double SecondsOf(const auto& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// A folder on the disk in place of the black box's, which is in memory: there a sync costs something.
class DiskFolder {
 public:
  DiskFolder() {
    std::string pattern = std::string(DISK_FOLDER) + "/trace-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) Die(pattern);
    m_folder = pattern;
    if (mount(m_folder.c_str(), kFolder, nullptr, MS_BIND, nullptr) != 0) Die("mount " + pattern);
  }
  DiskFolder(const DiskFolder&) = delete;
  DiskFolder& operator=(const DiskFolder&) = delete;
  ~DiskFolder() {
    umount2(kFolder, MNT_DETACH);
    std::filesystem::remove_all(m_folder);
  }

 private:
  std::filesystem::path m_folder;
};

/// What a rewrite takes at least: the text is ready.
void ReplaceBare(const std::string& text) {
  const int file = open(kBareTemporary, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size())) Die(kBareTemporary);
  fsync(file);
  close(file);
  rename(kBareTemporary, kBareFile);
  const int folder = open(kFolder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  fsync(folder);
  close(folder);
}

/// The black box asks the reset service at its start.
void* ServeResets(void* ready) {
  using Request = common::Msg<SApiOmGetRPRamReq, API_OM_GET_RP_RAM_REQ_MSG>;
  using Response = common::Msg<SApiOmGetRPRamResp, API_OM_GET_RP_RAM_RESP_MSG>;
  AaSysComUserRegister(HWAPI_RESET_SERVICE, AaProEuCurrent());
  const u32 online = EStatus_Initialized;
  AaConfigTagPublicSet("app.hwapi.online.4a7", &online, sizeof online);
  AaSemPost(static_cast<TAaSem*>(ready));
  for (;;) {
    void* msg = AaSysComMsgReceive(AASYSCOM_NO_TIMEOUT, nullptr);
    if (AaSysComMsgGetId(msg) == API_OM_GET_RP_RAM_REQ_MSG) {
      Response response = Request(msg).CreateReply<Response>(sizeof(SApiOmGetRPRamResp));
      response->status = ERP_RAM_status_access_fail;
      response.Send();
    }
    AaSysComMsgDestroy(&msg);
  }
}

void SetPathTag(const std::string& name, const std::string& path) {
  AaConfigTagPublicSet(("app.hwapi.blackbox." + name + "file").c_str(), path.data(), static_cast<u32>(path.size()));
}

/// @return a black box that is in use and has three hours of readings
BlackBoxData& FullBlackBox() {
  const std::string folder = kFolder;
  for (const char* name : {"config.", "alarms.", "oam.alarms.", "sfp.", "oam.sfp."})
    SetPathTag(name, folder + "/" + name);
  SetPathTag("", folder + "/blackbox");
  SetPathTag("temperature.", kTrace);
  TAaSem* const ready = AaSemCreateC(0);
  TAaProEuId eu = 0;
  AaSysComEuCreateAndStart(&eu, "reset", ServeResets, 0, 0, ready, 0);
  AaSemWait(ready);

  BlackBoxData& blackBox = *BlackBoxData::getInstance();
  if (blackBox.init(EUnitType_Kel) != 1) Die("the black box cannot be taken into use");
  for (int i = 0; i < kSensors; ++i) blackBox.addSensor("SENSOR_" + std::to_string(i));
  for (int i = 0; i < kFans; ++i) blackBox.addFan("FAN_" + std::to_string(i));
  blackBox.enableTemperatureTrace();
  for (int i = 0; i < kSensors; ++i) blackBox.addTemperature("SENSOR_" + std::to_string(i), 40000 + 125 * i);
  for (int i = 0; i < kFans; ++i) blackBox.addFanSpeed("FAN_" + std::to_string(i), 4000 + 100 * i);
  for (int i = 0; i < kLines; ++i) blackBox.takeSnapshot();
  return blackBox;
}

/// Both ways one after the other, many times, so that both see the same moods of the machine.
TraceCost Compare(BlackBoxData& blackBox, int rounds) {
  blackBox.writeTempAndSpeedDataToFile();
  std::ifstream file(kTrace);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  std::vector<double> ratios, seconds;
  for (int i = 0; i < kWarmUpRounds + rounds; ++i) {
    const double bare = SecondsOf([&] { ReplaceBare(text); });
    const double service = SecondsOf([&] { blackBox.writeTempAndSpeedDataToFile(); });
    if (i < kWarmUpRounds) continue;
    ratios.push_back(service / bare);
    seconds.push_back(service);
  }
  const auto median = [rounds](std::vector<double>& values) {
    std::nth_element(values.begin(), values.begin() + rounds / 2, values.end());
    return values[static_cast<std::size_t>(rounds / 2)];
  };
  return {.seconds = median(seconds), .ratio = median(ratios)};
}

TraceFigures Measure() {
  const BenchBoard board;  // its tags are no business of the daemons that are measured
  BlackBoxData& blackBox = FullBlackBox();
  TraceFigures figures{};
  figures.inMemory = Compare(blackBox, kRoundsInMemory);
  const DiskFolder folder;
  figures.onDisk = Compare(blackBox, kRoundsOnDisk);
  return figures;
}

}  // namespace

TraceFigures MeasureTraceRewrite() {
  int ends[2];
  if (pipe(ends) != 0) Die("pipe");
  const pid_t child = fork();
  if (child == 0) {
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
    const TraceFigures figures = Measure();
    _exit(write(ends[1], &figures, sizeof figures) == sizeof figures ? 0 : 1);
  }
  TraceFigures figures{};
  close(ends[1]);
  if (read(ends[0], &figures, sizeof figures) != sizeof figures) Die("the trace cannot be measured");
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return figures;
}

}  // namespace bench
