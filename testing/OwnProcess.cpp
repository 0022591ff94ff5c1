#include "OwnProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace clm::testing {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// What ctest takes for "skipped" (SKIP_RETURN_CODE in cmake/Testing.cmake).
constexpr int kSkipped = 77;

[[noreturn]] void ThrowErrno(const char* call) { throw std::system_error(errno, std::generic_category(), call); }

/// Takes what a child writes. Not a pipe: whoever outlives the child and holds it open keeps nobody waiting.
class Output {
 public:
  Output() {
    if (m_descriptor < 0) ThrowErrno("memfd_create");
  }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output() { close(m_descriptor); }

  /// In the child: both streams end here.
  void Take() const {
    if (dup2(m_descriptor, STDOUT_FILENO) < 0 || dup2(m_descriptor, STDERR_FILENO) < 0) _exit(1);
  }

  [[nodiscard]] std::string Text() const {
    std::string text;
    char part[4096];
    for (ssize_t size = 0; (size = pread(m_descriptor, part, sizeof(part), static_cast<off_t>(text.size()))) > 0;) {
      text.append(part, static_cast<std::size_t>(size));
    }
    return text;
  }

 private:
  int m_descriptor = memfd_create("output of a test", MFD_CLOEXEC);
};

/// Runs `work` in a child, which ends with its parent at the latest, and whose exit status is what `work` returns.
pid_t Fork(const Output& output, const std::function<int()>& work) {
  std::fflush(nullptr);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) ThrowErrno("fork");
  if (child != 0) return child;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(1);
  output.Take();
  std::exit(work());  // not _exit: what looks for leaks or writes counters does it at the end
}

int Descriptor(pid_t child) { return static_cast<int>(syscall(SYS_pidfd_open, child, 0)); }

/// The wait status of a child, which is killed once `limit` is over; `inTime` says whether it was not.
int Await(pid_t child, std::chrono::seconds limit, bool& inTime) {
  const int descriptor = Descriptor(child);
  if (descriptor < 0) ThrowErrno("pidfd_open");
  pollfd ended{.fd = descriptor, .events = POLLIN, .revents = 0};
  inTime = poll(&ended, 1, static_cast<int>(milliseconds(limit).count())) == 1;
  close(descriptor);
  if (!inTime) kill(child, SIGKILL);
  int status = 0;
  if (waitpid(child, &status, 0) != child) ThrowErrno("waitpid");
  return status;
}

Outcome OutcomeOf(int status, bool inTime) {
  if (!inTime) return Outcome::TimedOut;
  if (!WIFEXITED(status)) return Outcome::Failed;
  if (WEXITSTATUS(status) == kSkipped) return Outcome::Skipped;
  return WEXITSTATUS(status) == 0 ? Outcome::Passed : Outcome::Failed;
}

std::string EndOf(int status, bool inTime, std::chrono::seconds limit) {
  if (!inTime) return "killed: not finished after " + std::to_string(limit.count()) + " s";
  if (WIFSIGNALED(status)) return "ended by signal " + std::to_string(WTERMSIG(status));
  return "exit status " + std::to_string(WEXITSTATUS(status));
}

const char* Word(Outcome outcome) {
  switch (outcome) {
    case Outcome::Passed:
      return "passed ";
    case Outcome::Skipped:
      return "SKIPPED";
    case Outcome::Failed:
      return "FAILED ";
    case Outcome::TimedOut:
      return "TIMEOUT";
  }
  return "?";
}

void Print(const std::string& test, const Result& result) {
  std::printf("%s %s (%lld ms)\n", Word(result.outcome), test.c_str(), static_cast<long long>(result.took.count()));
  if (result.outcome == Outcome::Passed) return;
  std::printf("%s%s: %s\n", result.output.c_str(), test.c_str(), result.end.c_str());
}

}  // namespace

std::vector<std::string> SelectedTests() {
  const Output output;
  const pid_t child = Fork(output, [] {
    GTEST_FLAG_SET(list_tests, true);
    return RUN_ALL_TESTS();
  });
  bool inTime = false;
  if (Await(child, std::chrono::seconds(60), inTime) != 0) throw std::runtime_error("the tests cannot be listed");
  // "Suite." and, indented, "Name"; after each there may be a comment that begins with "  #".
  std::vector<std::string> tests;
  std::istringstream lines(output.Text());
  std::string suite;
  for (std::string line; std::getline(lines, line);) {
    const bool isTest = line.starts_with("  ");
    const std::string name = line.substr(isTest ? 2 : 0, line.find("  #") - (isTest ? 2 : 0));
    if (!isTest) {
      suite = name;
    } else if (GTEST_FLAG_GET(also_run_disabled_tests) || (suite + name).find("DISABLED_") == std::string::npos) {
      tests.push_back(suite + name);
    }
  }
  return tests;
}

Result RunInOwnProcess(const std::string& test, std::chrono::seconds limit) {
  const Output output;
  const auto begin = steady_clock::now();
  const pid_t child = Fork(output, [&test] {
    GTEST_FLAG_SET(filter, test);
    GTEST_FLAG_SET(repeat, 1);
    const int status = RUN_ALL_TESTS();
    return status == 0 && ::testing::UnitTest::GetInstance()->skipped_test_count() > 0 ? kSkipped : status;
  });
  bool inTime = false;
  const int status = Await(child, limit, inTime);
  return {.outcome = OutcomeOf(status, inTime),
          .output = output.Text(),
          .end = EndOf(status, inTime, limit),
          .took = std::chrono::duration_cast<milliseconds>(steady_clock::now() - begin)};
}

int RunEachInOwnProcess(std::chrono::seconds limit) {
  const std::vector<std::string> selected = SelectedTests();
  std::vector<std::string> tests;
  for (int left = GTEST_FLAG_GET(repeat); left > 0; --left) tests.insert(tests.end(), selected.begin(), selected.end());
  std::size_t passed = 0;
  std::size_t skipped = 0;
  for (const std::string& test : tests) {
    const Result result = RunInOwnProcess(test, limit);
    Print(test, result);
    passed += result.outcome == Outcome::Passed ? 1 : 0;
    skipped += result.outcome == Outcome::Skipped ? 1 : 0;
  }
  std::printf("%zu tests: %zu passed, %zu skipped, %zu failed\n", tests.size(), passed, skipped,
              tests.size() - passed - skipped);
  if (tests.empty() || passed + skipped != tests.size()) return 1;
  return passed == 0 ? kSkipped : 0;
}

}  // namespace clm::testing
