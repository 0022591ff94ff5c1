// A fan guard between the end of one process and the start of the next.
#include "Daemon.h"
#include "FanBoard.h"
#include "ddal_error.h"
#include "ddal_fan.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <set>

namespace {

int Set() { return ddal_fan_set_pwm(0, 60); }

sockaddr_un Address(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  return address;
}

/// A process that was killed while it had changed a fan, and its guard, held before it hands the fan back.
class FanGuardRestartTest : public testing::Test {
 protected:
  FanGuardRestartTest() { process::AdoptOrphans(); }
  ~FanGuardRestartTest() override {
    LetGuardGo();
    while (waitpid(-1, nullptr, 0) > 0) {
    }
  }

  template <typename Work>
  void KillAProcessWhoseGuardIsHeld(Work work) {
    Daemon daemon(work);
    ASSERT_EQ(daemon.Result(), DDAL_OK);
    m_guard = daemon.Guard();
    kill(m_guard, SIGSTOP);
    daemon.Kill();
    process::AwaitStop(m_guard);
  }
  void LetGuardGo() {
    if (m_guard > 0) kill(m_guard, SIGCONT);
  }

  FanBoard m_fans;
  pid_t m_guard = -1;
};

TEST_F(FanGuardRestartTest, TheNextProcessIsRefusedUntilTheFansAreHandedBack) {
  KillAProcessWhoseGuardIsHeld(Set);
  Daemon next(Set);
  EXPECT_EQ(next.Result(), DDAL_ERR_BUSY);
  EXPECT_EQ(m_fans.Shown("pwm1"), "153");
}

TEST_F(FanGuardRestartTest, TheNextProcessIsNotRefusedForEver) {
  KillAProcessWhoseGuardIsHeld(Set);
  Daemon next(Set, [] { _exit(Set() == DDAL_OK ? 0 : 1); });
  ASSERT_EQ(next.Result(), DDAL_ERR_BUSY);
  LetGuardGo();
  process::AwaitEnd(m_guard);
  ASSERT_EQ(m_fans.Shown("pwm1"), "80");
  EXPECT_EQ(next.Go(), 0);
}

TEST_F(FanGuardRestartTest, TheNextProcessWaitsForTheHandBackAndFindsTheFansAsTheyWere) {
  KillAProcessWhoseGuardIsHeld(Set);
  LetGuardGo();
  Daemon next(Set);
  EXPECT_EQ(next.Result(), DDAL_OK);
  EXPECT_EQ(m_fans.Shown("pwm1"), "153");
  next.Go();
  EXPECT_EQ(m_fans.Shown("pwm1"), "80");
  EXPECT_EQ(m_fans.Shown("pwm1_enable"), "2");
}

TEST_F(FanGuardRestartTest, AProcessThatDrivesTheFansKeepsOthersFromDoingSo) {
  Daemon first(Set);
  Daemon second([] { return ddal_fan_set_pwm(0, 10); });
  EXPECT_EQ(second.Result(), DDAL_ERR_BUSY);
  EXPECT_EQ(m_fans.Shown("pwm1"), "153");
}

TEST_F(FanGuardRestartTest, OthersMayReadMeanwhile) {
  Daemon first(Set);
  int control = 0;
  EXPECT_EQ(ddal_fan_get_pwm(0, &control), DDAL_OK);
  EXPECT_EQ(control, 60);
}

TEST_F(FanGuardRestartTest, AGuardHoldsNoLockOfItsProcess) {
  const std::string path = m_fans.Board().Folder() / "lock";
  KillAProcessWhoseGuardIsHeld([&path] {
    const int fd = open(path.c_str(), O_RDWR | O_CREAT, 0600);
    return flock(fd, LOCK_EX) | Set();
  });
  const int fd = open(path.c_str(), O_RDWR | O_CLOEXEC);
  EXPECT_EQ(flock(fd, LOCK_EX | LOCK_NB), 0);
  close(fd);
}

TEST_F(FanGuardRestartTest, AGuardHoldsNoEndpointOfItsProcess) {
  const sockaddr_un address = Address(m_fans.Board().Folder() / "socket");
  const auto* name = reinterpret_cast<const sockaddr*>(&address);
  KillAProcessWhoseGuardIsHeld([name] {
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    return bind(fd, name, sizeof(sockaddr_un)) | listen(fd, 1) | Set();
  });
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  EXPECT_EQ(connect(fd, name, sizeof address), -1);
  EXPECT_EQ(errno, ECONNREFUSED);
  close(fd);
}

TEST_F(FanGuardRestartTest, AGuardHoldsNoPipeOfItsProcess) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  KillAProcessWhoseGuardIsHeld(Set);
  close(ends[1]);
  char ignored = 0;
  pollfd readable{.fd = ends[0], .events = POLLIN, .revents = 0};
  EXPECT_EQ(poll(&readable, 1, 0), 1);
  EXPECT_EQ(read(ends[0], &ignored, 1), 0);
  close(ends[0]);
}

TEST_F(FanGuardRestartTest, AGuardHoldsItsSocketItsLockAndTheAttributesOnly) {
  KillAProcessWhoseGuardIsHeld(Set);
  const std::set<std::string> may = {"socket", "fans.lock", "pwm1", "pwm1_enable", "pwm1_freq"};
  std::size_t count = 0;
  for (const auto& fd : std::filesystem::directory_iterator("/proc/" + std::to_string(m_guard) + "/fd")) {
    const std::string name = std::filesystem::read_symlink(fd.path()).filename();
    EXPECT_EQ(may.count(name.substr(0, name.find(':'))), 1u) << name;
    ++count;
  }
  EXPECT_GE(count, 2u);
}

}  // namespace
