#include "ServiceProcess.h"

#include "AaSysCom.h"
#include "Msg.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>
#include <utility>

using namespace ps::hwapi::common;

namespace {

class FunctionDelegate : public MsgDelegateBase {
 public:
  FunctionDelegate(u32 msgId, std::function<void(void*)> handler)
      : MsgDelegateBase(msgId), m_handler(std::move(handler)) {}
  void HandleMsg(void* msg) override { m_handler(msg); }

 private:
  std::function<void(void*)> m_handler;
};

int g_processes = 0;

std::string FileText(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

}  // namespace

void Say(const std::string& line) {
  std::puts(line.c_str());
  std::fflush(stdout);
}

void WaitForTest() {
  char byte = 0;
  while (read(STDIN_FILENO, &byte, 1) < 0) {
  }
}

Probe::Probe(const Steps& steps) : Service("PROBE", kProbeTask, 0x20047, 0x22000B), m_steps(steps) {
  GetArgumentParser().AddOption("-V Verbose\n");
}

bool Probe::PreStartup() {
  Say("pre-startup");
  return !m_steps.preStartup || m_steps.preStartup(*this);
}

void Probe::Init() {
  Say("init");
  if (m_steps.init) m_steps.init(*this);
}

void Probe::Run() {
  Say("run");
  Service::Run();
}

void Probe::Exit() {
  Say("exit");
  Service::Exit();
}

void Probe::Handle(u32 msgId, std::function<void(void*)> handler) {
  AddMsgDelegate(new FunctionDelegate(msgId, std::move(handler)));
}

void Probe::Answer(u32 msgId, u32 value) {
  Handle(msgId, [msgId, value](void* msg) {
    void* reply = AaSysComMsgCreateReply(msgId + 1, sizeof value, msg);
    *static_cast<u32*>(AaSysComMsgGetPayload(reply)) = value;
    AaSysComMsgSend(&reply);
  });
}

ServiceProcess::ServiceProcess(const Probe::Steps& steps)
    : m_errorFile(std::string(getenv("HWAPI_RUN")) + "/errors" + std::to_string(++g_processes)) {
  int output[2];
  int input[2];
  if (pipe2(output, O_CLOEXEC) != 0 || pipe2(input, O_CLOEXEC) != 0) std::abort();
  std::fflush(nullptr);
  m_pid = fork();
  if (m_pid == 0) Become(steps, output[1], input[0]);
  close(output[1]);
  close(input[0]);
  m_output = output[0];
  m_input = input[1];
}

void ServiceProcess::Become(const Probe::Steps& steps, int outputFd, int inputFd) const {
  dup2(inputFd, STDIN_FILENO);
  dup2(outputFd, STDOUT_FILENO);
  dup2(open(m_errorFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), STDERR_FILENO);
  std::vector<std::string> words = {"probe"};
  words.insert(words.end(), steps.arguments.begin(), steps.arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  Probe probe(steps);
  try {
    probe.Startup(static_cast<int>(argv.size()), argv.data());
  } catch (const std::exception& escaped) {
    if (steps.escaped) steps.escaped(escaped);
  }
  std::exit(0);
}

ServiceProcess::~ServiceProcess() {
  if (m_pid > 0) kill(m_pid, SIGKILL);
  End();
  close(m_output);
  close(m_input);
}

std::string ServiceProcess::Line() {
  std::string line;
  char byte = 0;
  while (read(m_output, &byte, 1) == 1 && byte != '\n') line += byte;
  return line;
}

bool ServiceProcess::Says(const std::string& line) {
  for (std::string said = Line(); !said.empty(); said = Line()) {
    if (said == line) return true;
  }
  return false;
}

void ServiceProcess::GoOn() const {
  if (write(m_input, "\n", 1) != 1) std::abort();
}

void ServiceProcess::Signal(int number) const { kill(m_pid, number); }

int ServiceProcess::End() {
  if (m_pid > 0) waitpid(m_pid, &m_status, 0);
  m_pid = -1;
  return m_status;
}

std::string ServiceProcess::Errors() {
  End();
  return FileText(m_errorFile);
}

bool ServiceProcess::Logs(const std::string& text) const {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (FileText(m_errorFile).find(text) == std::string::npos) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}
