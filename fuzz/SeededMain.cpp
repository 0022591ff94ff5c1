/// A bounded run: as many inputs as the first argument says, made from the seed that the second one says, so that a
/// failure can be repeated. Fails also when a handler of the service was never reached. A third argument names a folder
/// that takes each input as a file, for the search by coverage to begin with.
#include "MessageFuzz.h"
#include "Steps.h"

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

using Random = std::mt19937;

/// Runs of fewer inputs need not reach every handler.
constexpr unsigned long kEnoughForEveryHandler = 1000;
constexpr unsigned kMostSteps = 6;

unsigned Below(Random& random, unsigned end) { return static_cast<unsigned>(random() % end); }

std::uint8_t AnyByte(Random& random) { return static_cast<std::uint8_t>(Below(random, 256)); }

template <typename T, std::size_t N>
T OneOf(Random& random, const T (&values)[N]) {
  return values[Below(random, N)];
}

/// @return whether something happens that happens once in @p times
bool Once(Random& random, unsigned times) { return Below(random, times) == 0; }

/// A word of a payload. Small numbers are frequent: fans, codes, counts and enumerators that pass the first checks.
void AppendWord(Random& random, bool otherEndian, std::vector<std::uint8_t>& bytes) {
  static constexpr std::uint32_t kLikely[] = {0,  0,   1,   1,   2,   3,   4,   6,   8,   20,
                                              40, 100, 121, 155, 201, 201, 202, 203, 1000};
  const auto word = static_cast<std::uint32_t>(Once(random, 5) ? random() : OneOf(random, kLikely));
  for (unsigned i = 0; i < 4; ++i) bytes.push_back(static_cast<std::uint8_t>(word >> 8 * (otherEndian ? 3 - i : i)));
}

void AppendStep(Random& random, std::vector<std::uint8_t>& input) {
  static constexpr unsigned kWords[] = {0, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 7, 8, 9, 10, 12, 21, 50};
  const bool otherEndian = Once(random, 2);
  const unsigned size = 4 * OneOf(random, kWords) + (Once(random, 5) ? Below(random, 4) : 0);
  const unsigned origin = Below(random, fuzz::kOtherEndianBit) | (otherEndian ? fuzz::kOtherEndianBit : 0u);
  input.push_back(AnyByte(random));
  input.push_back(Once(random, 3) ? AnyByte(random) : std::uint8_t{0});
  input.push_back(Once(random, 2000) ? fuzz::kStretched : static_cast<std::uint8_t>(Below(random, 4)));
  input.push_back(static_cast<std::uint8_t>(origin));
  input.push_back(static_cast<std::uint8_t>(size));
  const std::size_t end = input.size() + size;
  while (input.size() < end) AppendWord(random, otherEndian, input);
  input.resize(end);
}

std::vector<std::uint8_t> MakeInput(Random& random) {
  std::vector<std::uint8_t> input = {static_cast<std::uint8_t>(random())};
  for (unsigned steps = 1 + static_cast<unsigned>(random() % kMostSteps); steps != 0; --steps)
    AppendStep(random, input);
  return input;
}

/// Says how often each message came to its handler.
/// @return whether each did
bool Report() {
  bool all = true;
  for (const auto& [id, tally] : fuzz::Tallies()) {
    std::printf("message 0x%04x: %lu handled, %lu of them refused, %lu in the other byte order\n", id, tally.handled,
                tally.refused, tally.otherEndian);
    if (tally.handled != 0) continue;
    std::fprintf(stderr, "message_fuzz: no input reached the handler of message 0x%04x\n", id);
    all = false;
  }
  return all;
}

/// @return whether the file was written
bool Write(const std::string& path, const std::vector<std::uint8_t>& input) {
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return false;
  const std::size_t written = std::fwrite(input.data(), 1, input.size(), file);
  return std::fclose(file) == 0 && written == input.size();
}

}  // namespace

int main(int argc, char** argv) {
  const unsigned long count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 100000;
  const unsigned long seed = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 20240131;
  const std::string folder = argc > 3 ? argv[3] : "";
  Random random(static_cast<Random::result_type>(seed));
  for (unsigned long i = 0; i < count; ++i) {
    const std::vector<std::uint8_t> input = MakeInput(random);
    LLVMFuzzerTestOneInput(input.data(), input.size());
    if (const std::string path = folder + "/seed-" + std::to_string(i); !folder.empty() && !Write(path, input)) {
      std::fprintf(stderr, "message_fuzz: %s cannot be written; name a folder that exists\n", path.c_str());
      return 1;
    }
  }
  std::printf("message_fuzz: %lu inputs from seed %lu\n", count, seed);
  return Report() || count < kEnoughForEveryHandler ? 0 : 1;
}
