#include "AaSysCom.h"
#include "Benches.h"
#include "Endpoints.h"
#include "Process.h"
#include "messages/MessageIds.h"
#include "messages/TempMeas.h"

#include <benchmark/benchmark.h>

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <array>
#include <csignal>

namespace bench {
namespace {

/// The platform's header travels with every message.
constexpr std::size_t kHeaderSize = 32;
constexpr std::size_t kRequestSize = kHeaderSize + sizeof(SApiTempMeasReq);
constexpr std::size_t kResponseSize = kHeaderSize + sizeof(SApiTempMeasResp);

void BareSocketPair(benchmark::State& state) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) Die("socketpair");
  const pid_t echo = fork();
  if (echo == 0) {
    std::array<char, kRequestSize> message{};
    while (recv(ends[1], message.data(), message.size(), 0) > 0) send(ends[1], message.data(), kResponseSize, 0);
    _exit(0);
  }
  std::array<char, kRequestSize> message{};
  for (auto _ : state) {
    send(ends[0], message.data(), kRequestSize, 0);
    benchmark::DoNotOptimize(recv(ends[0], message.data(), message.size(), 0));
  }
  kill(echo, SIGKILL);
  waitpid(echo, nullptr, 0);
  close(ends[0]);
  close(ends[1]);
}

/// A stop of a measurement that does not run: the shortest way through the daemon that is answered.
void ThroughDaemon(benchmark::State& state, const BenchBoard& board) {
  const Daemon daemon({CLM_PROGRAM}, board.Environment());
  const u32 task = AaSysComUserRegister(0, AaProEuCurrent());
  const TAaSysComNid node = AaSysComGetOwnNid();
  for (auto _ : state) {
    void* request = AaSysComMsgCreate(API_TEMP_MEAS_REQ_MSG, sizeof(SApiTempMeasReq),
                                      AaSysComSicadGet(HWAPI_TEMPERATURE_SERVICE, node));
    auto* payload = static_cast<SApiTempMeasReq*>(AaSysComMsgGetPayload(request));
    payload->command = ETempMeasCommand_Stop;
    payload->sensorType = ETempSensorType_Kel;
    AaSysComMsgSend(&request);
    void* response = AaSysComMsgReceive(AASYSCOM_NO_TIMEOUT, nullptr);
    AaSysComMsgDestroy(&response);
  }
  AaSysComUserDeregister(task);
}

}  // namespace

void RegisterRoundTrip(const BenchBoard& board) {
  benchmark::RegisterBenchmark("RoundTrip/bare_socket_pair", BareSocketPair)->UseRealTime();
  benchmark::RegisterBenchmark("RoundTrip/through_daemon", ThroughDaemon, std::cref(board))->UseRealTime();
}

}  // namespace bench
