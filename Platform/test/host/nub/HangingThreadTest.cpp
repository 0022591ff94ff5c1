// Which threads keep the sign of life back when they hang: each kind of them, once.
#include "AaConfig.h"
#include "AaSem.h"
#include "AaSysCom.h"
#include "AaTrbl.h"
#include "EventLoop.h"
#include "Fd.h"
#include "SupervisedBoard.h"

#include <signal.h>
#include <sys/eventfd.h>
#include <sys/ptrace.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>

using ps::hwapi::common::Service;

namespace {

constexpr u32 kLooked = 0x1001;
constexpr u32 kHang = 0x1002;
constexpr u32 kSecond = 1'000'000;
/// Looks after which a thread that has hung since before the first one is known to hang.
constexpr int kLooksUntilKnown = 3;
/// Looks within which a thread comes to its next rest, however slow the machine is.
constexpr int kPatience = 3000;
/// Signs of life after which no thread hangs.
constexpr int kSigns = 5;

/// What every thread here does for as long as the test likes.
void Hang() {
  Say("hangs");
  WaitForTest();
}

/// A service that a supervisor watches, and one of whose threads does something else.
class HangingThreadTest : public SignOfLifeTest {
 protected:
  /// Starts the service. @param begin called by Init
  void Start(const std::function<void()>& begin) {
    m_steps.init = [begin](Probe& probe) {
      probe.Handle(kLooked, [](void*) { Say("looked"); });
      probe.Handle(kHang, [](void*) { Hang(); });
      SayAfterEachLook();
      begin();
    };
    m_service = std::make_unique<ServiceProcess>(m_steps);
    ASSERT_EQ(m_supervisor.Notice(), "READY=1");
  }

  /// Lets the service look at its threads.
  void Look() {
    SetClock(m_now += kSecond / 1000);
    ASSERT_TRUE(m_service->Says("looked"));
  }
  void LookOften(int times) {
    for (int i = 0; i < times; ++i) Look();
    while (m_supervisor.Told()) m_supervisor.Notice();
  }

  void ExpectNoSigns() {
    LookOften(kLooksUntilKnown);
    for (int i = 0; i < 3; ++i) {
      Look();
      EXPECT_FALSE(m_supervisor.Told()) << i;
    }
  }
  void ExpectSigns() {
    LookOften(kLooksUntilKnown);
    int signs = 0;
    for (int i = 0; i < kPatience && signs < kSigns; ++i) {
      Look();
      for (; m_supervisor.Told(); ++signs) EXPECT_EQ(m_supervisor.Notice(), "WATCHDOG=1");
    }
    EXPECT_GE(signs, kSigns);
  }

  /// A thread of the service hangs, is named once, and goes on.
  void ExpectTheSignToWaitFor(const std::string& thread) {
    ExpectNoSigns();
    m_service->GoOn();
    ExpectSigns();
    m_service->Signal(SIGTERM);
    const std::string log = m_service->Errors();
    const std::string line = "Thread " + thread + " hangs: ";
    ASSERT_NE(log.find(line), std::string::npos) << log;
    EXPECT_EQ(log.find(line, log.find(line) + 1), std::string::npos) << log;
  }

  const Supervisor m_supervisor{Path()};
  Probe::Steps m_steps;
  std::unique_ptr<ServiceProcess> m_service;

 private:
  /// A timer of the service's own, which expires a little later than the one for the signs of life.
  static void SayAfterEachLook() {
    const TAaSysComSicad own = AaSysComSicadGet(kProbeTask, AaSysComGetOwnNid());
    void* msg = AaSysComMsgCreate(kLooked, 0, own);
    AaSysComMsgSetSender(msg, own);
    TAaSysTimerId timer = 0;
    AaSysTimermCreate(&timer, kSecond + 1000, kSecond, msg);
  }

  u32 m_now = 1;  ///< milliseconds since the clock was made
};

TEST_F(HangingThreadTest, KeepsTheSignBackAsTheThreadOfMessages) {
  Start([] {
    class HangOnce : public hwapi::qis::EventHandler {
     public:
      HangOnce() : m_event(::eventfd(1, EFD_CLOEXEC)) {}
      int Event() const { return m_event.Get(); }
      void OnReady(std::uint64_t key) override {
        Hang();
        hwapi::qis::EventLoop::Own().Forget(key, m_event.Get());
      }

     private:
      hwapi::qis::Fd m_event;
    };
    const auto handler = std::make_shared<HangOnce>();
    hwapi::qis::EventLoop::Own().Watch(handler->Event(), handler);
  });
  ASSERT_TRUE(m_service->Says("hangs"));
  ExpectTheSignToWaitFor("com");
}

TEST_F(HangingThreadTest, KeepsTheSignBackAsTheObserverOfATag) {
  m_board.Describe("[clock]\nspeed = 0\nstart = 2024-06-15T12:00:00Z\n[tags]\n\"test.tag\" = 6\n");
  Start([] { AaConfigTagRegister("test.tag", [](const char*, const void*, u32) { Hang(); }); });
  ASSERT_TRUE(m_service->Says("hangs"));
  ExpectTheSignToWaitFor("tag test.tag");
}

TEST_F(HangingThreadTest, KeepsTheSignBackAsTheCollectorOfTroubleshootingFiles) {
  const auto prepare = [](const char*, const void*) -> int {
    Hang();
    return EAaTrblCbStatus_Failed;
  };
  Start([prepare] {
    AaTrblFileRegister("file", "/file", EAaTrblFilePriority_Normal, 0, prepare, nullptr, nullptr, nullptr);
  });
  const auto visitor = [](const SAaTrblFile*, void*) -> TBoolean { return GLO_FALSE; };
  std::thread collector([visitor] { AaTrblCollect(60'000, visitor, nullptr); });
  EXPECT_TRUE(m_service->Says("hangs"));
  ExpectTheSignToWaitFor("trbl");
  collector.join();
}

/// Starts an execution unit of the service.
void StartThread(const char* name, void* (*entry)(void*)) {
  TAaProEuId eu = 0;
  AaSysComEuCreateAndStart(&eu, name, entry, 1024, 5, nullptr, 0);
}

TEST_F(HangingThreadTest, KeepsTheSignBackAsARecorderThatWaitsForASemaphore) {
  Start([] {
    StartThread("BlackBoxData", [](void*) -> void* {
      static TAaSem* const semaphore = AaSemCreateC(0);
      std::thread([] {
        WaitForTest();
        AaSemPost(semaphore);
      }).detach();
      Say("hangs");
      AaSemWait(semaphore);
      return nullptr;
    });
  });
  ASSERT_TRUE(m_service->Says("hangs"));
  ExpectTheSignToWaitFor("BlackBoxData");
}

TEST_F(HangingThreadTest, KeepsTheSignBackAsAPollerThatADriverDoesNotAnswer) {
  Start([] {
    StartThread("PsuSpiPoller", [](void*) -> void* {
      AaSysTimeSleep(0, EAaSysTimeScale_Millisec);
      Hang();
      AaSysTimeSleep(3600, EAaSysTimeScale_Sec);
      return nullptr;
    });
  });
  ASSERT_TRUE(m_service->Says("hangs"));
  ExpectTheSignToWaitFor("PsuSpiPoller");
}

/// A thread of another process that stands still, wherever it is.
class StoppedThread {
 public:
  StoppedThread(pid_t process, const std::string& name) : m_tid(Find(process, name)) {
    if (ptrace(PTRACE_SEIZE, m_tid, nullptr, nullptr) != 0) return;
    ptrace(PTRACE_INTERRUPT, m_tid, nullptr, nullptr);
    m_stopped = waitpid(m_tid, nullptr, __WALL) == m_tid;
  }
  StoppedThread(const StoppedThread&) = delete;
  StoppedThread& operator=(const StoppedThread&) = delete;
  ~StoppedThread() { ptrace(PTRACE_DETACH, m_tid, nullptr, nullptr); }
  bool Stopped() const { return m_stopped; }

 private:
  static pid_t Find(pid_t process, const std::string& name) {
    for (const auto& thread : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
      std::string own;
      std::getline(std::ifstream(thread.path() / "comm"), own);
      if (own == name) return std::stoi(thread.path().filename());
    }
    return 0;
  }

  const pid_t m_tid;
  bool m_stopped = false;
};

TEST_F(HangingThreadTest, KeepsTheSignBackAsTheThreadOfTimers) {
  Start([] {});
  Look();
  EXPECT_EQ(m_supervisor.Notice(), "WATCHDOG=1");
  {
    const StoppedThread timers(m_service->Pid(), "timer");
    if (!timers.Stopped()) GTEST_SKIP() << "threads of another process cannot be stopped here";
    SetClock(30'000);
    EXPECT_FALSE(m_supervisor.Told());
  }
  EXPECT_EQ(m_supervisor.Notice(), "WATCHDOG=1");
}

TEST_F(HangingThreadTest, IsNamedWhenItIsTheThreadOfTheServiceItself) {
  Start([] {});
  std::string name;
  std::getline(std::ifstream("/proc/" + std::to_string(m_service->Pid()) + "/comm"), name);
  for (int i = 0; i < 2; ++i) Look();
  void* msg = AaSysComMsgCreate(kHang, 0, AaSysComSicadGet(kProbeTask, AaSysComGetOwnNid()));
  AaSysComMsgSend(&msg);
  ASSERT_TRUE(m_service->Says("hangs"));
  EXPECT_TRUE(m_service->Logs("Thread " + name + " hangs: nobody looks at the threads until it goes on"));
  m_service->GoOn();
  ExpectSigns();
}

TEST_F(HangingThreadTest, IsNotOneThatSleepsForAnHour) {
  Start([] {
    StartThread("BlackBoxData", [](void*) -> void* {
      AaSysTimeSleep(3600, EAaSysTimeScale_Sec);
      return nullptr;
    });
  });
  ExpectSigns();
}

TEST_F(HangingThreadTest, IsNotOneThatWaitsForAMessage) {
  Start([] {
    StartThread("Receiver", [](void*) -> void* {
      AaSysComUserRegister(0, AaProEuCurrent());
      return AaSysComMsgReceive(AASYSCOM_NO_TIMEOUT, nullptr);
    });
  });
  ExpectSigns();
}

TEST_F(HangingThreadTest, IsNotAnObserverThatWaitsForAnotherTag) {
  m_board.Describe("[clock]\nspeed = 0\nstart = 2024-06-15T12:00:00Z\n[tags]\n\"test.tag\" = 6\n");
  Start([] {
    AaConfigTagRegister("test.tag",
                        [](const char*, const void*, u32) { Service::Get().WaitForConfigTag("test.later", 6); });
  });
  ExpectSigns();
}

}  // namespace
