#include "Service.h"

#include "AaConfig.h"
#include "AaSysCom.h"
#include "AaSysLog.h"
#include "Execution.h"
#include "Internal.h"
#include "MessagePool.h"
#include "MessageQueues.h"
#include "fake/Service.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <stdexcept>

using namespace fake;
using namespace fake::internal;

namespace ps::hwapi::common {
namespace {

/// What a Service object holds.
struct ServiceData {
  Service* service = nullptr;
  ServiceArguments constructedWith;
  u32 state = 0;
  bool commonState = true;
  bool verbose = false;
  std::vector<std::unique_ptr<MsgDelegateBase>> delegates;
  ArgumentParser arguments;
};

/// The Service objects that live, oldest first.
std::vector<ServiceData*>& TheServices() {
  static auto& services = *new std::vector<ServiceData*>;
  return services;
}

ServiceData& Newest() {
  if (TheServices().empty()) throw std::logic_error("there is no Service object");
  return *TheServices().back();
}

/// @return the newest delegate of an id; null when there is none
MsgDelegateBase* FindDelegate(u32 id) {
  const Lock lock;
  const auto& delegates = Newest().delegates;
  const auto found = std::ranges::find(delegates.rbegin(), delegates.rend(), id, &MsgDelegateBase::MsgId);
  return found == delegates.rend() ? nullptr : found->get();
}

/// As the receive loop does it, with what a handler throws.
bool HandleMessage(const Message& message) {
  MsgDelegateBase* delegate = FindDelegate(message.id);
  if (delegate == nullptr) return false;
  const ReceivedMessage received(message);
  delegate->HandleMsg(received);
  return true;
}

}  // namespace

struct ArgumentParser::State {
  std::vector<std::string> known;
  std::map<std::string, std::string> given;
};

ArgumentParser::ArgumentParser() : m_state(std::make_unique<State>()) {}
ArgumentParser::~ArgumentParser() = default;

void ArgumentParser::AddOption(const std::string& text) {
  Record({"ArgumentParser::AddOption", text});
  const std::size_t begin = text.starts_with('-') ? 1 : 0;
  m_state->known.push_back(text.substr(begin, text.find(' ') - begin));
}

std::string ArgumentParser::GetOption(const std::string& name) const {
  const auto found = m_state->given.find(name);
  return found == m_state->given.end() ? "" : "arg " + found->second;
}

std::string ArgumentParser::Parse(int argc, const char* const* argv) {
  m_state->given.clear();
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    const std::string name = argument.substr(std::min<std::size_t>(1, argument.size()));
    if (!argument.starts_with('-') || std::ranges::find(m_state->known, name) == m_state->known.end()) {
      return "unknown argument \"" + argument + "\"";
    }
    const bool hasValue = i + 1 < argc && argv[i + 1][0] != '-';
    const std::string value = hasValue ? argv[++i] : "on";
    m_state->given[name] = value == "arg on" ? "on" : value;
  }
  return "";
}

struct Service::State : ServiceData {};

Service::Service(const std::string& name, u32 endpoint, u32 printFeature, u32 serviceState)
    : m_state(std::make_unique<State>()) {
  const Lock lock;
  m_state->service = this;
  m_state->constructedWith = {
      .name = name, .endpoint = endpoint, .printFeature = printFeature, .serviceState = serviceState};
  TheServices().push_back(m_state.get());
}

Service::~Service() {
  const Lock lock;
  std::erase(TheServices(), m_state.get());
}

void Service::SetServiceStateRad(unsigned state) {
  const Lock lock;
  Record({"Service::SetServiceStateRad", state});
  m_state->state = state;
}

bool Service::PreStartup() {
  const auto failure = Record({"Service::PreStartup"});
  return !failure || *failure != 0;
}

void Service::Init() {
  if (Record({"Service::Init"})) throw InitFailedException("Service::Init was told to fail", __FILE__, __LINE__);
}

void Service::Run() {
  Record({"Service::Run"});
  DispatchQueued();
}

void Service::Exit() { Record({"Service::Exit"}); }

void Service::HandleConfigTagChange(std::string tag, unsigned value) {
  Record({"Service::HandleConfigTagChange", std::move(tag), value});
}

Service& Service::Get() { return *Newest().service; }

void Service::Startup(int argc, char** argv) {
  const std::string problem = m_state->arguments.Parse(argc, argv);
  if (!problem.empty()) {
    LogError(m_state->constructedWith.name + ": " + problem);
    return;
  }
  if (!PreStartup()) return;
  {
    const Lock lock;
    RegisterTask(m_state->constructedWith.endpoint, CurrentEu());
  }
  Init();
  Run();
  Exit();
}

void Service::AddMsgDelegate(MsgDelegateBase* delegate) {
  const Lock lock;
  Record({"Service::AddMsgDelegate", delegate->MsgId()});
  m_state->delegates.emplace_back(delegate);
}

void Service::WaitForConfigTag(const std::string& name, u32 value) {
  if (Record({"Service::WaitForConfigTag", name, value})) {
    throw MsgHandlingException("stopped while waiting for the tag " + name, __FILE__, __LINE__);
  }
}

ArgumentParser& Service::GetArgumentParser() { return m_state->arguments; }

void Service::SetVerbose(u32 verbose) {
  const Lock lock;
  Record({"Service::SetVerbose", verbose});
  m_state->verbose = verbose != 0;
}

u32 Service::GetServiceStateRad() const {
  const Lock lock;
  return m_state->commonState ? 0 : m_state->state;
}

void Service::SetUseCommonServiceState(u32 common) {
  const Lock lock;
  Record({"Service::SetUseCommonServiceState", common});
  m_state->commonState = common != 0;
  if (m_state->commonState) m_state->state = 0;
}

}  // namespace ps::hwapi::common

namespace fake {

using ps::hwapi::common::HandleMessage;
using ps::hwapi::common::MsgDelegateBase;
using ps::hwapi::common::MsgHandlingException;
using ps::hwapi::common::Newest;
using ps::hwapi::common::TheServices;

bool Dispatch(const Message& message) { return HandleMessage(message); }

unsigned DispatchQueued() {
  unsigned taken = 0;
  const auto next = [] {
    const Lock lock;
    return Take(CurrentEu(), nullptr);
  };
  for (auto message = next(); message; message = next(), ++taken) {
    try {
      if (!HandleMessage(*message)) LogError("No delegate for message " + std::to_string(message->id));
    } catch (const MsgHandlingException& problem) {
      LogError(std::string(problem.what()) + ": " + problem.getDescription());
    }
  }
  return taken;
}

std::vector<u32> RegisteredIds() {
  const Lock lock;
  std::vector<u32> ids;
  for (const auto& delegate : Newest().delegates) ids.push_back(delegate->MsgId());
  return ids;
}

std::ostream& operator<<(std::ostream& out, const ServiceArguments& arguments) {
  return out << '"' << arguments.name << "\", endpoint " << arguments.endpoint << ", print feature "
             << arguments.printFeature << ", service state " << arguments.serviceState;
}

ServiceArguments ConstructedWith() {
  const Lock lock;
  return Newest().constructedWith;
}

void SetServiceState(u32 state) {
  const Lock lock;
  Newest().state = state;
  Newest().commonState = false;
}

bool UsesCommonServiceState() {
  const Lock lock;
  return Newest().commonState;
}

bool IsVerbose() {
  const Lock lock;
  return Newest().verbose;
}

void internal::ResetServices() {
  for (auto* service : TheServices()) {
    service->state = 0;
    service->commonState = true;
    service->verbose = false;
    service->delegates.clear();
  }
}

}  // namespace fake
