// The file of the board's clock when others cut it, damage it, lock it, or put something else in its place.
#include "AaSysTime.h"
#include "Clock.h"
#include "ClockFile.h"
#include "Fd.h"
#include "LockedFile.h"
#include "Support.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

namespace hwapi::test {
namespace {

constexpr SAaTime kSet{.year = 2031, .month = 2, .day = 3, .hour = 4, .minute = 5, .second = 6, .millisec = 7};

std::string PathOfClock(const Board& board) { return board.Run() + "/clock"; }

u32 YearNow() {
  SAaTime now{};
  EXPECT_EQ(AaUtcTimeGet(&now), 0);
  return now.year;
}

void ExpectTheSetYearOften() {
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(YearNow(), kSet.year);
  }
}

TEST(ClockFile, CutOffWhileProcessesRunStopsNobodyAndChangesNoTime) {
  const Board board;
  const Event ready;
  const Event cut;
  Peer reader([&] {
    YearNow();
    ready.Happened();
    cut.Await();
    ExpectTheSetYearOften();
  });
  Peer late([&] {
    cut.Await();
    EXPECT_EQ(YearNow(), kSet.year) << "a process that starts afterwards";
  });
  ASSERT_TRUE(ready.Await());
  ASSERT_EQ(AaUtcTimeSet(&kSet), 0);
  ASSERT_EQ(::truncate(PathOfClock(board).c_str(), 0), 0);
  ExpectTheSetYearOften();
  cut.Happened();
  cut.Happened();
  EXPECT_TRUE(reader.Ended());
  EXPECT_TRUE(late.Ended());
}

TEST(ClockFile, CutOffOverAndOverStopsNobody) {
  const Board board("[clock]\nspeed = 60\n");
  const std::string path = PathOfClock(board);
  const Event ready;
  Peer vandal([&] {
    ready.Await();
    for (;;) {
      if (::truncate(path.c_str(), 0) != 0 || ::truncate(path.c_str(), 50) != 0) {
        ::_exit(1);
      }
    }
  });
  qis::UtcUs last = qis::Clock::Own().Now();
  ready.Happened();
  for (int i = 0; i < 20'000; ++i) {
    const qis::UtcUs now = qis::Clock::Own().Now();
    ASSERT_GE(now, last);
    last = now;
  }
}

TEST(ClockFile, WithOtherContentIsPutRight) {
  const Board board;
  ASSERT_EQ(AaUtcTimeSet(&kSet), 0);
  const auto size = static_cast<std::size_t>(std::filesystem::file_size(PathOfClock(board)));
  std::ofstream(PathOfClock(board)) << std::string(200, 'x');
  EXPECT_EQ(YearNow(), kSet.year);
  std::ifstream file(PathOfClock(board));
  std::string content(size, '\0');
  file.read(content.data(), static_cast<std::streamsize>(size));
  EXPECT_NE(content, std::string(size, 'x'));
}

TEST(ClockFile, CutOffDoesNotKeepSleepersFromWaking) {
  const Board board("[clock]\nspeed = 0\nstart = 2024-01-31T09:30:00Z\n");
  const std::string over = board.Folder() + "/over";
  Peer sleeper([&] {
    AaSysTimeSleep(60, EAaSysTimeScale_Sec);
    ::close(::creat(over.c_str(), 0600));
  });
  EXPECT_TRUE(Eventually([&] {
    EXPECT_EQ(qis::Clock::Own().Set(qis::Clock::Own().Now() + 60'000'000), 0);
    EXPECT_EQ(::truncate(PathOfClock(board).c_str(), 0), 0);
    return ::access(over.c_str(), F_OK) == 0;
  }));
}

TEST(ClockFile, ThatAStoppedProcessKeepsLockedIsReportedWithThatProcess) {
  const Board board;
  const std::string path = PathOfClock(board);
  const Event go;
  const Event locked;
  pid_t holder = 0;
  Peer stopped([&] {
    go.Await();
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(::flock(file, LOCK_EX), 0);
    std::ofstream(board.Folder() + "/pid") << ::getpid();
    locked.Happened();
    ::raise(SIGSTOP);
  });
  YearNow();
  go.Happened();
  ASSERT_TRUE(locked.Await());
  std::ifstream(board.Folder() + "/pid") >> holder;
  const ErrorOutput log;
  EXPECT_EQ(AaUtcTimeSet(&kSet), ETIMEDOUT);
  EXPECT_LT(YearNow(), kSet.year);
  EXPECT_EQ(Occurrences(log.Text(), path + " is kept locked by process " + std::to_string(holder)), 1u) << log.Text();
}

/// @return the beginning of a clock in a boot; "" is one that is not known
qis::ClockState FreshClock(const std::string& boot) {
  qis::ClockState fresh{.origin = {.speed = 60}, .monotonicEpochUs = 1};
  boot.copy(fresh.origin.boot.data(), boot.size());
  return fresh;
}

void SetOffset(qis::ClockFile& file, std::int64_t us) {
  EXPECT_EQ(file.Change([us](qis::ClockState& state) { state.offsetUs = us; }), 0);
}

TEST(ClockFile, IsOneOfProcessesThatKnowTheBootAndThoseThatDoNot) {
  const Board board;
  qis::ClockFile knowing(FreshClock("this boot"));
  SetOffset(knowing, 1);
  qis::ClockFile unknowing(FreshClock(""));
  EXPECT_EQ(unknowing.Read().offsetUs, 1);
  SetOffset(knowing, 2);
  EXPECT_EQ(unknowing.Read().offsetUs, 2);
  SetOffset(unknowing, 3);
  EXPECT_EQ(knowing.Read().offsetUs, 3);
  EXPECT_EQ(qis::ClockFile(FreshClock("this boot")).Read().offsetUs, 3);
}

TEST(ClockFile, OfAProcessThatDoesNotKnowTheBootGetsItFromTheNextThatDoes) {
  const Board board;
  qis::ClockFile unknowing(FreshClock(""));
  SetOffset(unknowing, 1);
  EXPECT_EQ(qis::ClockFile(FreshClock("this boot")).Read().offsetUs, 1);
  SetOffset(unknowing, 2);
  EXPECT_EQ(qis::ClockFile(FreshClock("this boot")).Read().offsetUs, 2);
  EXPECT_EQ(qis::ClockFile(FreshClock("the next boot")).Read().offsetUs, 0) << "its clock begins";
}

TEST(ClockFile, OfAnotherBootIsReplacedAlsoForAProcessThatDoesNotKnowTheBoot) {
  const Board board;
  qis::ClockFile before(FreshClock("this boot"));
  SetOffset(before, 1);
  qis::ClockFile unknowing(FreshClock(""));
  qis::ClockFile after(FreshClock("the next boot"));
  EXPECT_EQ(after.Read().offsetUs, 0);
  SetOffset(after, 2);
  EXPECT_EQ(unknowing.Read().offsetUs, 2);
}

TEST(ClockFile, ThatIsKeptLockedIsReportedWithWhereTheProcessIsNamedIfNotHere) {
  const Board board;
  const qis::Fd file(::open((board.Folder() + "/file").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600));
  const ErrorOutput log;
  qis::ReportKeptLock(file.Get(), "the file");
  rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  const rlimit none{.rlim_cur = 0, .rlim_max = before.rlim_max};  // nothing can be opened
  ::setrlimit(RLIMIT_NOFILE, &none);
  qis::ReportKeptLock(file.Get(), "the file");
  ::setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(Occurrences(log.Text(), "the file is kept locked by another process: continue or end"), 1u) << log.Text();
  EXPECT_EQ(Occurrences(log.Text(), "locked by another process, and /proc/locks, which names it, is not to be read"),
            1u)
      << log.Text();
}

TEST(ClockFile, ThatIsAPipeIsReportedAsOneAndTheProcessHasAClockOfItsOwn) {
  const Board board;
  ASSERT_EQ(::mkfifo(PathOfClock(board).c_str(), 0600), 0);
  const ErrorOutput log;
  EXPECT_EQ(AaUtcTimeSet(&kSet), 0);
  EXPECT_EQ(YearNow(), kSet.year);
  EXPECT_EQ(Occurrences(log.Text(), PathOfClock(board) + " is a FIFO, not a file: remove it"), 1u) << log.Text();
  EXPECT_EQ(Occurrences(log.Text(), "this process keeps its own"), 1u);
}

}  // namespace
}  // namespace hwapi::test
