// The announcement of tasks to the other processes of the board.
#include "Support.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace hwapi::test {
namespace {

TEST(TaskName, IsRefusedWhileAnotherProcessServesTheTask) {
  const Board board;
  const Event ready;
  Peer owner([&] {
    Serve(kServer);
    ready.Happened();
    ReceiveNumber();
  });
  ASSERT_TRUE(ready.Await());
  const ErrorOutput output;
  EXPECT_EQ(AaSysComUserRegister(kServer, AaProEuCurrent()), 0u);
  EXPECT_EQ(Occurrences(output.Text(), "is already served by process"), 1u);
}

TEST(TaskName, OfAProcessThatWasKilledIsTakenOver) {
  const Board board;
  const Event ready;
  Peer owner([&] {
    Serve(kServer);
    ready.Happened();
    ReceiveNumber();
  });
  ASSERT_TRUE(ready.Await());
  owner.Kill();
  EXPECT_EQ(AaSysComUserRegister(kServer, AaProEuCurrent()), kServer);
}

TEST(TaskName, ThatWasTakenOverReceivesMessages) {
  const Board board;
  const Event ready;
  const Event takenOver;
  Peer owner([&] {
    Serve(kServer);
    ready.Happened();
    ReceiveNumber();
  });
  Peer sender([&] {
    takenOver.Await();
    SendNumber(AddressOf(kServer), 1, 42);
  });
  ASSERT_TRUE(ready.Await());
  owner.Kill();
  Serve(kServer);
  takenOver.Happened();
  EXPECT_EQ(ReceiveNumber().number, 42u);
}

TEST(TaskName, LeavesNothingBehindWhenItIsGivenBack) {
  const Board board;
  Serve(kServer);
  AaSysComUserDeregister(kServer);
  EXPECT_TRUE(std::filesystem::is_empty(board.Run() + "/com"));
}

TEST(TaskName, WorksInARunDirectoryWithALongPath) {
  std::string deep;
  for (int i = 0; i < 4; ++i) {
    deep += std::string(50, 'd') + "/";
  }
  const Board board("", deep);
  const Event ready;
  Peer sender([&] {
    ready.Await();
    SendNumber(AddressOf(kServer), 1, 42);
  });
  ASSERT_NE(Serve(kServer), 0u);
  ready.Happened();
  EXPECT_EQ(ReceiveNumber().number, 42u);
}

/// @return the free task at which this process begins, or one that many behind it
u32 FreeTask(u32 further = 0) { return 0x8000 + (static_cast<u32>(::getpid()) + further) % 0x8000; }

TEST(TaskName, OfAnyFreeTaskIsAnotherOneInEachProcess) {
  const Board board;
  EXPECT_EQ(AaSysComUserRegister(0, AaProEuCurrent()), FreeTask());
}

TEST(TaskName, OfAnyFreeTaskIsTheNextWhereAnotherProcessServesTheFirst) {
  const Board board;
  const Event ready;
  const u32 first = FreeTask();
  Peer other([&] {
    Serve(first);
    ready.Happened();
    ReceiveNumber();
  });
  ASSERT_TRUE(ready.Await());
  EXPECT_EQ(AaSysComUserRegister(0, AaProEuCurrent()), FreeTask(1));
}

TEST(TaskName, IsGivenBackWhenItsExecutionUnitEnds) {
  const Board board;
  static TAaProEuId s_eu = 0;
  const auto serveAndEnd = [](void*) -> void* {
    Serve(kServer);
    return nullptr;
  };
  ASSERT_EQ(AaSysComEuCreateAndStart(&s_eu, "short", serveAndEnd, 0, 0, nullptr, 0), 0);
  EXPECT_TRUE(Eventually([] { return AaSysComUserRegister(kServer, AaProEuCurrent()) == kServer; }));
}

TEST(TaskName, CannotBeAnnouncedWithoutARunDirectory) {
  const Board board;
  ::setenv("HWAPI_RUN", "/proc/nowhere", 1);
  const ErrorOutput output;
  EXPECT_EQ(AaSysComUserRegister(kServer, AaProEuCurrent()), 0u);
  EXPECT_EQ(Occurrences(output.Text(), "Cannot open the folder /proc/nowhere/com"), 1u);
}

TEST(TaskName, AFolderInThePlaceOfItsSocketIsReportedToWhoServesTheTask) {
  const Board board;
  const ErrorOutput output;
  std::filesystem::create_directories(board.Run() + "/com/0102-04AD");
  EXPECT_EQ(Serve(kServer), 0u);
  EXPECT_EQ(Occurrences(output.Text(), "com/0102-04AD is a folder, not a socket"), 1u) << output.Text();
}

TEST(TaskName, AFolderInThePlaceOfItsSocketIsReportedToWhoSends) {
  const Board board;
  const ErrorOutput output;
  std::filesystem::create_directories(board.Run() + "/com/0102-04AD");
  SendNumber(AddressOf(kServer), 1, 0);
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_NoReceiver), 1u);
  EXPECT_EQ(Occurrences(output.Text(), "com/0102-04AD is a folder, not a socket"), 1u) << output.Text();
}

TEST(TaskName, AFifoInThePlaceOfItsLockDoesNotHangTheRegistration) {
  const Board board;
  const ErrorOutput output;
  std::filesystem::create_directories(board.Run() + "/com");
  ASSERT_EQ(::mkfifo((board.Run() + "/com/0102-04AD.lock").c_str(), 0600), 0);
  EXPECT_EQ(Serve(kServer), 0u);
  EXPECT_EQ(Occurrences(output.Text(), "com/0102-04AD.lock is a FIFO, not a file"), 1u) << output.Text();
}

}  // namespace
}  // namespace hwapi::test
