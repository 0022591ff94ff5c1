// The thread for connections: however much one peer sends, the others have their turn.
#include "AaConfig.h"
#include "Acceptor.h"
#include "LoopTask.h"
#include "Route.h"
#include "Support.h"
#include "TaskName.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <linux/sockios.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <semaphore>
#include <string>
#include <vector>

namespace hwapi::test {
namespace {

using qis::Acknowledgement;
using qis::Fd;

/// Holds the thread until all that a test prepares is ready to be served.
class ComThread : public ::testing::Test {
 protected:
  void SetUp() override { m_held.acquire(); }
  void TearDown() override {
    m_go.release();
    EXPECT_TRUE(m_holder->AwaitEnd());
  }

  /// Lets the thread serve everything that is ready once.
  /// @return what @p look, which comes last, says after that
  int AfterOneWake(const std::function<int()>& look) {
    int result = -1;
    const auto last = LoopTask::Start([&] { result = look(); });
    m_go.release();
    EXPECT_TRUE(last->AwaitEnd());
    return result;
  }

  const Board m_board;

 private:
  std::binary_semaphore m_held{0};
  std::counting_semaphore<2> m_go{0};
  const std::shared_ptr<LoopTask> m_holder = LoopTask::Start([this] {
    m_held.release();
    m_go.acquire();
  });
};

class OneTask : public qis::Registrations {
 public:
  bool Expects(TAaProEuId, TAaSysComSicad, u32) override { return true; }
  bool HasTask(TAaProEuId) override { return true; }
};

TEST_F(ComThread, LetsInABoundedNumberOfSendersAtOnce) {
  constexpr int kSenders = 50;
  qis::TaskName name;
  ASSERT_EQ(name.Claim(AddressOf(kServer)), 0);
  std::vector<Fd> senders;
  for (int i = 0; i < kSenders; ++i) senders.push_back(qis::ConnectToTask(AddressOf(kServer)));
  OneTask tasks;
  const auto inbox = qis::Inbox::Create(1, tasks);
  const auto acceptor = std::make_shared<qis::Acceptor>(name.Listener(), inbox, AddressOf(kServer), 1);
  ASSERT_EQ(acceptor->Open(), 0);
  const auto isLetIn = [](const Fd& sender) {
    pollfd watched{.fd = sender.Get(), .events = POLLIN, .revents = 0};
    return ::poll(&watched, 1, 0) == 1;
  };
  const auto countLetIn = [&] { return static_cast<int>(std::ranges::count_if(senders, isLetIn)); };
  const int letIn = AfterOneWake(countLetIn);
  EXPECT_GT(letIn, 0);
  EXPECT_LT(letIn, kSenders);
  EXPECT_TRUE(Eventually([&] { return countLetIn() == kSenders; }));
  acceptor->Close();
}

/// A way to a receiver that does not belong to the platform.
class RouteToAStranger : public ComThread {
 protected:
  void SetUp() override {
    ComThread::SetUp();
    ASSERT_EQ(m_name.Claim(AddressOf(kServer)), 0);
  }
  void TearDown() override {
    m_route.reset();
    ComThread::TearDown();
  }
  void Send(int count) {
    const qis::MessagePtr message = qis::CreateMessage(1, 0, AddressOf(kServer));
    for (int i = 0; i < count; ++i) m_route->Send(*message);
    if (!m_stranger) m_stranger.Reset(::accept4(m_name.Listener(), nullptr, nullptr, SOCK_CLOEXEC));
  }
  void Answer(Acknowledgement acknowledged) {
    ASSERT_EQ(::send(m_stranger.Get(), &acknowledged, sizeof acknowledged, MSG_NOSIGNAL), ssize_t{sizeof acknowledged});
  }
  /// @return bytes of memory of what was answered and not read
  int Unread() const {
    int unread = -1;
    EXPECT_EQ(::ioctl(m_stranger.Get(), SIOCOUTQ, &unread), 0);
    return unread;
  }
  /// @return whether the connection was ended, now or in a generous time
  bool IsEnded() {
    return Eventually([this] {
      pollfd watched{.fd = m_stranger.Get(), .events = POLLRDHUP, .revents = 0};
      return ::poll(&watched, 1, 0) == 1;
    });
  }
  void Go() {
    AfterOneWake([] { return 0; });
  }

  std::shared_ptr<qis::Route> m_route = std::make_shared<qis::Route>(AddressOf(kServer));
  qis::TaskName m_name;
  Fd m_stranger;
};

TEST_F(RouteToAStranger, TakesABoundedNumberOfAcknowledgementsAtOnce) {
  constexpr u32 kMessages = 100;
  Send(kMessages);
  for (u32 i = 1; i <= kMessages; ++i) Answer({.handled = i, .full = 0, .refused = 0});
  EXPECT_GT(AfterOneWake([this] { return Unread(); }), 0);
  EXPECT_TRUE(Eventually([this] { return Unread() == 0; }));
}

TEST_F(RouteToAStranger, EndsWhenMoreIsAcknowledgedThanWasSent) {
  Send(2);
  Answer({.handled = 3, .full = 0, .refused = 0});
  Go();
  EXPECT_TRUE(IsEnded());
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_NoReceiver), 2u);
}

TEST_F(RouteToAStranger, EndsWhenMoreIsLostThanWasSent) {
  Send(2);
  Answer({.handled = 2, .full = 2, .refused = 1});
  Go();
  EXPECT_TRUE(IsEnded());
  EXPECT_EQ(AaSysComCounterGet(EAaSysComCounter_QueueFull), 0u);
}

TEST_F(RouteToAStranger, EndsWhenNothingNewIsAcknowledgedOverAndOver) {
  Send(1);
  for (int i = 0; i < 100; ++i) Answer({.handled = 1, .full = 0, .refused = 0});
  Go();
  EXPECT_TRUE(IsEnded());
}

void Ignore(const char*, const void*, u32) {}

/// @return the process's only inotify descriptor
int Inotify() {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (std::filesystem::read_symlink(entry, gone) == "anon_inode:inotify") return std::stoi(entry.path().filename());
  }
  return -1;
}

TEST_F(ComThread, TakesABoundedNumberOfTagChangesAtOnce) {
  constexpr u32 kValue = 1;
  ASSERT_EQ(AaConfigTagRegister("app.a", &Ignore), 0);
  for (int i = 0; i < 200; ++i) {
    for (const char* name : {"app.a", "app.b"}) ASSERT_EQ(AaConfigTagPublicSet(name, &kValue, sizeof kValue), 0);
  }
  const auto unread = [inotify = Inotify()] {
    int bytes = -1;
    EXPECT_EQ(::ioctl(inotify, FIONREAD, &bytes), 0);
    return bytes;
  };
  EXPECT_GT(AfterOneWake(unread), 0);
  EXPECT_TRUE(Eventually([&] { return unread() == 0; }));
}

}  // namespace
}  // namespace hwapi::test
