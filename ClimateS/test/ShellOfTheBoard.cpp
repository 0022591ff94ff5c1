#include "ShellOfTheBoard.h"

#include <cstdlib>

// The names that the linker gives what it wraps.
extern "C" int __real_system(const char* command);
extern "C" int __wrap_system(const char* command);

namespace ps::hwapi::common::climate {
namespace {

ShellOfTheBoard* g_shell = nullptr;

}  // namespace

ShellOfTheBoard::ShellOfTheBoard() { g_shell = this; }
ShellOfTheBoard::~ShellOfTheBoard() { g_shell = nullptr; }

int ShellOfTheBoard::Run(const char* command) {
  m_commands.emplace_back(command);
  if (m_answers) return m_answer;
  setenv("COMMAND_OF_THE_BOARD", command, 1);
  return __real_system("exec bash -c \"$COMMAND_OF_THE_BOARD\"");
}

}  // namespace ps::hwapi::common::climate

int __wrap_system(const char* command) {
  using ps::hwapi::common::climate::g_shell;
  return g_shell != nullptr ? g_shell->Run(command) : __real_system(command);
}
