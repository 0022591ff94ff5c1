// How many ways to other processes are kept, and which go for others.
#include "ConnectionBounds.h"
#include "Routes.h"
#include "Support.h"
#include "TaskName.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdio>
#include <filesystem>
#include <string>

namespace hwapi::test {
namespace {

constexpr u32 kFirstTask = 0x9000;

/// A process that has one listening socket under many names, and does not acknowledge anything.
class ManyNames : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    // Bounds are those of the first look at them: of a process with few descriptors.
    const rlimit few{.rlim_cur = 256, .rlim_max = 256};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
  }
  void SetUp() override {
    ASSERT_EQ(m_name.Claim(AddressOf(kFirstTask)), 0);
    for (u32 task = kFirstTask + 1; task < kFirstTask + kTasks; ++task) {
      std::filesystem::create_hard_link(PathOf(kFirstTask), PathOf(task));
    }
  }
  std::string PathOf(u32 task) const {
    char name[16];
    std::snprintf(name, sizeof name, "%04X-%04X", AddressOf(task) >> 16, AddressOf(task) & 0xFFFFu);
    return m_board.Run() + "/com/" + name;
  }
  static std::size_t OpenDescriptors() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
  }
  static void SendToAll() {
    for (u32 task = kFirstTask; task < kFirstTask + kTasks; ++task) SendNumber(AddressOf(task), 1, 0);
  }
  static u32 Lost() { return AaSysComCounterGet(EAaSysComCounter_NoReceiver); }

  static constexpr u32 kTasks = 100;
  const Board m_board;
  qis::TaskName m_name;
};

TEST_F(ManyNames, ThatNeverAcknowledgeGetABoundedNumberOfConnections) {
  const std::size_t before = OpenDescriptors();
  SendToAll();
  EXPECT_LE(OpenDescriptors(), before + qis::OwnBounds().all + 3) << "these are the platform's own";
}

TEST_F(ManyNames, ThatNeverAcknowledgeLoseTheOldestMessagesWhichAreCounted) {
  const ErrorOutput log;
  SendToAll();
  EXPECT_GE(Lost(), kTasks - qis::OwnBounds().all);
  EXPECT_LT(Lost(), kTasks);
  EXPECT_EQ(Occurrences(log.Text(), "it does not acknowledge them"), Lost());
}

TEST_F(ManyNames, ThatNeverAcknowledgeDoNotTakeTheWayOfOthersThatIsUsed) {
  const Event received;
  Peer receiver([&] {
    Serve(kServer);
    received.Happened();
    for (u32 i = 0; i < kTasks; ++i) EXPECT_EQ(ReceiveNumber().number, i);
    received.Happened();
  });
  ASSERT_TRUE(received.Await());
  for (u32 i = 0; i < kTasks; ++i) {
    SendNumber(AddressOf(kFirstTask + i), 1, 0);
    SendNumber(AddressOf(kServer), 1, i);
  }
  EXPECT_TRUE(received.Await());
}

TEST_F(ManyNames, ThatNeverAcknowledgeLoseNothingWhileThereAreWaysThatHoldNothing) {
  for (u32 i = 0; i < qis::OwnBounds().all / 2; ++i) SendNumber(AddressOf(0x100 + i), 1, 0);  // nobody serves these
  const u32 lost = Lost();
  for (u32 i = 0; i < qis::OwnBounds().all; ++i) SendNumber(AddressOf(kFirstTask + i), 1, 0);
  EXPECT_EQ(Lost(), lost);
}

}  // namespace
}  // namespace hwapi::test
