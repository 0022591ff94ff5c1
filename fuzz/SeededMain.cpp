/// A bounded run: as many messages as the argument says, made from a seed, so that a failure can be repeated.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

/// Random bytes of a random length. Small numbers are frequent: counts and enumerators that pass the first checks.
std::vector<std::uint8_t> MakeInput(std::mt19937& random) {
  static constexpr std::size_t kLengths[] = {1, 2, 5, 9, 13, 17, 21, 25, 29, 33, 37, 41, 265, 600};
  static constexpr std::uint8_t kLikely[] = {0, 0, 0, 1, 2, 3, 201, 202, 203, 0xFF};
  std::vector<std::uint8_t> input(kLengths[random() % std::size(kLengths)] + random() % 3);
  for (std::uint8_t& byte : input) {
    byte = random() % 3 == 0 ? static_cast<std::uint8_t>(random()) : kLikely[random() % std::size(kLikely)];
  }
  input[0] = static_cast<std::uint8_t>(random());
  return input;
}

}  // namespace

int main(int argc, char** argv) {
  const unsigned long count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 100000;
  const unsigned long seed = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 20240131;
  std::mt19937 random(static_cast<std::mt19937::result_type>(seed));
  for (unsigned long i = 0; i < count; ++i) {
    const std::vector<std::uint8_t> input = MakeInput(random);
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  std::printf("message_fuzz: %lu messages from seed %lu\n", count, seed);
  return 0;
}
