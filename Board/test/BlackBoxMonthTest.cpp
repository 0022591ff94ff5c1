// A month of the black box, on a clock that makes a day of a second.
#include "TestBoard.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <thread>

namespace boardtest {
namespace {

namespace fs = std::filesystem;

/// What the daemon holds.
struct Holdings {
  std::size_t descriptors = 0;
  std::size_t threads = 0;
  long residentKb = 0;
};

class BlackBoxMonthTest : public BoardTest {
 protected:
  void UpADayASecond() {
    // What the address sanitizer sets aside of freed memory, and its stacks of frames that were left, would look like
    // growth: they are touched bit by bit.
    const char* const options = std::getenv("ASAN_OPTIONS");
    SetVariable("ASAN_OPTIONS",
                std::string(options != nullptr ? options : "") +
                    ":quarantine_size_mb=0:thread_local_quarantine_size_kb=0:detect_stack_use_after_return=0");
    const std::string clock = "[clock]\nspeed = 86400\nstart = 2026-01-01T00:00:00Z\n";
    UpWith(Write("month.toml", clock + FileText(fs::path(BOARDS_FOLDER) / "kela.toml")));
  }

  fs::path Lifedata() const { return fs::path(StateFolder()) / "ffs/fs1/config/lifedata"; }
  std::string Trace() const { return FileText(Lifedata() / "blackbox_temperature"); }
  /// @return the day of the board file's time, e.g. "2026-01-17"; empty until there is one
  std::string DayOfBoardFile() const {
    const std::string text = FileText(Lifedata() / "blackbox");
    return text.starts_with("TIMESTAMP: ") ? text.substr(11, 10) : "";
  }
  /// Waits until the files were written on that day or later.
  bool WaitForDay(const std::string& day) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(200);
    while (DayOfBoardFile() < day) {
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
  }

  static Holdings HeldNow(const std::string& proc) {
    Holdings held;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(proc + "/fd")) ++held.descriptors;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(proc + "/task")) ++held.threads;
    std::ifstream status(proc + "/status");
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with("VmRSS:")) held.residentKb = std::stol(line.substr(6));
    }
    return held;
  }
  /// @return the least that the daemon holds at any time until @p day: what is left when no file is being written
  Holdings LeastUntil(const std::string& day) const {
    const std::string proc = "/proc/" + std::to_string(DaemonPid());
    Holdings least = HeldNow(proc);
    while (DayOfBoardFile() < day) {
      const Holdings held = HeldNow(proc);
      least.descriptors = std::min(least.descriptors, held.descriptors);
      least.threads = std::min(least.threads, held.threads);
      least.residentKb = std::min(least.residentKb, held.residentKb);
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return least;
  }
  /// @return the names in the lifedata folder
  std::vector<std::string> Files() const {
    std::vector<std::string> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(Lifedata())) {
      const std::string name = entry.path().filename();
      if (!name.starts_with(".")) files.push_back(name);  // hidden: a file that is being replaced just now
    }
    std::sort(files.begin(), files.end());
    return files;
  }
};

TEST_F(BlackBoxMonthTest, LeavesFilesMemoryAndHandlesAsTheyWere) {
  UpADayASecond();
  ASSERT_EQ(Clmctl({"temp", "start", "Kel", "--interval", "1min"}).status, 0);
  ASSERT_TRUE(WaitForDay("2026-01-04"));
  const pid_t daemon = DaemonPid();
  const std::vector<std::string> filesBefore = Files();
  const Holdings before = LeastUntil("2026-01-07");
  ASSERT_TRUE(WaitForDay("2026-02-06"));
  const std::vector<std::string> filesAfter = Files();
  const Holdings after = LeastUntil("2026-02-09");
  EXPECT_EQ(filesAfter, filesBefore);
  EXPECT_EQ(after.threads, before.threads);
  EXPECT_EQ(after.descriptors, before.descriptors);
  EXPECT_LE(after.residentKb, before.residentKb + 1024);
  EXPECT_EQ(DaemonPid(), daemon);
  const std::string trace = Trace();
  EXPECT_EQ(std::count(trace.begin(), trace.end(), '\n'), 7 + 180);
}

}  // namespace
}  // namespace boardtest
