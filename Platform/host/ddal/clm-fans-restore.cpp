// Hands back the fans that a daemon and its fan guard, killed together, left changed. Harmless at any time.
#include "FanRestore.h"

#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

constexpr int kStatusLeft = 1;
constexpr int kStatusUsage = 2;
constexpr const char kUsage[] =
    "usage: clm-fans-restore [--board FILE]\n"
    "Hands back the fans that a daemon killed together with its fan guard left changed.\n";

}  // namespace

int main(int argc, char** argv) {
  const std::string_view option = argc > 1 ? argv[1] : "";
  if (argc == 2 && option == "--help") return std::fputs(kUsage, stdout) < 0 ? kStatusLeft : EXIT_SUCCESS;
  if (argc == 3 && option == "--board") {
    setenv("HWAPI_BOARD", argv[2], 1);
  } else if (argc != 1) {
    std::fputs(kUsage, stderr);
    return kStatusUsage;
  }
  const unsigned left = hwapi::ddal::RestoreFansIfFree(
      [](const std::string& line) { std::fprintf(stderr, "clm-fans-restore: %s\n", line.c_str()); });
  // A chip that hangs must not keep the program: nobody waits for its thread.
  std::fflush(nullptr);
  _exit(left == 0 ? EXIT_SUCCESS : kStatusLeft);
}
