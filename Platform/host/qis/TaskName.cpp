#include "TaskName.h"

#include <array>
#include <cstdio>
#include <string>

namespace hwapi::qis {
namespace {

const RunFolder& Folder() {
  static const auto* const folder = new RunFolder("com");
  return *folder;
}

std::string NameOf(TAaSysComSicad sicad) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%04X-%04X", sicad >> 16, sicad & 0xFFFFu);
  return text.data();
}

}  // namespace

int TaskName::Claim(TAaSysComSicad sicad) { return m_socket.Claim(Folder(), NameOf(sicad)); }

Fd ConnectToTask(TAaSysComSicad sicad) { return ConnectTo(Folder(), NameOf(sicad)); }

}  // namespace hwapi::qis
