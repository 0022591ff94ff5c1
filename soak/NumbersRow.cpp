/// Threads that take any free task, ask, give it back, and do it again.
#include "Child.h"
#include "Requests.h"
#include "Rows.h"
#include "Scene.h"
#include "messages/FanControl.h"
#include "messages/MessageIds.h"

#include <string>
#include <thread>
#include <vector>

namespace soak {
namespace {

constexpr unsigned kThreads = 256;
constexpr unsigned kRequests = 78;
constexpr unsigned kCycles = 5;
/// Every so many threads, one gives its task back with an answer on its way. More would not fit the process's room.
constexpr unsigned kLeavesAnswer = 32;

struct Counts {
  std::atomic<unsigned> answered{0};
  std::atomic<unsigned> unanswered{0};
  std::atomic<unsigned> foreign{0};     ///< answers to another registration, or not to what was asked last
  std::atomic<unsigned> left{0};        ///< requests whose task was given back at once
  std::atomic<unsigned> unexpected{0};  ///< answers counted as ones to a registration that had ended
};

/// @return whether the answer to this request came, and no other one
bool IsAnswered(u32 transaction, Counts& counts) {
  SendFrequency(transaction);
  const Message message = Receive(kDeadline);
  if (!message) {
    ++counts.unanswered;
    return false;
  }
  const auto answer = PayloadOf<SApiSetFanPwmFreqResp>(message, API_SET_FAN_PWM_FREQ_RESP_MSG);
  if (!answer || answer->transactionId != transaction) {
    ++counts.foreign;
    return false;
  }
  ++counts.answered;
  return true;
}

void RunThread(u32 number, Counts& counts) {
  u32 transaction = number << 16;
  for (unsigned cycle = 0; cycle < kCycles; ++cycle) {
    const Task task;
    for (unsigned i = 0; i < kRequests; ++i) {
      if (!IsAnswered(++transaction, counts)) return;
    }
    if (number % kLeavesAnswer == 0) {
      SendFrequency(++transaction);
      ++counts.left;
    }
  }
}

void RunThreads(Counts& counts) {
  const u32 unexpected = AaSysComCounterGet(EAaSysComCounter_Unexpected);
  std::vector<std::thread> threads;
  for (u32 number = 0; number < kThreads; ++number) threads.emplace_back(&RunThread, number, std::ref(counts));
  for (std::thread& thread : threads) thread.join();
  counts.unexpected += AaSysComCounterGet(EAaSysComCounter_Unexpected) - unexpected;
}

/// Gives tasks back whose answer has arrived or not, until one is counted.
void LeaveAnswers(Counts& counts) {
  const u32 unexpected = AaSysComCounterGet(EAaSysComCounter_Unexpected);
  constexpr u16 kNothing[] = {1, 0};
  for (const double end = Now() + kDeadline; Now() < end && counts.unexpected == 0;) {
    {
      const Task task;
      SendFrequency(++counts.left);
      AaSysComMsgReceive(1, kNothing);
    }
    counts.unexpected = AaSysComCounterGet(EAaSysComCounter_Unexpected) - unexpected;
  }
}

}  // namespace

void AttackByNumbers(const Settings& settings, Report& report) {
  const bench::BenchBoard board(kBoard);
  Scene scene(board, settings);
  scene.StartWatching();
  unsigned runs = 0;
  unsigned failed = 0;
  const Shared<Counts> counts;
  const double end = Now() + settings.seconds;
  do {
    Child client([&counts] { RunThreads(*counts); });
    failed += client.EndsWell(5 * kDeadline) ? 0U : 1U;
    ++runs;
  } while (failed == 0 && counts->unanswered == 0 && Now() < end);
  report.Progress(std::to_string(runs) + " runs, " + std::to_string(counts->answered) + " answers");
  report.Hard("runs that did not end well", failed, "", 0);
  report.Hard("requests without an answer", counts->unanswered, "", 0);
  report.Hard("answers missing of all that were due", runs * kThreads * kCycles * kRequests - counts->answered, "", 0);
  report.Hard("answers to another registration", counts->foreign, "", 0);
  report.Hard("answers counted as unexpected, of those left", counts->unexpected, "", counts->left);

  const Shared<Counts> left;
  Child leaver([&left] { LeaveAnswers(*left); });
  report.Hard("leaving process did not end well", leaver.EndsWell(3 * kDeadline) ? 0 : 1, "", 0);
  report.Hard("left answers that are never counted", left->unexpected > 0 ? 0 : 1, "", 0);
  scene.ReportWatched(report, "");
}

}  // namespace soak
