/// Connections that say nothing.
#include "Connection.h"
#include "Endpoints.h"
#include "Honest.h"
#include "Rows.h"
#include "Scene.h"

#include <algorithm>
#include <vector>

namespace soak {
namespace {

constexpr rlim_t kDescriptors = 256;
constexpr unsigned kConnections = 260;
constexpr unsigned kNewClients = 10;
constexpr std::size_t kMaxLogLines = 100;
constexpr double kMaxCpuShare = 0.02;

}  // namespace

void AttackByIdleConnections(const Settings& settings, Report& report) {
  const bench::BenchBoard board(kBoard);
  Scene scene(board, settings, {.descriptors = kDescriptors, .log = true});
  scene.StartWatching();
  HonestClient earlier;
  Eventually([&] { return earlier.Answered() > 0; });

  std::vector<hwapi::qis::Fd> connections;
  std::size_t descriptors = 0;
  for (unsigned i = 0; i < kConnections; ++i) {
    connections.push_back(Connect(scene.SocketOf(HWAPI_TEMPERATURE_SERVICE)));
    descriptors = std::max(descriptors, scene.Descriptors());
  }
  report.Progress(std::to_string(kConnections) + " connections, " + std::to_string(scene.Descriptors()) +
                  " descriptors of the daemon");
  unsigned unanswered = 0;
  for (unsigned i = 0; i < kNewClients && unanswered == 0; ++i) {
    unanswered += NewClientIsAnswered() ? 0U : 1U;
    descriptors = std::max(descriptors, scene.Descriptors());
  }
  report.Hard("new clients without an answer", unanswered, "", 0);
  report.Hard("requests lost of a client that was there before", earlier.Finish(), "", 0);
  report.Hard("highest number of descriptors", static_cast<double>(descriptors), "", kDescriptors - 1);

  const double start = Now();
  const double cpu = scene.CpuSeconds();
  Sleep(std::min(settings.seconds, 2.0));
  report.Timed("processor time while nobody speaks", (scene.CpuSeconds() - cpu) / (Now() - start) * 100, "%",
               kMaxCpuShare * 100);
  connections.clear();
  report.Hard("new client without an answer after they went", NewClientIsAnswered() ? 0 : 1, "", 0);
  report.Hard("lines of the log", static_cast<double>(scene.LogLines()), "", kMaxLogLines);
  scene.ReportWatched(report, "");
}

}  // namespace soak
