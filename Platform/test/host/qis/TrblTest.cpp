// Troubleshooting files of several processes: who hands them over, and what hostile or dying ones do.
#include "AaTrbl.h"
#include "NamedSocket.h"
#include "PassedFd.h"
#include "Support.h"
#include "TrblCollector.h"
#include "TrblSession.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace hwapi::test {
namespace {

using qis::Fd;

constexpr u32 kPatienceMs = 20'000;

using Callback = int (*)(const char*, const void*);

int Ready(const char*, const void*) { return EAaTrblCbStatus_Ok; }

/// Blocks until the test ends.
int Hang(const char*, const void*) {
  for (;;) ::pause();
}

int Vanish(const char*, const void*) { ::_exit(0); }

bool Offer(const std::string& name, const std::string& path, Callback prepare = Ready, const void* context = nullptr) {
  return AaTrblFileRegister(name.c_str(), path.c_str(), EAaTrblFilePriority_Low, 0, prepare, nullptr, nullptr,
                            context) == EAaTrblRet_Ok;
}

std::string Write(const Board& board, const std::string& name, const std::string& content) {
  const std::string path = board.Folder() + "/" + name;
  std::ofstream(path) << content;
  return path;
}

struct Seen {
  EAaTrblCollect result;
  std::string content;
  bool operator==(const Seen&) const = default;
};
/// What became of each file; "" is a process.
using Files = std::map<std::string, Seen>;

TBoolean See(const SAaTrblFile* file, void* files) {
  std::string content;
  char bytes[16];
  for (ssize_t size; file->content >= 0 && (size = ::read(file->content, bytes, sizeof bytes)) > 0;) {
    content.append(bytes, static_cast<std::size_t>(size));
  }
  (*static_cast<Files*>(files))[file->name != nullptr ? file->name : ""] = {file->result, content};
  return GLO_TRUE;
}

Files Collect(u32 timeoutMs = kPatienceMs) {
  Files files;
  EXPECT_EQ(AaTrblCollect(timeoutMs, See, &files), EAaTrblRet_Ok);
  return files;
}

/// A process of the board that has files.
class Owner {
 public:
  explicit Owner(const std::function<void()>& offer)
      : m_peer([&] {
          offer();
          m_ready.Happened();
          Hang(nullptr, nullptr);
        }) {
    EXPECT_TRUE(m_ready.Await());
  }
  void Kill() { m_peer.Kill(); }

 private:
  Event m_ready;
  Peer m_peer;
};

TEST(TrblFiles, OfEveryProcessAreCollected) {
  const Board board;
  const std::string one = Write(board, "one", "first text");
  const std::string two = Write(board, "two", "second text, longer than a buffer");
  Owner first([&] { Offer("a", one); });
  Owner second([&] { Offer("b", two); });
  EXPECT_EQ(Collect(), (Files{{"a", {EAaTrblCollect_Ok, "first text"}},
                              {"b", {EAaTrblCollect_Ok, "second text, longer than a buffer"}}}));
}

TEST(TrblFiles, OfAProcessInARootOfItsOwnAreCollected) {
  const Board board;
  Write(board, "inside", "text");
  Owner owner([&] {
    Offer("a", "/inside");
    if (::chroot(board.Folder().c_str()) != 0) Offer("no root", "/inside");
  });
  const Files files = Collect();
  if (files.contains("no root")) GTEST_SKIP() << "changing the root takes rights";
  EXPECT_EQ(files, (Files{{"a", {EAaTrblCollect_Ok, "text"}}}));
}

TEST(TrblFiles, OfNobodyCannotBeCollected) {
  const Board board;
  Files files;
  EXPECT_EQ(AaTrblCollect(kPatienceMs, See, &files), EAaTrblRet_Failed);
  EXPECT_TRUE(files.empty());
}

TEST(TrblFiles, OfADeadProcessAreForgotten) {
  const Board board;
  Owner owner([&] { Offer("a", "/dev/null"); });
  owner.Kill();
  Files files;
  EXPECT_EQ(AaTrblCollect(kPatienceMs, See, &files), EAaTrblRet_Failed);
  EXPECT_TRUE(files.empty());
}

TEST(TrblFiles, LeaveNothingThatGrowsBehindDeadProcesses) {
  const Board board;
  for (int i = 0; i < 3; ++i) {
    Owner owner([&] { Offer("a", "/dev/null"); });
    owner.Kill();
  }
  const std::filesystem::directory_iterator entries(board.Run() + "/trbl");
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 2);  // a socket and its lock
}

TEST(TrblFiles, OfAProcessThatEndsMeanwhileAreGone) {
  const Board board;
  const std::string path = Write(board, "file", "x");
  Owner vanishing([&] {
    Offer("a", path, Vanish);
    Offer("b", path);
  });
  Owner other([&] { Offer("c", path); });
  EXPECT_EQ(
      Collect(),
      (Files{{"a", {EAaTrblCollect_Gone, ""}}, {"b", {EAaTrblCollect_Gone, ""}}, {"c", {EAaTrblCollect_Ok, "x"}}}));
}

TEST(TrblFiles, OfAProcessThatDoesNotAnswerAreGivenUp) {
  const Board board;
  const std::string path = Write(board, "file", "x");
  Owner hanging([&] {
    Offer("a", path, Hang);
    Offer("b", path);
  });
  Owner other([&] { Offer("c", path); });
  EXPECT_EQ(Collect(2000), (Files{{"a", {EAaTrblCollect_NoAnswer, ""}},
                                  {"b", {EAaTrblCollect_NoAnswer, ""}},
                                  {"c", {EAaTrblCollect_Ok, "x"}}}));
}

TEST(TrblFiles, OfAProcessThatIsBusyWithAnotherCollectorAreGivenUp) {
  const Board board;
  Owner hanging([&] { Offer("a", "/dev/null", Hang); });
  Peer collector([] { Collect(); });
  Files files;
  EXPECT_TRUE(Eventually([&] { return AaTrblCollect(10, See, &files) == EAaTrblRet_Failed; }));
  EXPECT_EQ(files[""].result, EAaTrblCollect_NoAnswer);
}

TBoolean Stop(const SAaTrblFile*, void*) {
  ::raise(SIGSTOP);
  return GLO_TRUE;
}

TEST(TrblFiles, AreCollectedWhileOtherCollectorsAreStopped) {
  constexpr int kStopped = 10;  // more than a process serves at a time
  const Board board;
  const std::string path = Write(board, "one", "text");
  const Event offered;
  std::vector<std::unique_ptr<Peer>> collectors;
  for (int i = 0; i < kStopped; ++i) {
    collectors.push_back(std::make_unique<Peer>([&] {
      offered.Await();
      AaTrblCollect(kPatienceMs, Stop, nullptr);
    }));
  }
  Owner owner([&] { Offer("a", path); });
  for (int i = 0; i < kStopped; ++i) {
    offered.Happened();
  }
  for (const auto& collector : collectors) {
    EXPECT_TRUE(collector->IsStopped());
  }
  EXPECT_EQ(Collect(), (Files{{"a", {EAaTrblCollect_Ok, "text"}}}));
}

TEST(TrblFiles, ThatAreNoRegularFilesAreNotHandedOver) {
  const Board board;
  const std::string fifo = board.Folder() + "/fifo";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  Offer("fifo", fifo);
  Offer("folder", board.Folder());
  Offer("device", "/dev/zero");
  for (const auto& [name, seen] : Collect()) EXPECT_EQ(seen.result, EAaTrblCollect_NoFile) << name;
}

TEST(TrblFiles, WhosePreparationThrowsHaveFailed) {
  const Board board;
  const ErrorOutput output;
  Offer("a", "/dev/null", [](const char*, const void*) -> int { throw std::runtime_error("broken"); });
  Offer("b", "/dev/null", [](const char*, const void*) -> int { throw 1; });
  const Files files = Collect();
  EXPECT_EQ(files.at("a").result, EAaTrblCollect_Failed);
  EXPECT_EQ(files.at("b").result, EAaTrblCollect_Failed);
  EXPECT_EQ(Occurrences(output.Text(), "broken"), 1u);
}

TEST(TrblFiles, MayBeTakenOutWhileTheyAreCollected) {
  const Board board;
  const std::string path = Write(board, "file", "x");
  Offer("a", path, [](const char*, const void*) -> int {
    AaTrblFileUnregister("b");
    return EAaTrblCbStatus_Ok;
  });
  Offer("b", path);
  EXPECT_EQ(Collect(), (Files{{"a", {EAaTrblCollect_Ok, "x"}}, {"b", {EAaTrblCollect_Withdrawn, ""}}}));
}

TEST(TrblFiles, ArePreparedOneAtATime) {
  const Board board;
  static std::atomic<int> s_inside{0};
  static std::atomic<bool> s_together{false};
  const auto prepare = [](const char*, const void*) -> int {
    if (++s_inside > 1) s_together = true;
    std::this_thread::yield();
    --s_inside;
    return EAaTrblCbStatus_NotReady;
  };
  for (int i = 0; i < 20; ++i) Offer(std::to_string(i), "/dev/null", prepare);
  std::thread other([] { EXPECT_EQ(Collect().size(), 20u); });
  EXPECT_EQ(Collect().size(), 20u);
  other.join();
  EXPECT_FALSE(s_together);
}

/// Strangers at the socket of this process, which has the file "a".
class TrblStranger : public ::testing::Test {
 protected:
  TrblStranger() { Offer("a", Write(m_board, "file", "x")); }

  static Fd Knock() {
    static const auto* const folder = new qis::RunFolder(qis::kTrblFolder);
    return qis::ConnectTo(*folder, "1");
  }
  static void ExpectOthersServed() { EXPECT_EQ(Collect(), (Files{{"a", {EAaTrblCollect_Ok, "x"}}})); }

  const Board m_board;
};

TEST_F(TrblStranger, ThatSendsNonsenseIsSentAway) {
  for (const std::size_t size : {1u, 8u, 9u, 60'000u}) {
    const Fd stranger = Knock();
    const std::string nonsense(size, '\xFF');
    ASSERT_EQ(::send(stranger.Get(), nonsense.data(), size, MSG_NOSIGNAL), static_cast<ssize_t>(size));
    char byte = 0;
    EXPECT_TRUE(Eventually([&] { return ::recv(stranger.Get(), &byte, 1, 0) == 0 || errno == ECONNRESET; })) << size;
  }
  ExpectOthersServed();
}

TEST_F(TrblStranger, ThatAsksForFilesThatAreNotThereIsToldSo) {
  const Fd stranger = Knock();
  const qis::TrblRequest request{.operation = qis::TrblOperation::Hand, .index = 0xFFFFFFFF};
  ASSERT_GT(::send(stranger.Get(), &request, sizeof request, MSG_NOSIGNAL), 0);
  qis::TrblOutcome outcome{};
  EXPECT_TRUE(Eventually([&] { return ::recv(stranger.Get(), &outcome, sizeof outcome, 0) == sizeof outcome; }));
  EXPECT_EQ(outcome.result, EAaTrblCollect_Withdrawn);
}

TEST_F(TrblStranger, ThatDoesNotReadIsSentAway) {
  const Fd stranger = Knock();
  const qis::TrblRequest request{.operation = qis::TrblOperation::List, .index = 0};
  EXPECT_TRUE(Eventually([&] {
    while (::send(stranger.Get(), &request, sizeof request, MSG_NOSIGNAL) > 0) {
    }
    return errno == EPIPE;
  }));
  ExpectOthersServed();
}

TEST_F(TrblStranger, ThatIsSilentKeepsNobodyWaiting) {
  std::vector<Fd> strangers;
  for (int i = 0; i < 30; ++i) strangers.push_back(Knock());
  ExpectOthersServed();
}

TEST_F(TrblStranger, ThatSendsDescriptorsLeavesNoneBehind) {
  const Fd stranger = Knock();
  const auto count = [] {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return std::distance(begin(entries), end(entries));
  };
  const qis::TrblRequest request{.operation = qis::TrblOperation::List, .index = 1};
  qis::TrblListAnswer answer{};
  const auto ask = [&] {
    const auto send = [&](int fd) { return qis::SendWithFd(stranger.Get(), &request, sizeof request, fd) > 0; };
    ASSERT_TRUE(send(STDIN_FILENO) || send(-1)) << "where the kernel refuses the descriptor, it goes without";
    ASSERT_TRUE(Eventually([&] { return ::recv(stranger.Get(), &answer, sizeof answer, 0) == sizeof answer; }));
  };
  ask();
  const auto before = count();
  for (int i = 0; i < 5; ++i) ask();
  EXPECT_EQ(count(), before);
}

TEST_F(TrblStranger, ThatMayNotSendIsRefusedAndToldOnce) {
  constexpr uid_t kStrangersUser = 54321;
  const ErrorOutput output;
  for (int i = 0; i < 2; ++i) {
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
    qis::TrblProcess process{Fd(ends[0]), std::chrono::milliseconds(kPatienceMs)};
    EXPECT_FALSE(qis::TrblSession::Open(Fd(ends[1]), {.pid = 4711, .uid = kStrangersUser, .groups = {kStrangersUser}}));
    std::vector<qis::TrblProcess::Listed> files;
    EXPECT_EQ(process.List(files), EAaTrblCollect_Refused);
  }
  EXPECT_EQ(Occurrences(output.Text(), "Troubleshooting files for process 4711 of user 54321 are refused"), 1u);
}

/// A process that answers wrongly; its answers are there before they are asked for.
class TrblLiar : public ::testing::Test {
 protected:
  TrblLiar() {
    int ends[2];
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
    m_liar.Reset(ends[0]);
    m_process.emplace(Fd(ends[1]), std::chrono::milliseconds(kPatienceMs));
  }
  template <typename Answer>
  void Say(const Answer& answer, int fd = -1) {
    ASSERT_GT(qis::SendWithFd(m_liar.Get(), &answer, sizeof answer, fd), 0);
  }
  EAaTrblCollect List() { return m_process->List(m_files); }

  const Board m_board;
  Fd m_liar;
  std::optional<qis::TrblProcess> m_process;
  std::vector<qis::TrblProcess::Listed> m_files;
};

TEST_F(TrblLiar, WhoseTextsDoNotEndIsCutShort) {
  qis::TrblListAnswer answer{};
  answer.listed = qis::TrblListed::File;
  answer.priority = 77;
  answer.name.fill('n');
  answer.path.fill('p');
  Say(answer);
  Say(qis::TrblListAnswer{.listed = qis::TrblListed::End, .priority = 0, .name = {}, .path = {}});
  EXPECT_EQ(List(), EAaTrblCollect_Ok);
  ASSERT_EQ(m_files.size(), 1u);
  EXPECT_EQ(m_files[0].name.size(), AATRBL_MAX_NAME);
  EXPECT_EQ(m_files[0].path.size(), AATRBL_MAX_PATH);
  EXPECT_EQ(m_files[0].priority, EAaTrblFilePriority_High);
}

TEST_F(TrblLiar, WhoseAnswerHasAnotherSizeIsGivenUp) {
  Say(char{'x'});
  EXPECT_EQ(List(), EAaTrblCollect_Gone);
}

TEST_F(TrblLiar, ThatHandsOverNoFileIsNotBelieved) {
  Say(qis::TrblOutcome{.result = EAaTrblCollect_Ok, .error = 0});
  EXPECT_EQ(m_process->Hand(0).outcome.result, EAaTrblCollect_NoFile);
}

TEST_F(TrblLiar, ThatHandsOverAPipeIsNotBelieved) {
  int pipe[2];
  ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
  const Fd ends[] = {Fd(pipe[0]), Fd(pipe[1])};
  Say(qis::TrblOutcome{.result = EAaTrblCollect_Ok, .error = 0}, pipe[0]);
  const auto handed = m_process->Hand(0);
  EXPECT_EQ(handed.outcome.result, EAaTrblCollect_NoFile);
  EXPECT_FALSE(handed.content);
}

TEST_F(TrblLiar, WithAnUnknownResultHasFailed) {
  Say(qis::TrblOutcome{.result = 1234, .error = 5});
  EXPECT_EQ(m_process->Hand(0).outcome.result, EAaTrblCollect_Failed);
}

TEST_F(TrblLiar, ThatHangsUpIsGone) {
  m_liar.Reset();
  EXPECT_EQ(List(), EAaTrblCollect_Gone);
}

}  // namespace
}  // namespace hwapi::test
