#include "NamedSocket.h"

#include "LockedFile.h"
#include "PassedFd.h"
#include "SharedFile.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstdlib>

namespace hwapi::qis {
namespace {

constexpr const char* kLockSuffix = ".lock";

std::string LockNameOf(const std::string& name) { return name + kLockSuffix; }

/// Socket addresses are short; a long path is reached through the folder's descriptor.
sockaddr_un AddressOf(const RunFolder& folder, const std::string& name) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::string path = folder.Path() + "/" + name;
  if (path.size() >= sizeof address.sun_path) {
    path = "/proc/self/fd/" + std::to_string(folder.Get()) + "/" + name;
  }
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  return address;
}

Fd NewSocket() { return Fd(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)); }

pid_t ReadPid(const RunFolder& folder, const std::string& name) {
  const Fd file = OpenSharedFile(folder.Get(), LockNameOf(name).c_str(), O_RDONLY);
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

int NamedSocket::Claim(const RunFolder& folder, const std::string& name) {
  if (folder.Get() < 0) {
    return folder.Error();
  }
  m_folder = &folder;
  m_name = name;
  m_lock = OpenLocked(folder.Get(), LockNameOf(name).c_str(), folder.FileMode(), LockWait::Refuse);
  if (!m_lock) {
    const int error = errno;
    m_holder = error == EWOULDBLOCK ? ReadPid(folder, name) : 0;
    return error == EWOULDBLOCK ? EBUSY : error;
  }
  WritePid(m_lock.Get());
  const int error = Listen();
  if (error != 0) {
    Release();
  }
  return error;
}

int NamedSocket::Listen() {
  m_listener = NewSocket();
  if (!m_listener) {
    return errno;
  }
  RefuseFds(m_listener.Get());  // where the kernel can: nobody who connects has one to pass
  // What a dead process left goes; a folder stays.
  if (::unlinkat(m_folder->Get(), m_name.c_str(), 0) != 0 && errno == EISDIR) {
    ReportIfNot(S_IFSOCK, m_folder->Get(), m_name.c_str());
    return EISDIR;
  }
  const sockaddr_un address = AddressOf(*m_folder, m_name);
  if (::bind(m_listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return errno;
  }
  // Everybody may knock: who is let in is decided by the peer's credentials, and refusals are told.
  const bool open = ::fchmodat(m_folder->Get(), m_name.c_str(), 0666, 0) == 0;
  return open && ::listen(m_listener.Get(), SOMAXCONN) == 0 ? 0 : errno;
}

void NamedSocket::Release() {
  if (!m_lock) {
    return;
  }
  ::unlinkat(m_folder->Get(), m_name.c_str(), 0);
  ::unlinkat(m_folder->Get(), LockNameOf(m_name).c_str(), 0);
  m_listener.Reset();
  m_lock.Reset();
}

bool IsLockName(const std::string& name) { return name.ends_with(kLockSuffix); }

Fd ConnectTo(const RunFolder& folder, const std::string& name) {
  if (folder.Get() < 0) {
    errno = folder.Error();
    return Fd();
  }
  Fd connection = NewSocket();
  const sockaddr_un address = AddressOf(folder, name);
  if (connection && ::connect(connection.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    int error = errno;
    connection.Reset();
    if (error == ECONNREFUSED && ReportIfNot(S_IFSOCK, folder.Get(), name.c_str())) {
      error = ENOTSOCK;
    }
    errno = error;
  }
  return connection;
}

}  // namespace hwapi::qis
