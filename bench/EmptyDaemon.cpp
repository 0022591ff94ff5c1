/// A daemon that opens the sensors' files given as arguments and a socket, reports its readiness, and waits.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

sockaddr_un Address(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof(address.sun_path) - 1);
  return address;
}

void ReportReady() {
  const char* const name = std::getenv("NOTIFY_SOCKET");
  if (name == nullptr) return;
  sockaddr_un address = Address(name);
  address.sun_path[0] = '\0';
  const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + std::strlen(name));
  sendto(fd, "READY=1", 7, 0, reinterpret_cast<const sockaddr*>(&address), length);
  close(fd);
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> sensors;
  for (int i = 1; i < argc; ++i) sensors.push_back(open(argv[i], O_RDONLY | O_CLOEXEC));

  const std::string path = std::string(std::getenv("HWAPI_RUN")) + "/empty.sock";
  const sockaddr_un address = Address(path);
  unlink(path.c_str());
  const int server = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  if (bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) return 1;
  listen(server, 8);

  ReportReady();
  pause();
  return 0;
}
