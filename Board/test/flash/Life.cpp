#include "Life.h"

#include "AaConfig.h"
#include "AaSem.h"
#include "AaSysCom.h"
#include "AaSysTime.h"
#include "BlackBoxData.h"
#include "Endpoints.h"
#include "Msg.h"
#include "messages/MessageIds.h"
#include "messages/ResetProofRam.h"
#include "messages/Status.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

using ps::hwapi::common::climate::BlackBoxData;

namespace flash {
namespace {

namespace fs = std::filesystem;
namespace common = ps::hwapi::common;

// All of it is in the private root, which ends with the test.
constexpr const char* kBoardFile = "/rom/board.toml";
constexpr const char* kRunFolder = "/rom/run";
constexpr const char* kLogFile = "/rom/log";
constexpr const char* kResultFile = "/rom/result";

constexpr const char* kDescription = R"([unit]
type = "Kel"
version = "Kela"
product_code = "084010A.101"
serial_number = "K9014800037"
[node]
board = 1
cpu = 1
[access]
send = ["root"]
[tags]
"app.hwapi.blackbox.config.file" = "/ffs/run/config/lifedata/blackbox_config"
"app.hwapi.blackbox.file" = "/ffs/run/config/lifedata/blackbox"
"app.hwapi.blackbox.temperature.file" = "/ffs/run/config/lifedata/blackbox_temperature"
"app.hwapi.blackbox.alarms.file" = "/ffs/run/config/lifedata/blackbox_alarms"
"app.hwapi.blackbox.oam.alarms.file" = "/ffs/run/logs/alarms"
"app.hwapi.blackbox.sfp.file" = "/ffs/run/config/lifedata/blackbox_sfp"
"app.hwapi.blackbox.oam.sfp.file" = "/ffs/run/logs/sfp"
[boot]
active = 53
image = 0
reset_loop_count = 0
[mounts]
fs1 = "writable"
fs2 = "writable"
[devicetree]
isti = 1001
ecc_single = 0
ecc_double = 0
)";

std::string ContentOf(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Answers that the reset type cannot be read: the history stays as it is.
void AnswerResetTypeRequest(void* msg) {
  using Request = common::Msg<SApiOmGetRPRamReq, API_OM_GET_RP_RAM_REQ_MSG>;
  using Response = common::Msg<SApiOmGetRPRamResp, API_OM_GET_RP_RAM_RESP_MSG>;
  Response response = Request(msg).CreateReply<Response>(sizeof(SApiOmGetRPRamResp));
  *response.payload = {.field = ERP_RAM_field_ResetType, .status = ERP_RAM_status_access_fail, .value = 0};
  response.Send();
}

void* ServeResets(void* ready) {
  AaSysComUserRegister(HWAPI_RESET_SERVICE, AaProEuCurrent());
  const u32 online = EStatus_Initialized;
  AaConfigTagPublicSet("app.hwapi.online.4a7", &online, sizeof online);
  AaSemPost(static_cast<TAaSem*>(ready));
  for (;;) {
    void* msg = AaSysComMsgReceive(AASYSCOM_NO_TIMEOUT, nullptr);
    if (AaSysComMsgGetId(msg) == API_OM_GET_RP_RAM_REQ_MSG) AnswerResetTypeRequest(msg);
    AaSysComMsgDestroy(&msg);
  }
}

void StartResetService() {
  TAaSem* const ready = AaSemCreateC(0);
  TAaProEuId eu = 0;
  AaSysComEuCreateAndStart(&eu, "reset", ServeResets, 0, 0, ready, 0);
  AaSemWait(ready);
}

[[noreturn]] void BeChild(const std::function<std::string()>& life) {
  const int log = open(kLogFile, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600);
  dup2(log, STDERR_FILENO);
  std::ofstream(kResultFile, std::ios::binary) << life();
  raise(SIGKILL);
  _exit(EXIT_FAILURE);
}

}  // namespace

void DescribeBoard() {
  std::ofstream(kBoardFile) << kDescription;
  setenv("HWAPI_BOARD", kBoardFile, 1);
  setenv("HWAPI_RUN", kRunFolder, 1);
}

std::optional<std::string> Live(const std::function<std::string()>& life) {
  fs::remove_all(kRunFolder);
  fs::create_directory(kRunFolder);
  fs::remove(kResultFile);
  const pid_t child = fork();
  if (child == 0) BeChild(life);
  int status = -1;
  waitpid(child, &status, 0);
  const bool wasLivedToItsEnd = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL && fs::exists(kResultFile);
  return wasLivedToItsEnd ? std::optional(ContentOf(kResultFile)) : std::nullopt;
}

std::string Log() { return ContentOf(kLogFile); }

bool StartBlackBox() {
  StartResetService();
  return BlackBoxData::getInstance()->init(EUnitType_Kel) == 1;
}

}  // namespace flash

/// The program's own definition comes before the platform's.
extern "C" __attribute__((visibility("default"))) i32 AaUtcTimeGet(SAaTime* now) {
  *now = {.year = 2026, .month = 3, .day = 14, .hour = 15, .minute = 9, .second = 26, .millisec = 0};
  return 0;
}
