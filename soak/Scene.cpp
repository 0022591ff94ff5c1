#include "Scene.h"

#include <poll.h>
#include <sys/socket.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace soak {
namespace {

/// What a daemon may grow by. Sanitizers keep what was freed.
#ifdef CLM_SANITIZED
constexpr double kMaxGrowthMiB = 512;
#else
constexpr double kMaxGrowthMiB = 8;
#endif

constexpr double kMaxLateSign = 1;

bench::Surroundings SurroundingsOf(const bench::BenchBoard& board, const SceneNeeds& needs, const std::string& log) {
  bench::Surroundings surroundings{.environment = board.Environment(), .descriptors = needs.descriptors};
  if (needs.log) surroundings.log = log;
  if (!needs.library.empty()) {
    surroundings.environment["LD_PRELOAD"] = needs.library;
    const char* const options = std::getenv("ASAN_OPTIONS");
    surroundings.environment["ASAN_OPTIONS"] =
        std::string(options != nullptr ? options : "") + ":verify_asan_link_order=0";
  }
  // Signs come twice in that time, in board time.
  surroundings.environment["WATCHDOG_USEC"] = std::to_string(static_cast<long>(2 * kSignPeriod * kClockSpeed * 1e6));
  return surroundings;
}

}  // namespace

Scene::Scene(const bench::BenchBoard& board, const Settings& settings, const SceneNeeds& needs)
    : m_board(board),
      m_log((m_board.Folder() / "clm.log").string()),
      m_daemon({settings.daemon}, SurroundingsOf(m_board, needs, m_log)),
      m_watcher([this] { Watch(); }) {}

double Scene::CpuSeconds() const {
  clockid_t clock{};
  timespec used{};
  if (clock_getcpuclockid(m_daemon.Pid(), &clock) != 0 || clock_gettime(clock, &used) != 0) return 0;
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

double Scene::ResidentMiB() const {
  std::ifstream status("/proc/" + std::to_string(m_daemon.Pid()) + "/status");
  double kib = 0;
  for (std::string line; std::getline(status, line);) {
    std::string name;
    if (line.starts_with("VmRSS:")) std::istringstream(line) >> name >> kib;
  }
  return kib / 1024;
}

std::size_t Scene::Descriptors() const {
  std::error_code error;  // it may have ended
  const std::filesystem::directory_iterator all("/proc/" + std::to_string(m_daemon.Pid()) + "/fd", error);
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

std::size_t Scene::LogLines() const {
  std::ifstream log(m_log);
  return static_cast<std::size_t>(std::count(std::istreambuf_iterator<char>(log), {}, '\n'));
}

std::string Scene::SocketOf(unsigned task) const {
  char name[16];
  std::snprintf(name, sizeof name, "0101-%04X", task);
  return (m_board.Folder() / "run/com" / name).string();
}

void Scene::StartWatching() {
  m_residentAtStart = ResidentMiB();
  m_seen->maxResidentMiB = m_residentAtStart;
  m_seen->lastSign = Now();
  m_seen->maxSilence = 0;
}

/// The watching process.
void Scene::Watch() const {
  constexpr int kPauseMs = 20;
  Seen& seen = *m_seen;
  seen.lastSign = Now();
  for (;;) {
    pollfd waiting{.fd = m_daemon.NotifySocket(), .events = POLLIN, .revents = 0};
    poll(&waiting, 1, kPauseMs);
    seen.maxResidentMiB = std::max(seen.maxResidentMiB.load(), ResidentMiB());
    seen.maxSilence = std::max(seen.maxSilence.load(), Now() - seen.lastSign);
    char text[64] = {};
    if (recv(m_daemon.NotifySocket(), text, sizeof text - 1, MSG_DONTWAIT) <= 0) continue;
    if (std::strstr(text, "WATCHDOG=1") == nullptr) continue;
    seen.lastSign = Now();
    ++seen.signs;
  }
}

void Scene::ReportWatched(Report& report, const std::string& where) {
  const double silence = m_seen->maxSilence;
  const unsigned signs = m_seen->signs;
  const bool goOn = Eventually([&] { return m_seen->signs != signs; });
  report.Hard("daemon ended" + where, IsAlive() ? 0 : 1, "", 0);
  report.Hard("memory grew" + where, m_seen->maxResidentMiB - m_residentAtStart, "MiB", kMaxGrowthMiB);
  report.Timed("sign of life late by" + where, std::max(0.0, silence - kSignPeriod), "s", kMaxLateSign);
  report.Hard("signs of life that never come again" + where, goOn ? 0 : 1, "", 0);
}

}  // namespace soak
