// A log that nobody reads keeps nobody waiting, and says what is missing.
#include "AaSysLog.h"
#include "Support.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <optional>
#include <regex>
#include <sstream>
#include <thread>
#include <utility>
#include <vector>

namespace hwapi::test {
namespace {

/// More than any of these takes before somebody reads.
constexpr unsigned kFlood = 20'000;
const std::string kText(100, 'x');

/// Standard error that is read only when the test says so.
class Reader {
 public:
  /// @param reading,writing ends of a pipe, a socket or a terminal; taken over
  Reader(int reading, int writing) : m_reading(reading), m_before(::dup(STDERR_FILENO)) {
    ::fcntl(reading, F_SETFL, O_NONBLOCK);
    ::dup2(writing, STDERR_FILENO);
    ::close(writing);
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() {
    ::dup2(m_before, STDERR_FILENO);
    ::close(m_before);
    End();
  }

  /// Reads no more and is gone.
  void End() {
    if (m_reading >= 0) ::close(std::exchange(m_reading, -1));
  }

  /// @return all that is there now
  std::string Text() const {
    std::string text;
    char buffer[4096];
    for (ssize_t size = 0; (size = ::read(m_reading, buffer, sizeof buffer)) > 0;) {
      text.append(buffer, static_cast<std::size_t>(size));
    }
    return text;
  }

 private:
  int m_reading;
  int m_before;
};

void LogNumber(unsigned number) { AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 1, "line %u %s", number, kText.c_str()); }

/// What was read: the lines written and those that were said to be missing.
struct Account {
  unsigned written = 0;
  unsigned missing = 0;
  unsigned strange = 0;  ///< lines that are neither
  bool inOrder = true;   ///< each line is where its number says
};

Account AccountOf(const std::string& text) {
  const std::regex line("<6>line (\\d+) x{100}\r?");
  const std::regex gap("<4>Lines missing here: (\\d+); .*");
  Account account;
  std::istringstream lines(text);
  for (std::string read; std::getline(lines, read);) {
    std::smatch match;
    if (std::regex_match(read, match, line)) {
      account.inOrder = account.inOrder && std::stoul(match[1]) == account.written + account.missing;
      ++account.written;
    } else if (std::regex_match(read, match, gap)) {
      account.missing += static_cast<unsigned>(std::stoul(match[1]));
    } else {
      ++account.strange;
    }
  }
  return account;
}

class LogReader : public ::testing::Test {
 protected:
  void SetUp() override { ::setenv("NOTIFY_SOCKET", "@somewhere", 1); }

  /// Floods a log whose reader stands still, lets it read, and logs one line more.
  Account FloodThenRead(const Reader& reader) {
    for (unsigned i = 0; i < kFlood; ++i) {
      LogNumber(i);
    }
    std::string text = reader.Text();
    LogNumber(kFlood);
    text += reader.Text();
    return AccountOf(text);
  }

  std::optional<Reader> OnPipe() {
    int ends[2];
    EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    return std::optional<Reader>(std::in_place, ends[0], ends[1]);
  }

  const Board m_board;
};

TEST_F(LogReader, OfAPipeThatStandsStillDelaysNobodyAndIsToldWhatIsMissing) {
  const auto reader = OnPipe();
  const Account account = FloodThenRead(*reader);
  EXPECT_EQ(account.written + account.missing, kFlood + 1);
  EXPECT_GT(account.missing, 0u);
  EXPECT_TRUE(account.inOrder);
  EXPECT_EQ(account.strange, 0u);
}

TEST_F(LogReader, OfASocketThatStandsStillDelaysNobodyAndIsToldWhatIsMissing) {
  int ends[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  const Reader reader(ends[0], ends[1]);
  const Account account = FloodThenRead(reader);
  EXPECT_EQ(account.written + account.missing, kFlood + 1);
  EXPECT_GT(account.missing, 0u);
  EXPECT_TRUE(account.inOrder);
  EXPECT_EQ(account.strange, 0u);
}

TEST_F(LogReader, OfATerminalThatStandsStillDelaysNobody) {
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_TRUE(terminal >= 0 && ::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
  const Reader reader(terminal, ::open(::ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC));
  const Account account = FloodThenRead(reader);
  EXPECT_LT(account.written, kFlood);
}

TEST_F(LogReader, ThatStandsStillDelaysNobodyWithoutAFreeDescriptor) {
  Peer process([&] {
    const auto reader = OnPipe();
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const int next = ::dup(STDERR_FILENO);
    ::close(next);
    const rlimit full{.rlim_cur = static_cast<rlim_t>(next), .rlim_max = before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &full), 0);
    AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 1, "the first line");
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);  // a sanitizer needs descriptors of its own
    const Account account = FloodThenRead(*reader);
    EXPECT_EQ(account.written + account.missing, kFlood + 1);
    EXPECT_GT(account.missing, 0u);
  });
  EXPECT_TRUE(process.Ended());
}

/// Lets a log have a reader that is gone, and one after it.
void LogToAReaderThatEnds(Reader& gone) {
  LogNumber(0);
  gone.End();
  LogNumber(1);
  LogNumber(2);
}

TEST_F(LogReader, OfAPipeThatEndsCostsNothingButLinesAndIsToldWhatIsMissing) {
  Peer process([&] {
    auto gone = OnPipe();
    LogToAReaderThatEnds(*gone);
    const auto successor = OnPipe();
    LogNumber(3);
    const std::string text = successor->Text();
    EXPECT_TRUE(text.starts_with("<4>Lines missing here: 2; ")) << text;
    EXPECT_TRUE(text.ends_with("\n<6>line 3 " + kText + "\n")) << text;
  });
  EXPECT_TRUE(process.Ended());
}

TEST_F(LogReader, OfANamedPipeMayEndAndAnotherOneComes) {
  Peer process([&] {
    const std::string path = m_board.Folder() + "/log";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const auto open = [&path] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); };
    const int reading = open();
    Reader gone(reading, ::open(path.c_str(), O_WRONLY | O_CLOEXEC));
    LogToAReaderThatEnds(gone);
    const int successor = open();
    LogNumber(3);
    char text[1024] = "";
    ASSERT_GT(::read(successor, text, sizeof text - 1), 0);
    EXPECT_EQ(Occurrences(text, "\n<4>Lines missing here: 2; "), 1u) << text;
    ::close(successor);
  });
  EXPECT_TRUE(process.Ended());
}

/// @return whether SIGPIPE waits for the thread or the process
bool IsPipeSignalPending() {
  sigset_t pending;
  ::sigpending(&pending);
  return sigismember(&pending, SIGPIPE) == 1;
}

TEST_F(LogReader, ThatEndsLeavesTheProgramsOwnPipeSignalAlone) {
  Peer process([&] {
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &pipe, nullptr), 0);
    auto gone = OnPipe();
    LogToAReaderThatEnds(*gone);
    EXPECT_FALSE(IsPipeSignalPending()) << "the log's";
    ::raise(SIGPIPE);
    LogNumber(3);
    EXPECT_TRUE(IsPipeSignalPending()) << "the program's";
  });
  EXPECT_TRUE(process.Ended());
}

TEST_F(LogReader, ThatEndsLeavesItToTheProgramWhatThePipeSignalDoes) {
  const Event logged;
  Peer process([&] {
    auto gone = OnPipe();
    LogToAReaderThatEnds(*gone);
    logged.Happened();
    ::raise(SIGPIPE);
  });
  EXPECT_TRUE(logged.Await());
  EXPECT_FALSE(process.Ended());
}

TEST_F(LogReader, GetsNoLineAfterAGapBeforeTheGapIsReported) {
  constexpr std::size_t kLeft = 60;  // room for a short line, but not for a report
  const auto reader = OnPipe();
  const std::string page(4096 - kLeft - sizeof "<6>", 'x');
  for (int i = 0; i < 20; ++i) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 1, "%s", page.c_str());
  }
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 1, "after the gap");
  const std::string before = reader->Text();
  EXPECT_EQ(Occurrences(before, "after the gap"), 0u);
  EXPECT_LT(Occurrences(before, page), 20u);
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 1, "later");
  EXPECT_TRUE(reader->Text().starts_with("<4>Lines missing here: " + std::to_string(21 - Occurrences(before, page))));
}

TEST_F(LogReader, LeavesTheDescriptionThatOthersShareAsItIs) {
  const auto reader = OnPipe();
  LogNumber(0);
  EXPECT_EQ(::fcntl(STDERR_FILENO, F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(LogReader, ThatTakesThePlaceOfAnotherGetsTheNextLine) {
  const auto first = OnPipe();
  LogNumber(0);
  {
    const auto second = OnPipe();
    LogNumber(1);
    EXPECT_EQ(second->Text(), "<6>line 1 " + kText + "\n");
  }
  LogNumber(2);
  EXPECT_EQ(first->Text(), "<6>line 0 " + kText + "\n<6>line 2 " + kText + "\n");
}

/// Lines of several threads, each with numbers of its own, while the test reads now and then.
TEST_F(LogReader, OfSeveralThreadsGetsWholeLinesInOrderAndTheRightNumberOfMissingOnes) {
  constexpr unsigned kThreads = 4;
  constexpr unsigned kLines = 5000;
  const auto reader = OnPipe();
  std::atomic<unsigned> running = kThreads;
  std::vector<std::thread> threads;
  for (unsigned thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([thread, &running] {
      for (unsigned i = 0; i < kLines; ++i) {
        AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 1, "%u %u %s", thread, i, kText.c_str());
      }
      --running;
    });
  }
  std::string text;
  while (running != 0) {
    text += reader->Text();
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  text += reader->Text();
  AaSysLogPrintE(EAaSysLogSeverityLevel_Info, 1, "%u 0 %s", kThreads, kText.c_str());
  text += reader->Text();

  std::vector<unsigned> next(kThreads + 1, 0);
  unsigned written = 0;
  unsigned missing = 0;
  const std::regex line("<6>(\\d) (\\d+) x{100}");
  const std::regex gap("<4>Lines missing here: (\\d+); .*");
  std::istringstream lines(text);
  for (std::string read; std::getline(lines, read);) {
    std::smatch match;
    if (std::regex_match(read, match, gap)) {
      missing += static_cast<unsigned>(std::stoul(match[1]));
      continue;
    }
    ASSERT_TRUE(std::regex_match(read, match, line)) << read;
    const unsigned number = static_cast<unsigned>(std::stoul(match[2]));
    ASSERT_GE(number, next.at(std::stoul(match[1])));
    next.at(std::stoul(match[1])) = number + 1;
    ++written;
  }
  EXPECT_EQ(written + missing, kThreads * kLines + 1);
}

}  // namespace
}  // namespace hwapi::test
