// The runtime's classes without what they do.
#pragma GCC visibility push(default)
#include "Service.h"
#pragma GCC visibility pop

namespace ps::hwapi::common {

struct ArgumentParser::State {};
ArgumentParser::ArgumentParser() = default;
ArgumentParser::~ArgumentParser() = default;
void ArgumentParser::AddOption(const std::string&) {}
std::string ArgumentParser::GetOption(const std::string&) const { return {}; }
std::string ArgumentParser::Parse(int, const char* const*) { return {}; }

struct Service::State {
  ArgumentParser parser;
};
Service::Service(const std::string&, u32, u32, u32) : m_state(std::make_unique<State>()) {}
Service::~Service() = default;
void Service::SetServiceStateRad(unsigned) {}
bool Service::PreStartup() { return true; }
void Service::Init() {}
void Service::Run() {}
void Service::Exit() {}
void Service::HandleConfigTagChange(std::string, unsigned) {}
Service& Service::Get() { throw InitFailedException("a stub", "", 0); }
void Service::Startup(int, char**) {}
void Service::AddMsgDelegate(MsgDelegateBase*) {}
void Service::WaitForConfigTag(const std::string&, u32) {}
ArgumentParser& Service::GetArgumentParser() { return m_state->parser; }
void Service::SetVerbose(u32) {}
u32 Service::GetServiceStateRad() const { return 0; }
void Service::SetUseCommonServiceState(u32) {}

}  // namespace ps::hwapi::common
