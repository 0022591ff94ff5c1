// What the supervisor is told.
#include "AaSysTime.h"
#include "Client.h"
#include "ServiceProcess.h"
#include "TestBoard.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <thread>

namespace {

/// A supervisor that listens.
class Supervisor {
 public:
  /// @param name a path, or "@" and an abstract name
  explicit Supervisor(const std::string& name) : m_socket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(address.sun_path, sizeof address.sun_path - 1);
    if (name[0] == '@') address.sun_path[0] = '\0';
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    EXPECT_EQ(bind(m_socket, reinterpret_cast<const sockaddr*>(&address), size), 0);
    setenv("NOTIFY_SOCKET", name.c_str(), 1);
  }
  Supervisor(const Supervisor&) = delete;
  Supervisor& operator=(const Supervisor&) = delete;
  ~Supervisor() { close(m_socket); }

  /// @return the next notice
  std::string Notice() const { return Receive(0); }
  /// @return whether a notice is there already
  bool Told() const { return !Receive(MSG_DONTWAIT | MSG_PEEK).empty(); }

 private:
  std::string Receive(int flags) const {
    char text[256];
    const ssize_t size = recv(m_socket, text, sizeof text, flags);
    return size > 0 ? std::string(text, static_cast<std::size_t>(size)) : std::string();
  }

  const int m_socket;
};

class SupervisorTest : public testing::Test {
 protected:
  SupervisorTest() { m_board.Describe(""); }
  std::string Path() const { return m_board.Folder() / "notify"; }

  TestBoard m_board;
};

TEST_F(SupervisorTest, IsToldWhenTheServiceIsUpAndWhenItEnds) {
  const Supervisor supervisor(Path());
  ServiceProcess service({});
  EXPECT_EQ(supervisor.Notice(), "READY=1");
  service.Signal(SIGTERM);
  EXPECT_EQ(supervisor.Notice(), "STOPPING=1");
  service.End();
  EXPECT_FALSE(supervisor.Told());
}

TEST_F(SupervisorTest, IsNotToldBeforeInitIsDone) {
  const Supervisor supervisor(Path());
  ServiceProcess service({.init = [](Probe&) {
    Say("initializing");
    WaitForTest();
  }});
  ASSERT_TRUE(service.Says("initializing"));
  EXPECT_FALSE(supervisor.Told());
  service.GoOn();
  EXPECT_EQ(supervisor.Notice(), "READY=1");
}

TEST_F(SupervisorTest, IsFoundUnderAnAbstractName) {
  const Supervisor supervisor("@notify-" + m_board.Folder().filename().string());
  const ServiceProcess service({});
  EXPECT_EQ(supervisor.Notice(), "READY=1");
}

TEST_F(SupervisorTest, GetsSignsOfLifeWhenItExpectsThem) {
  setenv("WATCHDOG_USEC", "20000", 1);
  const Supervisor supervisor(Path());
  const ServiceProcess service({});
  EXPECT_EQ(supervisor.Notice(), "READY=1");
  EXPECT_EQ(supervisor.Notice(), "WATCHDOG=1");
  EXPECT_EQ(supervisor.Notice(), "WATCHDOG=1");
}

TEST_F(SupervisorTest, GetsNoSignsOfLifeThatAnotherProcessOwes) {
  setenv("WATCHDOG_USEC", "2000", 1);
  setenv("WATCHDOG_PID", "1", 1);
  const Supervisor supervisor(Path());
  ServiceProcess service({});
  EXPECT_EQ(supervisor.Notice(), "READY=1");
  service.Signal(SIGTERM);
  EXPECT_EQ(supervisor.Notice(), "STOPPING=1");
}

/// A board whose clock stands still unless the test moves it, and a supervisor that expects a sign of life every
/// second.
class SignOfLifeTest : public SupervisorTest {
 protected:
  static constexpr u32 kAsk = 0x1000;

  SignOfLifeTest() {
    m_board.Describe("[clock]\nspeed = 0\nstart = 2024-06-15T12:00:00Z\n");
    setenv("WATCHDOG_USEC", "2000000", 1);
  }
  /// @param ms since the clock was made
  static void SetClock(u32 ms) {
    const SAaTime time{
        .year = 2024, .month = 6, .day = 15, .hour = 12, .minute = 0, .second = ms / 1000, .millisec = ms % 1000};
    EXPECT_EQ(AaUtcTimeSet(&time), 0);
  }
};

TEST_F(SignOfLifeTest, ComesWhenTheTimersMakeProgress) {
  const Supervisor supervisor(Path());
  const ServiceProcess service({.init = [](Probe& probe) { probe.Answer(kAsk, 1); }});
  EXPECT_EQ(supervisor.Notice(), "READY=1");
  const Client client;
  SetClock(999);
  EXPECT_EQ(client.Ask(kAsk), 1u) << "the service thread lives";
  EXPECT_FALSE(supervisor.Told());
  SetClock(1000);
  EXPECT_EQ(supervisor.Notice(), "WATCHDOG=1");
}

/// Tells that timers of the process have expired, those of its first second and this one.
void TellWhenASecondIsOver() {
  constexpr u32 kOver = 0x1001;
  constexpr u32 kASecondAndABit = 1'001'000;
  const u32 task = AaSysComUserRegister(0, AaProEuCurrent());
  TAaSysTimerId timer = 0;
  void* msg = AaSysComMsgCreate(kOver, 0, AaSysComSicadGet(task, AaSysComGetOwnNid()));
  EXPECT_EQ(AaSysTimermCreate(&timer, kASecondAndABit, 0, msg), 0);
  Say("waiting");
  msg = AaSysComMsgReceive(AASYSCOM_NO_TIMEOUT, nullptr);
  AaSysComMsgDestroy(&msg);
  Say("a second is over");
}

TEST_F(SignOfLifeTest, ComesWhenTheServiceThreadMakesProgress) {
  const Supervisor supervisor(Path());
  ServiceProcess service({.init = [](Probe& probe) {
    probe.Handle(kAsk, [](void*) {
      std::thread(&TellWhenASecondIsOver).join();
      WaitForTest();
    });
  }});
  EXPECT_EQ(supervisor.Notice(), "READY=1");
  const Client client;
  client.Send(kAsk);
  ASSERT_TRUE(service.Says("waiting"));
  SetClock(1001);
  ASSERT_TRUE(service.Says("a second is over"));
  EXPECT_FALSE(supervisor.Told()) << "a handler does not come to its end";
  service.GoOn();
  EXPECT_EQ(supervisor.Notice(), "WATCHDOG=1");
}

TEST_F(SupervisorTest, MayBeMissing) {
  setenv("NOTIFY_SOCKET", Path().c_str(), 1);
  ServiceProcess service({});
  EXPECT_TRUE(service.Says("run"));
  service.Signal(SIGTERM);
  EXPECT_EQ(service.End(), 0);
  EXPECT_NE(service.Errors().find("The supervisor at " + Path() + " is not reached"), std::string::npos);
}

TEST_F(SupervisorTest, IsNotLookedForUnderANameThatIsNone) {
  setenv("NOTIFY_SOCKET", "relative", 1);
  ServiceProcess service({});
  EXPECT_TRUE(service.Says("run"));
  service.Signal(SIGTERM);
  EXPECT_EQ(service.End(), 0);
  EXPECT_NE(service.Errors().find("neither a path nor a @name"), std::string::npos);
}

}  // namespace
