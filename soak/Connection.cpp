#include "Connection.h"

#include "Child.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <cstring>

namespace soak {

using hwapi::qis::Fd;

Fd Connect(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  Fd socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  // Where nobody accepts, a connection is waited for no longer than this.
  const timeval deadline{.tv_sec = static_cast<time_t>(kDeadline), .tv_usec = 0};
  if (socket) setsockopt(socket.Get(), SOL_SOCKET, SO_SNDTIMEO, &deadline, sizeof deadline);
  if (socket && connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) socket.Reset();
  return socket;
}

Greeting ReceiveGreeting(int connection) {
  Greeting greeting;
  pollfd waiting{.fd = connection, .events = POLLIN, .revents = 0};
  if (poll(&waiting, 1, static_cast<int>(kDeadline * 1000)) != 1) return greeting;
  iovec part{.iov_base = &greeting.acknowledgement, .iov_len = sizeof greeting.acknowledgement};
  alignas(cmsghdr) std::byte control[CMSG_SPACE(sizeof(int))];
  msghdr packet{};
  packet.msg_iov = &part;
  packet.msg_iovlen = 1;
  packet.msg_control = control;
  packet.msg_controllen = sizeof control;
  greeting.came = recvmsg(connection, &packet, MSG_DONTWAIT | MSG_CMSG_CLOEXEC) > 0;
  const cmsghdr* const rights = greeting.came ? CMSG_FIRSTHDR(&packet) : nullptr;
  if (rights != nullptr && rights->cmsg_type == SCM_RIGHTS) {
    int passed = -1;
    std::memcpy(&passed, CMSG_DATA(rights), sizeof passed);
    greeting.channel.Reset(passed);
  }
  return greeting;
}

}  // namespace soak
