#include "TaskName.h"

#include "LockedFile.h"
#include "RunFolder.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

std::string LockNameOf(TAaSysComSicad sicad) { return NameOf(sicad) + ".lock"; }

/// Socket addresses are short; a long path is reached through the folder's descriptor.
sockaddr_un AddressOf(TAaSysComSicad sicad) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::string path = Folder().Path() + "/" + NameOf(sicad);
  if (path.size() >= sizeof address.sun_path) {
    path = "/proc/self/fd/" + std::to_string(Folder().Get()) + "/" + NameOf(sicad);
  }
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return address;
}

Fd NewSocket() { return Fd(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)); }

pid_t ReadPid(TAaSysComSicad sicad) {
  const Fd file(::openat(Folder().Get(), LockNameOf(sicad).c_str(), O_RDONLY | O_CLOEXEC));
  std::array<char, 16> text{};
  const ssize_t size = ::pread(file.Get(), text.data(), text.size() - 1, 0);
  return size > 0 ? static_cast<pid_t>(std::strtol(text.data(), nullptr, 10)) : 0;
}

void WritePid(int file) {
  const std::string text = std::to_string(::getpid()) + "\n";
  if (::ftruncate(file, 0) != 0 || ::pwrite(file, text.data(), text.size(), 0) < 0) {
    return;  // only the refusal of a second process says less then
  }
}

}  // namespace

int TaskName::Claim(TAaSysComSicad sicad) {
  if (Folder().Get() < 0) {
    return Folder().Error();
  }
  m_sicad = sicad;
  m_lock = OpenLocked(Folder().Get(), LockNameOf(sicad).c_str(), Folder().FileMode(), LockWait::Refuse);
  if (!m_lock) {
    const int error = errno;
    m_holder = error == EWOULDBLOCK ? ReadPid(sicad) : 0;
    return error == EWOULDBLOCK ? EBUSY : error;
  }
  WritePid(m_lock.Get());
  const int error = Listen();
  if (error != 0) {
    Release();
  }
  return error;
}

int TaskName::Listen() {
  m_listener = NewSocket();
  if (!m_listener) {
    return errno;
  }
  ::unlinkat(Folder().Get(), NameOf(m_sicad).c_str(), 0);  // what a dead process left
  const sockaddr_un address = AddressOf(m_sicad);
  if (::bind(m_listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return errno;
  }
  // Everybody may knock: whether a peer may send is decided by its credentials, and refusals are told.
  ::fchmodat(Folder().Get(), NameOf(m_sicad).c_str(), 0666, 0);
  return ::listen(m_listener.Get(), SOMAXCONN) == 0 ? 0 : errno;
}

void TaskName::Release() {
  if (!m_lock) {
    return;
  }
  ::unlinkat(Folder().Get(), NameOf(m_sicad).c_str(), 0);
  ::unlinkat(Folder().Get(), LockNameOf(m_sicad).c_str(), 0);
  m_listener.Reset();
  m_lock.Reset();
}

Fd ConnectToTask(TAaSysComSicad sicad) {
  if (Folder().Get() < 0) {
    errno = Folder().Error();
    return Fd();
  }
  Fd connection = NewSocket();
  const sockaddr_un address = AddressOf(sicad);
  if (connection && ::connect(connection.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    const int error = errno;
    connection.Reset();
    errno = error;
  }
  return connection;
}

}  // namespace hwapi::qis
