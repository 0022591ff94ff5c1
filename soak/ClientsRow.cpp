/// Few clients and many.
#include "Child.h"
#include "Requests.h"
#include "Rows.h"
#include "Scene.h"

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>
#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace soak {
namespace {

/// Descriptors of the daemon and of each client process.
constexpr rlim_t kDescriptors = 8192;
constexpr unsigned kCounts[] = {1, 10, 100, 1000};
constexpr unsigned kRounds = 5;
constexpr unsigned kMaxProcesses = 10;
constexpr double kMaxRatio = 1.2;
constexpr double kMaxContactMs = 1;
constexpr unsigned kRegistrations = 1000;
constexpr double kMaxSecondHalf = 3;

/// A process with several clients, each with one request on its way.
struct Crowd {
  std::atomic<bool> isReady{false};
  std::atomic<unsigned long> answered{0};
  std::atomic<unsigned> onTheirWay{0};
};
struct Crowds {
  std::atomic<bool> stop{false};
  std::array<Crowd, kMaxProcesses> crowd;
  unsigned long Answered() const {
    unsigned long sum = 0;
    for (const Crowd& one : crowd) sum += one.answered;
    return sum;
  }
};

/// Keeps the daemon and its clients on one core, so that a rate is not a question of where they happen to run.
class OneCore {
 public:
  OneCore() {
    if (sched_getaffinity(0, sizeof m_before, &m_before) != 0) bench::Die("cores");
    bench::StayOnOneCore();
  }
  OneCore(const OneCore&) = delete;
  OneCore& operator=(const OneCore&) = delete;
  ~OneCore() { sched_setaffinity(0, sizeof m_before, &m_before); }

 private:
  cpu_set_t m_before{};
};

void RaiseDescriptors() {
  const rlimit limit{.rlim_cur = kDescriptors, .rlim_max = kDescriptors};
  if (setrlimit(RLIMIT_NOFILE, &limit) != 0) bench::Die("limit of descriptors");
}

void AskInTurn(unsigned clients, Crowd& crowd, const std::atomic<bool>& stop) {
  RaiseDescriptors();
  std::vector<Task> tasks(clients);
  for (const Task& task : tasks) SendStop(task.Address());
  for (crowd.onTheirWay = clients; crowd.onTheirWay > 0;) {
    const Message answer = Receive(kDeadline);
    if (!answer) return;  // what is on its way is lost
    ++crowd.answered;
    crowd.isReady = crowd.isReady || crowd.answered >= clients;
    if (stop) {
      --crowd.onTheirWay;
    } else {
      SendStop(AaSysComMsgGetReceiver(answer.get()));
    }
  }
}

struct Rate {
  double perSecond;
  double cpuUsPerMessage;
};

/// Lets that many clients ask for a while.
Rate MeasureRate(unsigned clients, const Scene& scene, double seconds, Report& report) {
  const Shared<Crowds> shared;
  const unsigned processes = std::min(clients, kMaxProcesses);
  std::vector<Child> children;
  for (unsigned i = 0; i < processes; ++i) {
    children.emplace_back([&, i] { AskInTurn(clients / processes, shared->crowd[i], shared->stop); });
  }
  const auto isReady = [&] {
    return std::count_if(shared->crowd.begin(), shared->crowd.end(), [](const Crowd& crowd) {
             return crowd.isReady.load();
           }) == static_cast<std::ptrdiff_t>(processes);
  };
  const std::string where = ", " + std::to_string(clients) + " clients";
  report.Hard("not all are served" + where, Eventually(isReady) ? 0 : 1, "", 0);

  const double start = Now();
  const double cpuStart = scene.CpuSeconds();
  const unsigned long answeredStart = shared->Answered();
  Sleep(seconds);
  const auto answered = static_cast<double>(std::max(shared->Answered() - answeredStart, 1UL));
  const Rate rate{.perSecond = answered / (Now() - start),
                  .cpuUsPerMessage = (scene.CpuSeconds() - cpuStart) * 1e6 / answered};
  shared->stop = true;
  unsigned lost = 0;
  for (Child& child : children) lost += child.EndsWell(2 * kDeadline) ? 0U : 1U;
  for (const Crowd& crowd : shared->crowd) lost += crowd.onTheirWay;
  report.Hard("requests lost" + where, lost, "", 0);
  report.Progress(std::to_string(clients) + " clients: " + std::to_string(static_cast<long>(rate.perSecond)) +
                  " requests/s, " + std::to_string(rate.cpuUsPerMessage) + " us of the daemon for each");
  return rate;
}

/// Numbers of clients in turn, several times, so that all of them see the same moods of the machine.
void MeasureRates(Scene& scene, const Settings& settings, Report& report) {
  const unsigned rounds = settings.IsShort() ? 1 : kRounds;
  std::array<std::vector<double>, std::size(kCounts)> perSecond;
  std::array<std::vector<double>, std::size(kCounts)> cpuUs;
  for (unsigned round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < std::size(kCounts); ++i) {
      const Rate rate = MeasureRate(kCounts[i], scene, settings.seconds / rounds, report);
      perSecond[i].push_back(rate.perSecond);
      cpuUs[i].push_back(rate.cpuUsPerMessage);
    }
    if (round == 0) scene.StartWatching();
  }
  for (std::size_t i = 1; i < std::size(kCounts); ++i) {
    const std::string many = std::to_string(kCounts[i]) + " clients";
    report.Timed("requests a second, 1 client / " + many, Median(perSecond[0]) / Median(perSecond[i]), "", kMaxRatio);
    report.Timed("daemon's time for a message, " + many + " / 1", Median(cpuUs[i]) / Median(cpuUs[0]), "", kMaxRatio);
  }
}

/// Each client is a process of its own that asks once.
void MeasureFirstContacts(Scene& scene, const Settings& settings, Report& report) {
  const unsigned contacts = settings.IsShort() ? 100 : 1000;
  const double cpuStart = scene.CpuSeconds();
  unsigned failed = 0;
  for (unsigned i = 0; i < contacts; ++i) {
    Child client([] {
      const Task task;
      SendStop();
      if (!Receive(kDeadline)) _exit(1);
    });
    failed += client.EndsWell(2 * kDeadline) ? 0U : 1U;
  }
  report.Hard("first contacts without an answer", failed, "", 0);
  report.Timed("daemon's time for a first contact", (scene.CpuSeconds() - cpuStart) * 1e3 / contacts, "ms",
               kMaxContactMs);
}

void MeasureRegistrations(Report& report) {
  struct Times {
    double first;
    double second;
  };
  const Shared<Times> times;
  Child client([&times] {
    RaiseDescriptors();
    std::vector<Task> tasks;
    const auto registerHalf = [&tasks] {
      const double start = Now();
      for (unsigned i = 0; i < kRegistrations / 2; ++i) tasks.emplace_back();
      return Now() - start;
    };
    times->first = registerHalf();
    times->second = registerHalf();
  });
  report.Hard("registrations that fail", client.EndsWell(5 * kDeadline) ? 0 : 1, "", 0);
  report.Progress(std::to_string(kRegistrations) + " registrations: " + std::to_string(times->first + times->second) +
                  " s");
  report.Timed("second 500 registrations / first 500", times->second / times->first, "", kMaxSecondHalf);
}

}  // namespace

void AttackByClients(const Settings& settings, Report& report) {
  const OneCore core;
  const bench::BenchBoard board(kBoard);
  Scene scene(board, settings, {.descriptors = kDescriptors});
  MeasureRates(scene, settings, report);
  MeasureFirstContacts(scene, settings, report);
  MeasureRegistrations(report);
  scene.ReportWatched(report, "");
}

}  // namespace soak
