#include "PassedFd.h"

#include <sys/socket.h>

#include <array>
#include <cstring>

namespace hwapi::qis {
namespace {

/// SO_PASSRIGHTS, which the C library's headers may not have yet.
constexpr int kSoPassRights = 83;

/// Room for one descriptor. Received is only what fits the length, without the padding behind it: the kernel closes
/// further descriptors of a peer that sends more.
struct Control {
  alignas(cmsghdr) std::array<std::byte, CMSG_SPACE(sizeof(int))> bytes{};
};

}  // namespace

ssize_t SendWithFd(int socket, const void* packet, std::size_t size, int fd) {
  iovec part{.iov_base = const_cast<void*>(packet), .iov_len = size};
  Control control;
  msghdr header{};
  header.msg_iov = &part;
  header.msg_iovlen = 1;
  if (fd >= 0) {
    header.msg_control = control.bytes.data();
    header.msg_controllen = control.bytes.size();
    cmsghdr* const rights = CMSG_FIRSTHDR(&header);
    rights->cmsg_level = SOL_SOCKET;
    rights->cmsg_type = SCM_RIGHTS;
    rights->cmsg_len = CMSG_LEN(sizeof fd);
    std::memcpy(CMSG_DATA(rights), &fd, sizeof fd);
  }
  return ::sendmsg(socket, &header, MSG_DONTWAIT | MSG_NOSIGNAL);
}

ssize_t ReceiveWithFd(int socket, void* packet, std::size_t size, Fd& fd) {
  iovec part{.iov_base = packet, .iov_len = size};
  Control control;
  msghdr header{};
  header.msg_iov = &part;
  header.msg_iovlen = 1;
  header.msg_control = control.bytes.data();
  header.msg_controllen = CMSG_LEN(sizeof(int));
  const ssize_t received = ::recvmsg(socket, &header, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
  fd.Reset();
  const cmsghdr* const rights = received >= 0 ? CMSG_FIRSTHDR(&header) : nullptr;
  if (rights != nullptr && rights->cmsg_level == SOL_SOCKET && rights->cmsg_type == SCM_RIGHTS &&
      rights->cmsg_len == CMSG_LEN(sizeof(int))) {
    int passed = -1;
    std::memcpy(&passed, CMSG_DATA(rights), sizeof passed);
    fd.Reset(passed);
  }
  return received;
}

bool RefuseFds(int socket) {
  constexpr int kRefuse = 0;
  return ::setsockopt(socket, SOL_SOCKET, kSoPassRights, &kRefuse, sizeof kRefuse) == 0;
}

}  // namespace hwapi::qis
