#include "TestBoard.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

namespace boardtest {
namespace {

namespace fs = std::filesystem;

/// @return a command of this build; a program of another processor runs through the emulator that runs the tests
std::vector<std::string> With(const std::string& program, const std::vector<std::string>& arguments) {
  std::vector<std::string> command;
  std::istringstream emulator(EMULATOR);
  for (std::string word; emulator >> word;) command.push_back(word);
  command.push_back(program);
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

}  // namespace

BoardTest::BoardTest() {
  char name[] = "/tmp/board-test-XXXXXX";
  m_folder = mkdtemp(name);
  m_environment = {{"HWAPI_RUN", StateFolder() + "/run"},
                   {"HWAPI_BOARD", ""},
                   {"HWAPI_SYSFS", ""},
                   {"NOTIFY_SOCKET", ""},
                   {"JOURNAL_STREAM", ""},
                   {"BOARDSIM_EMULATOR", EMULATOR}};
}

BoardTest::~BoardTest() {
  m_board.reset();
  if (HasFailure()) {
    for (const char* log : {"boardsim.log", "clm.log"}) {
      std::fprintf(stderr, "--- %s\n%s", log, FileText(fs::path(StateFolder()) / log).c_str());
    }
  }
  fs::remove_all(m_folder);
}

void BoardTest::Up(const std::vector<std::string>& options) {
  const std::string text = FileText(fs::path(BOARDS_FOLDER) / "kela.toml");
  UpWith(Write("kela.toml", "[clock]\nspeed = " + std::to_string(kClockSpeed) + "\n" + text), options);
}

void BoardTest::UpWith(const std::string& description, const std::vector<std::string>& options) {
  std::vector<std::string> arguments = {"up", description, "--foreground"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  m_board = StartBoardsim(arguments);
  ASSERT_TRUE(m_board->WaitForText("export HWAPI_RUN=")) << m_board->SoFar().err;
}

void BoardTest::Down() { m_board.reset(); }

std::unique_ptr<Program> BoardTest::StartBoardsim(std::vector<std::string> arguments) const {
  return std::make_unique<Program>(With(BOARDSIM_PROGRAM, std::move(arguments)), m_environment);
}

std::unique_ptr<Program> BoardTest::StartClmctl(std::vector<std::string> arguments) const {
  return std::make_unique<Program>(With(CLMCTL_PROGRAM, std::move(arguments)), m_environment);
}

Result BoardTest::Boardsim(std::vector<std::string> arguments) const {
  return StartBoardsim(std::move(arguments))->Wait();
}

Result BoardTest::Clmctl(std::vector<std::string> arguments) const { return StartClmctl(std::move(arguments))->Wait(); }

Result BoardTest::Daemon() const { return boardtest::Run(With(CLM_PROGRAM, {}), m_environment); }

pid_t BoardTest::DaemonPid() const {
  std::istringstream status(Boardsim({"status"}).out);
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("daemon")) return std::atoi(line.c_str() + std::string("daemon").size());
  }
  return 0;
}

void BoardTest::RestartDaemon() const {
  auto tag = StartClmctl({"tag", "watch", "app.hwapi.online.4d9"});
  ASSERT_TRUE(tag->WaitForText("4d9 6"));
  kill(DaemonPid(), SIGTERM);
  ASSERT_TRUE(tag->WaitForText("4d9 7"));
  ASSERT_TRUE(tag->WaitForText("4d9 6", 2));
}

void BoardTest::Reset(const std::vector<std::string>& options) const {
  auto tag = StartClmctl({"tag", "watch", "app.hwapi.online.4d9"});
  ASSERT_TRUE(tag->WaitForText("4d9 6"));
  std::vector<std::string> command = {"reset"};
  command.insert(command.end(), options.begin(), options.end());
  const Result reset = Boardsim(command);
  ASSERT_EQ(reset.status, 0) << reset.err;
  ASSERT_TRUE(tag->WaitForText("4d9 6", 2));
}

bool BoardTest::Eventually(const std::function<bool()>& isTrue) {
  const auto end = std::chrono::steady_clock::now() + kDeadline;
  while (!isTrue()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

std::string BoardTest::Write(const std::string& name, const std::string& text) const {
  const std::string path = m_folder / name;
  std::ofstream(path) << text;
  return path;
}

std::vector<nlohmann::json> JsonLines(const std::string& text) {
  std::vector<nlohmann::json> objects;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) objects.push_back(nlohmann::json::parse(line));
  return objects;
}

std::string FileText(const fs::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> BoardFiles() {
  std::vector<std::string> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(BOARDS_FOLDER)) {
    if (entry.path().extension() == ".toml") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace boardtest
