#include "Contract.h"
#include "MsgRouter.h"
#include "Shutdown.h"
#include "Supervisor.h"
#include "TagWaits.h"

#include "AaProWatch.h"
#include "AaSysCom.h"
#include "AaSysLog.h"
#include "AaSysTime.h"
#include "ddal_error.h"

#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <thread>
#include <utility>
#include <vector>

namespace ps::hwapi::common {
namespace {

using ::hwapi::nub::kWakeUpMsg;
using ::hwapi::nub::MsgRouter;
using ::hwapi::nub::Shutdown;
using ::hwapi::nub::Supervisor;
using ::hwapi::nub::TagWaits;

/// Message by which the loop tells the supervisor that it, the timers and all other threads are alive.
constexpr u32 kAliveMsg = 0xFF02;
/// Different ids of messages without a delegate that get a line of their own.
constexpr std::size_t kUnknownIdsLogged = 64;

/// For the drivers' check of the board: as long as many chips that are late take together.
constexpr unsigned kCheckSeconds = 60;

constexpr int kStatusTaken = 1;
constexpr int kStatusUsage = 2;

Service* g_service = nullptr;

/// Ends the process at once with a text. No destructor runs: that of the service would tell the whole board that the
/// endpoints are gone, although they are not this process's but perhaps another one's that serves them.
[[noreturn]] void EndAtOnce(int status, std::FILE* stream, const std::string& text) {
  std::fputs(text.c_str(), stream);
  std::fflush(stream);
  _exit(status);
}

/// Frees a message when its handler is left, however that is.
class ReceivedMsg {
 public:
  explicit ReceivedMsg(void* msg) : m_msg(msg) {}
  ReceivedMsg(const ReceivedMsg&) = delete;
  ReceivedMsg& operator=(const ReceivedMsg&) = delete;
  ~ReceivedMsg() { AaSysComMsgDestroy(&m_msg); }
  void* Get() const { return m_msg; }

 private:
  void* m_msg;
};

}  // namespace

struct Service::State {
  State(std::string serviceName, u32 task, u32 feature, u32 stateId)
      : name(std::move(serviceName)),
        endpoint(task),
        printFeature(feature),
        serviceStateId(stateId),
        supervisor(feature) {}

  TAaSysComSicad OwnAddress() const { return AaSysComSicadGet(endpoint, AaSysComGetOwnNid()); }
  void ParseCommandLine(int argc, const char* const* argv);
  void CheckBoard() const;
  void RegisterEndpoint() const;
  bool Start(Service& service) const;
  void StartSignsOfLife();
  void StopSignsOfLife();
  bool IsSignOfLife(void* msg) const;
  void GiveSignOfLife();
  void Deliver(void* msg);
  void CallDelegate(MsgDelegateBase& delegate, void* msg) const;
  void CountUnknown(void* msg);

  const std::string name;
  const u32 endpoint;
  const u32 printFeature;
  const u32 serviceStateId;
  ArgumentParser arguments;
  MsgRouter router;
  Supervisor supervisor;
  TAaSysTimerId aliveTimer = 0;
  std::uint64_t aliveNumber = 0;  ///< in the messages of that timer; 0: there is none
  std::string hangingThread;      ///< the one that the log names, if any
  u32 serviceState = 0;
  bool commonState = true;
  std::vector<u32> unknownIds;  ///< those with a line, sorted
  u32 unknownMsgs = 0;
};

void Service::State::ParseCommandLine(int argc, const char* const* argv) {
  const std::string answer = arguments.Parse(argc, argv);
  if (!arguments.GetOption("-help").empty()) EndAtOnce(EXIT_SUCCESS, stdout, answer);
  if (!answer.empty()) EndAtOnce(kStatusUsage, stderr, name + ": " + answer);
  const std::string board = arguments.GetOption("-board");
  if (!board.empty()) setenv("HWAPI_BOARD", board.c_str() + sizeof "arg", 1);
}

void Service::State::CheckBoard() const {
  const Shutdown::Limit limit(
      kCheckSeconds, kStatusUsage,
      name + ": the board's hardware cannot be used:\nthe drivers did not end their check within " +
          std::to_string(kCheckSeconds) + " s\n");
  std::string problem(4096, '\0');
  if (ddal_init(problem.data(), static_cast<u32>(problem.size())) == DDAL_OK) return;
  EndAtOnce(kStatusUsage, stderr, name + ": the board's hardware cannot be used:\n" + problem.c_str() + '\n');
}

void Service::State::RegisterEndpoint() const {
  if (AaSysComUserRegister(endpoint, AaProEuCurrent()) == endpoint) return;
  const TAaSysComSicad address = OwnAddress();
  char text[256];
  std::snprintf(text, sizeof text,
                "%s: task 0x%x of board %u cpu %u is served by another process; end that one first, or give this "
                "process another board's run folder with HWAPI_RUN\n",
                name.c_str(), endpoint, AaSysComNmapGetBoard(address), AaSysComNmapGetCpu(address));
  EndAtOnce(kStatusTaken, stderr, text);
}

/// The timer runs in board time. On a board whose clock is fast the signs only come more often.
void Service::State::StartSignsOfLife() {
  const u32 periodUs = Supervisor::AlivePeriodUs();
  if (periodUs == 0) return;
  if (getrandom(&aliveNumber, sizeof aliveNumber, 0) != sizeof aliveNumber) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, printFeature, "No random number for the supervisor's watchdog");
    return;
  }
  void* msg = AaSysComMsgCreate(kAliveMsg, sizeof aliveNumber, OwnAddress());
  if (msg != nullptr) std::memcpy(AaSysComMsgGetPayload(msg), &aliveNumber, sizeof aliveNumber);
  AaSysComMsgSetSender(msg, OwnAddress());
  if (AaSysTimermCreate(&aliveTimer, periodUs, periodUs, msg) == 0) return;
  AaSysComMsgDestroy(&msg);
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, printFeature, "No timer for the supervisor's watchdog");
}

void Service::State::StopSignsOfLife() { AaSysTimerDelete(std::exchange(aliveTimer, 0)); }

/// Anybody may send this id. One that did not come from the timer would be a look too early, at which threads that are
/// at work seem to hang, and a flood of them one of the supervisor.
bool Service::State::IsSignOfLife(void* msg) const {
  std::uint64_t number = 0;
  if (AaSysComMsgGetId(msg) != kAliveMsg || AaSysComMsgGetPayloadSize(msg) != sizeof number) return false;
  std::memcpy(&number, AaSysComMsgGetPayload(msg), sizeof number);
  return number != 0 && number == aliveNumber;
}

/// While a thread hangs the sign stays away: the supervisor ends the process then.
void Service::State::GiveSignOfLife() {
  char hanging[AAPRO_NAME_SIZE];
  if (AaProAllAlive(hanging, sizeof hanging) != GLO_FALSE) {
    hangingThread.clear();
    return supervisor.Alive();
  }
  if (hangingThread == hanging) return;
  hangingThread = hanging;
  AaSysLogPrintE(EAaSysLogSeverityLevel_Error, printFeature,
                 "Thread %s hangs: the supervisor gets no sign of life until it goes on", hanging);
}

void Service::State::Deliver(void* msg) {
  const ReceivedMsg received(msg);
  const u32 id = AaSysComMsgGetId(msg);
  if (id == kWakeUpMsg) return;
  if (IsSignOfLife(msg)) return GiveSignOfLife();
  const MsgRouter::Delegate delegate = router.Find(id);
  if (delegate == nullptr) return CountUnknown(msg);
  CallDelegate(*delegate, msg);
}

void Service::State::CallDelegate(MsgDelegateBase& delegate, void* msg) const {
  try {
    delegate.HandleMsg(msg);
  } catch (const MsgHandlingException& failure) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, printFeature, "Message 0x%x: %s: %s (file: %s, line: %zu)",
                   delegate.MsgId(), failure.what(), failure.getDescription().c_str(), failure.getFile().c_str(),
                   failure.getLine());
  } catch (const std::bad_alloc&) {
    // A message that memory does not suffice for is lost, unless its handler ends the process; the next may need less.
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, printFeature, "Message 0x%x: out of memory", delegate.MsgId());
  }
}

/// Whoever sends a flood of unknown messages must not flood the log.
void Service::State::CountUnknown(void* msg) {
  ++unknownMsgs;
  const u32 id = AaSysComMsgGetId(msg);
  const auto place = std::lower_bound(unknownIds.begin(), unknownIds.end(), id);
  if (unknownIds.size() >= kUnknownIdsLogged || (place != unknownIds.end() && *place == id)) return;
  unknownIds.insert(place, id);
  AaSysLogPrintE(EAaSysLogSeverityLevel_Warning, printFeature,
                 "Message 0x%x from 0x%08x is unknown and ignored; further ones of this id are only counted", id,
                 AaSysComMsgGetSender(msg));
}

Service::Service(const std::string& name, u32 endpoint, u32 printFeature, u32 serviceState)
    : m_state(std::make_unique<State>(name, endpoint, printFeature, serviceState)) {
  if (g_service != nullptr) AaErrorAssertion("a process has one service", __FILE__, __LINE__);
  g_service = this;
}

Service::~Service() {
  Service::Exit();
  g_service = nullptr;
}

Service& Service::Get() {
  if (g_service == nullptr) AaErrorAssertion("the process has a service", __FILE__, __LINE__);
  return *g_service;
}

bool Service::PreStartup() { return true; }
void Service::Init() {}

/// The steps that a service may block in.
bool Service::State::Start(Service& service) const {
  const Shutdown::Start start([] {
    if (Shutdown::Own().HasEndpoint()) g_service->Exit();
  });
  Shutdown::TakeSignals();
  CheckBoard();
  if (!service.PreStartup()) return false;
  RegisterEndpoint();
  Shutdown::Own().SetEndpoint(OwnAddress());
  service.Init();
  return true;
}

void Service::Startup(int argc, char** argv) {
  Shutdown::BlockSignals();
  m_state->ParseCommandLine(argc, argv);
  if (!m_state->Start(*this)) return;
  m_state->StartSignsOfLife();
  m_state->supervisor.Ready();
  Run();
  Exit();
}

void Service::Run() {
  while (!Shutdown::Own().Requested()) {
    void* msg = AaSysComMsgReceive(AASYSCOM_NO_TIMEOUT, nullptr);
    if (msg != nullptr) {
      m_state->Deliver(msg);
    } else {
      // A signal handler ran, or somebody gave the endpoint back; the latter must not make the loop spin.
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  if (m_state->unknownMsgs == 0) return;
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, m_state->printFeature, "%u unknown messages were ignored in all",
                 m_state->unknownMsgs);
}

/// May be called again by destructors, for a service that never started, and on the thread of the signals for one whose
/// start is given up.
void Service::Exit() {
  Shutdown::Own().SetEndpoint(0);
  Shutdown::Own().Request();
  m_state->StopSignsOfLife();
  m_state->supervisor.Stopping();
}

void Service::AddMsgDelegate(MsgDelegateBase* delegate) { m_state->router.Add(MsgRouter::Delegate(delegate)); }

void Service::WaitForConfigTag(const std::string& name, u32 value) { TagWaits::Own().WaitFor(name, value); }

void Service::HandleConfigTagChange(std::string tag, unsigned value) {
  AaSysLogPrintE(EAaSysLogSeverityLevel_Debug, m_state->printFeature, "Tag %s is %u", tag.c_str(), value);
}

ArgumentParser& Service::GetArgumentParser() { return m_state->arguments; }

void Service::SetVerbose(u32 verbose) {
  AaSysLogSetThreshold(verbose != 0 ? EAaSysLogSeverityLevel_Debug : EAaSysLogSeverityLevel_Info);
}

void Service::SetServiceStateRad(unsigned state) {
  m_state->serviceState = state;
  AaSysLogPrintE(EAaSysLogSeverityLevel_Debug, m_state->printFeature, "State 0x%x is 0x%x", m_state->serviceStateId,
                 state);
}

u32 Service::GetServiceStateRad() const { return m_state->commonState ? 0 : m_state->serviceState; }

void Service::SetUseCommonServiceState(u32 common) {
  m_state->commonState = common != 0;
  if (m_state->commonState) m_state->serviceState = 0;
}

}  // namespace ps::hwapi::common
