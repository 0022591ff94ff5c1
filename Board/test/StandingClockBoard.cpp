#include "StandingClockBoard.h"

#include <algorithm>
#include <regex>

namespace boardtest {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kRowPeriod = 60;  // seconds

/// The board's text without what makes its simulated sensors move: each shows its base.
std::string WithoutPhysics(const std::string& description) {
  return std::regex_replace(description, std::regex(", load = [^}]*\\}"), ", noise = 0 }");
}

std::vector<std::string> SendCommand(const Request& request, unsigned answers) {
  char id[16];
  std::snprintf(id, sizeof id, "0x%x", request.id);
  std::vector<std::string> command = {"send", "--to", request.to, "--id", id, "--expect", std::to_string(answers)};
  command.insert(command.end(), {"--timeout", std::to_string(kDeadline.count()) + "s"});
  if (!request.hex.empty()) command.insert(command.end(), {"--hex", request.hex});
  if (request.otherEndian) command.push_back("--other-endian");
  return command;
}

std::string Text(const Request& request) {
  char id[16];
  std::snprintf(id, sizeof id, "0x%04X", request.id);
  return std::string(id) + (request.otherEndian ? " (other order) " : " ") + request.hex + "\n";
}

}  // namespace

void StandingClockBoard::UpStandingStill() {
  const std::string board = WithoutPhysics(FileText(fs::path(BOARDS_FOLDER) / "kela.toml"));
  UpWith(Write("kela.toml", "[clock]\nspeed = 0\nstart = 2026-01-31T23:40:00Z\n" + board));
}

void StandingClockBoard::Pass(unsigned seconds) {
  m_now += seconds;
  const Result clock = Boardsim({"clock", "+" + std::to_string(seconds) + "s"});
  ASSERT_EQ(clock.status, 0) << clock.err;
}

std::string StandingClockBoard::Send(const Request& request) const {
  const Result sent = Clmctl(SendCommand(request, request.answers));
  EXPECT_EQ(sent.status, 0) << Text(request) << sent.err;
  return Text(request) + sent.out;
}

std::string StandingClockBoard::SendForIndications(const Request& request, unsigned count, unsigned first,
                                                   unsigned further) {
  const auto client = StartClmctl(SendCommand(request, 1 + count));
  EXPECT_TRUE(client->NextLine()) << Text(request) << client->SoFar().err;
  for (unsigned i = 0; i < count && !HasFailure(); ++i) {
    Pass(i == 0 ? first : further);
    EXPECT_TRUE(client->NextLine()) << Text(request) << client->SoFar().err;
  }
  return Text(request) + client->Wait().out;
}

void StandingClockBoard::BeginTrace() {
  m_daemon = DaemonPid();
  AwaitTracingThreads();
  m_nextRow = m_now + kRowPeriod;
}

void StandingClockBoard::PassToNextRow() {
  ASSERT_LT(m_now, m_nextRow);
  const std::size_t before = Rows();
  Pass(m_nextRow - m_now);
  ASSERT_TRUE(Eventually([&] { return Rows() > before; }));
  AwaitTracingThreads();
  m_nextRow += kRowPeriod;
}

std::size_t StandingClockBoard::Rows() const {
  const Result store = Clmctl({"blackbox", "store", "--timeout", std::to_string(kDeadline.count()) + "s"});
  EXPECT_EQ(store.status, 0) << store.err;
  const std::string trace = Lifedata("blackbox_temperature");
  return static_cast<std::size_t>(std::count(trace.begin(), trace.end(), '\n'));
}

// A sleep ends a minute after its begin: time must not pass before it has begun. Nothing but the state of its thread
// tells that.
void StandingClockBoard::AwaitTracingThreads() const {
  const fs::path threads = fs::path("/proc") / std::to_string(m_daemon) / "task";
  const auto asleep = [&] {
    unsigned count = 0;
    for (const fs::directory_entry& thread : fs::directory_iterator(threads)) {
      if (FileText(thread.path() / "comm") != "BlackBoxData\n") continue;
      if (FileText(thread.path() / "stat").find(") S ") != std::string::npos) ++count;
    }
    return count == 2;
  };
  ASSERT_TRUE(Eventually(asleep));
}

void StandingClockBoard::ResetAndAwaitHistory(const std::vector<std::string>& options) {
  const auto history = [this] {
    const std::string text = Lifedata("blackbox");
    const std::size_t begin = text.find("RESET Reason");
    return text.substr(std::min(begin, text.size()), text.find("SW VERSION") - begin);
  };
  const std::string before = history();
  ASSERT_NO_FATAL_FAILURE(Reset(options));
  ASSERT_TRUE(Eventually([&] { return history() != before; }));
}

}  // namespace boardtest
