// Public tags between processes.
#include "AaConfig.h"
#include "Support.h"
#include "TagFile.h"
#include "TagReader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace hwapi::test {
namespace {

using Values = std::vector<std::string>;

i32 Set(const std::string& name, const std::string& value) {
  return AaConfigTagPublicSet(name.c_str(), value.data(), static_cast<u32>(value.size()));
}

std::string Get(const char* name) {
  void* value = nullptr;
  if (AaConfigTagGet(name, &value) != 0) {
    return "(none)";
  }
  std::string text = static_cast<const char*>(value);
  AaMemUnRefDbg(value, __FILE__, __LINE__);
  return text;
}

/// What observers were told, in the order of the calls. Never destroyed: observers run until the process ends.
class Told {
 public:
  void Add(const std::string& value) {
    const std::lock_guard lock(m_mutex);
    m_values.push_back(value);
    m_changed.notify_all();
  }
  /// @return the values, once there are @p count, or what came in a generous time
  Values First(std::size_t count) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::seconds(20), [&] { return m_values.size() >= count; });
    return m_values;
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  Values m_values;
};

Told& TheTold() {
  static auto* const told = new Told;
  return *told;
}

void Observe(const char*, const void* value, u32 size) {
  TheTold().Add(std::string(static_cast<const char*>(value), size));
}

TEST(Tag, IsVisibleToAnotherProcess) {
  const Board board;
  const Event set;
  Peer setter([&] {
    Set("app.a", "one");
    set.Happened();
  });
  ASSERT_TRUE(set.Await());
  EXPECT_EQ(Get("app.a"), "one");
}

TEST(Tag, HasTheDescribedValueUntilItIsSet) {
  const Board board("[tags]\n\"app.a\" = \"described\"\n");
  EXPECT_EQ(Get("app.a"), "described");
  Set("app.a", "set");
  EXPECT_EQ(Get("app.a"), "set");
}

TEST(Tag, ObserverIsToldTheDescribedValueAtOnce) {
  const Board board("[tags]\n\"app.a\" = \"described\"\n");
  ASSERT_EQ(AaConfigTagRegister("app.a", &Observe), 0);
  EXPECT_EQ(TheTold().First(1), Values{"described"});
}

TEST(Tag, ObserverIsToldTheNewestValueThenEverySet) {
  const Board board;
  Set("app.a", "0");
  Set("app.a", "1");
  ASSERT_EQ(AaConfigTagRegister("app.a", &Observe), 0);
  Set("app.a", "2");
  Set("app.a", "2");
  EXPECT_EQ(TheTold().First(3), (Values{"1", "2", "2"}));
}

TEST(Tag, ObserverIsToldEverySetOfAnotherProcessInOrder) {
  constexpr int kSets = 3000;  // the log is replaced several times
  const Board board;
  const Event go;
  Peer setter([&] {
    go.Await();
    for (int i = 0; i < kSets; ++i) {
      Set("app.a", std::to_string(i) + std::string(100, ' '));
    }
  });
  ASSERT_EQ(AaConfigTagRegister("app.a", &Observe), 0);
  go.Happened();
  const Values values = TheTold().First(kSets);
  ASSERT_EQ(values.size(), std::size_t{kSets});
  for (int i = 0; i < kSets; ++i) {
    ASSERT_EQ(std::stoi(values[static_cast<std::size_t>(i)]), i);
  }
}

TEST(Tag, ObserverThatBlocksDelaysNoOther) {
  const Board board;
  const auto blockForEver = [](const char*, const void*, u32) {
    for (;;) {
      ::pause();
    }
  };
  Peer process([&] {
    AaConfigTagRegister("app.a", blockForEver);
    AaConfigTagRegister("app.a", &Observe);
    Set("app.a", "1");
    Set("app.a", "2");
    EXPECT_EQ(TheTold().First(2), (Values{"1", "2"}));
  });
  EXPECT_TRUE(process.Ended());
}

TEST(Tag, ObserverThatThrowsIsLoggedAndGoesOn) {
  const Board board;
  const ErrorOutput output;
  const auto throwAfterwards = [](const char* name, const void* value, u32 size) {
    Observe(name, value, size);
    throw std::runtime_error("no room for it");
  };
  ASSERT_EQ(AaConfigTagRegister("app.a", throwAfterwards), 0);
  Set("app.a", "1");
  Set("app.a", "2");
  EXPECT_EQ(TheTold().First(2), (Values{"1", "2"}));
  EXPECT_TRUE(Eventually([&] { return Occurrences(output.Text(), "app.a ended with: no room for it") == 2; }));
}

TEST(Tag, SurvivesWhatAKilledWriterLeftBehindTheEnd) {
  const Board board;
  Set("app.a", "1");
  ASSERT_EQ(AaConfigTagRegister("app.a", &Observe), 0);
  const std::string path = board.Run() + "/tags/app.a";
  const int file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  ASSERT_EQ(::write(file, "\x05\0\0\0half", 8), 8);
  ::close(file);
  EXPECT_EQ(Get("app.a"), "1");
  Set("app.a", "2");
  EXPECT_EQ(TheTold().First(2), (Values{"1", "2"}));
}

TEST(Tag, StaysWholeHoweverOftenItsWriterIsKilled) {
  const Board board;
  std::vector<std::unique_ptr<Peer>> writers;
  const Event busy;
  for (int i = 0; i < 10; ++i) {
    writers.push_back(std::make_unique<Peer>([&] {
      for (int round = 0;; ++round) {
        Set("app.a", std::string(500, static_cast<char>('a' + round % 26)));
        if (round == 20) {
          busy.Happened();
        }
      }
    }));
  }
  for (std::size_t i = 0; i < writers.size(); ++i) {
    ASSERT_TRUE(busy.Await());
  }
  writers.clear();  // killed one after the other, the rest still writing
  const std::string value = Get("app.a");
  EXPECT_EQ(value, std::string(500, value.front()));
  EXPECT_EQ(Set("app.a", "last"), 0);
  EXPECT_EQ(Get("app.a"), "last");
}

TEST(Tag, LogIsReplacedWhenItIsLong) {
  const Board board;
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(Set("app.a", std::string(AACONFIG_TAG_MAX_SIZE, 'x')), 0);
  }
  EXPECT_LE(std::filesystem::file_size(board.Run() + "/tags/app.a"), qis::kLongTagLog + 2 * AACONFIG_TAG_MAX_SIZE);
}

TEST(Tag, LogIsKeptForAReaderThatIsFarBehind) {
  constexpr int kSets = 1000;
  const Board board;
  Set("app.a", "first");
  qis::TagReader reader("app.a");
  const std::string filler(500, ' ');
  for (int i = 0; i < kSets; ++i) {
    Set("app.a", std::to_string(i) + filler);
  }
  for (int i = 0; i < kSets; ++i) {
    const auto value = reader.Next();
    ASSERT_TRUE(value);
    ASSERT_EQ(std::stoi(*value), i);
  }
  EXPECT_FALSE(reader.Next());
}

/// @return bytes of the logs of a tag that have a name
std::uintmax_t SizeOfLogs(const Board& board, const std::string& name) {
  const std::string old = board.Run() + "/tags.old/" + name;
  return std::filesystem::file_size(board.Run() + "/tags/" + name) +
         (std::filesystem::exists(old) ? std::filesystem::file_size(old) : 0);
}

TEST(Tag, LogIsBoundedAlsoWhenAReaderStandsStillWhichLearnsWhatItMissed) {
  const Board board;
  const ErrorOutput output;
  Set("app.a", "first");
  qis::TagReader reader("app.a");
  const std::string filler(AACONFIG_TAG_MAX_SIZE - 10, ' ');
  int sets = 0;
  for (std::size_t bytes = 0; bytes < 5 * qis::kMaxTagLog; bytes += filler.size(), ++sets) {
    ASSERT_EQ(Set("app.a", std::to_string(sets) + filler), 0);
    ASSERT_LE(SizeOfLogs(board, "app.a"), qis::kMaxTagLog + qis::kLongTagLog + 2 * AACONFIG_TAG_MAX_SIZE) << sets;
  }
  int read = 0;
  int last = -1;
  for (; const auto value = reader.Next(); ++read) {
    ASSERT_GT(std::stoi(*value), last);
    last = std::stoi(*value);
  }
  EXPECT_EQ(last, sets - 1);
  EXPECT_EQ(Occurrences(output.Text(), std::to_string(sets - read) + " values of the tag app.a were missed"), 1u)
      << output.Text();
}

/// Puts a copy in the place of a tag's log.
void ReplaceByACopy(const Board& board, const std::string& name) {
  const std::string path = board.Run() + "/tags/" + name;
  std::filesystem::copy_file(path, path + ".copy");
  std::filesystem::rename(path + ".copy", path);
}

TEST(Tag, ReplacedByALogThatRepeatsValuesGivesEachOnce) {
  const Board board;
  Set("app.a", "1");
  Set("app.a", "2");
  qis::TagReader reader("app.a");
  ReplaceByACopy(board, "app.a");
  EXPECT_FALSE(reader.Next()) << "it began behind these";
  Set("app.a", "3");
  EXPECT_EQ(reader.Next(), "3");
  ReplaceByACopy(board, "app.a");
  EXPECT_FALSE(reader.Next());
  Set("app.a", "4");
  EXPECT_EQ(reader.Next(), "4");
  EXPECT_FALSE(reader.Next());
}

TEST(Tag, NamesThatAreNoFileNamesAreRefused) {
  const Board board;
  EXPECT_EQ(Set("", "x"), EINVAL);
  EXPECT_EQ(Set("a/b", "x"), EINVAL);
  EXPECT_EQ(Set("..", "x"), EINVAL);
  EXPECT_EQ(Set(std::string(256, 'n'), "x"), ENAMETOOLONG);
}

/// An object of the program that observers use.
class Used {
 public:
  ~Used() { m_alive = false; }
  bool IsAlive() const { return m_alive; }

 private:
  std::atomic<bool> m_alive = true;
};

TEST(Tag, ObserversEndBeforeTheObjectsTheyUse) {
  const Board board;
  Peer process([&] {
    static Used used;
    static std::atomic<bool> running = false;
    const auto workOn = [](const char*, const void*, u32) {
      running = true;
      ::usleep(50'000);  // long enough to be inside while the process ends
      if (!used.IsAlive()) {
        ::_exit(1);
      }
    };
    AaConfigTagRegister("app.a", workOn);
    Set("app.a", "1");
    Set("app.a", "2");
    EXPECT_TRUE(Eventually([] { return running.load(); }));
    std::exit(0);
  });
  EXPECT_TRUE(process.Ended());
}

}  // namespace
}  // namespace hwapi::test
