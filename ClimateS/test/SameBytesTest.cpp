/// Every machine and every compiler gives the same bytes: what the service answers, logs and writes in a long made-up
/// life is compared with what is on record here.
#include "BlackBoxTest.h"
#include "PrivateRoot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>

namespace ps::hwapi::common::climate {
namespace {

constexpr unsigned kSteps = 1000;
constexpr TAaSysComSicad kService = 0x010104B6;

constexpr u32 kUnitIndication = 0x0BBE;

/// A request and how its payload is made.
struct Kind {
  u32 id;
  std::vector<u32> mostOf;  ///< each word is random below this; 0: any value
};

const Kind kKinds[] = {
    {.id = 0x2B29, .mostOf = {3, 14, 5'000'000, 0, 2}},                            // temperature measurement
    {.id = 0x2C13, .mostOf = {0, 3, 205, 5, 205, 5}},                              // fan frequency
    {.id = 0x2C15, .mostOf = {0, 0, 3, 205, 110, 205, 110}},                       // fan speed
    {.id = 0x2CF1, .mostOf = {0, 0, 130, 3, 205, 110, 205, 110}},                  // fan speed with a period
    {.id = 0x1134, .mostOf = {2, 2, 3, 23, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},  // reset
    {.id = 0x1177, .mostOf = {0, 2, 2}},                                           // reset info
    {.id = 0x43A2, .mostOf = {0}},                                                 // store the black box
    {.id = 0x2C62, .mostOf = {0, 2}},                                              // subscription to resets
    {.id = kUnitIndication, .mostOf = {9, 0, 0, 0, 0, 0, 0, 0}},                   // a processing unit
};

/// FNV-1a, 64 bits: its offset basis and its prime.
std::uint64_t HashOf(const std::string& text) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  return hash;
}

/// A board, and the hash of its life.
struct Life {
  const char* name;
  EUnitType type;
  EUnitVersion version;
  std::uint64_t hash;
};

void PrintTo(const Life& life, std::ostream* out) { *out << life.name; }

class SameBytesTest : public fake::PlatformTest, public testing::WithParamInterface<Life> {
 protected:
  SameBytesTest() {
    fake::Unit().type = GetParam().type;
    fake::Unit().version = GetParam().version;
    fake::SetTag("app.hwapi.online.4b3", 6u);
    fake::SetRad(0x200B5, 1);
    fake::MakeDir("/ffs/stb/config/lifedata");
    fake::SetFile(kOamAlarmsFile, "alarm 1\nalarm 2\n");
    for (u32 board = 1; board <= 9; ++board) {
      for (u32 index = 0; index < 16; ++index) {
        fake::SetTemperature(board << 16 | index, static_cast<int>(board * 9125 + index * 1375) - 20'000);
      }
    }
    for (u32 fan = 0; fan < 3; ++fan) fake::SetFan(fan, {.rpm = static_cast<int>(3000 + fan * 111)});
  }

  u32 Random(u32 end) {
    const auto number = static_cast<u32>(m_random());
    return end == 0 ? number : number % end;
  }

  /// Gives an indication the id of a unit in one of the three slots, or in none, and one of the hardware variants.
  void ChooseUnit(std::vector<u32>& words) {
    constexpr u32 kVariants[] = {0x00, 0x0C, 0x11, 0x16};
    words[1] = (1 + Random(6)) << 4;
    words[1] |= 2 + Random(4);
    words[3] = kVariants[Random(std::size(kVariants))] << 12;
    words[3] |= Random(0x1000);
  }

  fake::Message RandomRequest() {
    const Kind& kind = kKinds[Random(std::size(kKinds))];
    std::vector<u32> words;
    for (const u32 end : kind.mostOf) words.push_back(Random(end));
    if (kind.id == kUnitIndication) ChooseUnit(words);
    fake::Message message{.id = kind.id, .payload = Words(words), .sender = kRequester, .receiver = kService};
    message.otherEndian = Random(8) == 0;
    if (message.otherEndian) {
      for (std::size_t i = 0; i + 4 <= message.payload.size(); i += 4) {
        std::reverse(message.payload.data() + i, message.payload.data() + i + 4);
      }
    }
    if (Random(16) == 0) message.payload.resize(Random(static_cast<u32>(message.payload.size()) + 1));
    return message;
  }

  void Step() {
    if (Random(3) == 0) {
      fake::AdvanceTime(std::uint64_t{Random(90'000'000)});
      fake::DispatchQueued();
    } else {
      const fake::Message request = RandomRequest();
      try {
        fake::Dispatch(request);
      } catch (const MsgHandlingException& refusal) {
        m_text << refusal.what() << ": " << refusal.getDescription() << "\n";
      }
    }
    if (Random(5) == 0) BlackBoxData::getInstance()->takeSnapshot();
    Record();
  }

  /// Notes what the step brought.
  void Record() {
    for (const fake::LogLine& line : fake::LogLines()) m_text << line << "\n";
    for (const fake::Message& message : fake::SentMessages()) m_text << message << "\n";
    fake::ClearLog();
    fake::ClearSentMessages();
    fake::Clear();
  }

  std::string WholeLife() {
    fake::ServeTask(kService & 0xFFFF);
    Service::Get().Init();  // the process's one: only that learns of processing units
    for (unsigned i = 0; i < kSteps; ++i) Step();
    BlackBoxData::getInstance()->createDataFiles();
    Record();
    for (const std::string& path : fake::FilePaths()) m_text << path << "\n" << *fake::FileContent(path);
    return m_text.str();
  }

 private:
  BlackBoxBoard m_board;
  std::mt19937 m_random{20240131};
  std::ostringstream m_text;
};

/// A life of a board that has slots for processing units.
class LifeWithUnitsTest : public SameBytesTest {};

TEST_P(LifeWithUnitsTest, HasUnitsOfEverySlotAndVariantThatComeAndGo) {
  if (const std::string problem = EnterPrivateRoot(); !problem.empty()) GTEST_SKIP() << problem;
  const std::string life = WholeLife();
  for (const char* unit : {"Dax1", "Dax1 DAXM", "Dax2", "Dax2 DAXM", "Dax2 DAXP", "Dax3", "Dax3 DAXM", "Dax3 DAXP"}) {
    EXPECT_NE(life.find(std::string("Debug \"") + unit + "\"\n"), std::string::npos) << unit;
  }
  for (const char* event : {"Undetermined unit_id: ", " unplugged\"", "read from sensor: DAX1_MCU",
                            "read from sensor: DAX2_VORNIK", "read from sensor: DAX3_DSP9"}) {
    EXPECT_NE(life.find(event), std::string::npos) << event;
  }
}

TEST_P(SameBytesTest, AreTheOnesOnRecord) {
  if (const std::string problem = EnterPrivateRoot(); !problem.empty()) GTEST_SKIP() << problem;
  const std::string life = WholeLife();
  EXPECT_GT(life.size(), 20'000u);
  if (HashOf(life) == GetParam().hash) return;
  const std::string file = std::string("same-bytes-") + GetParam().name + ".txt";
  std::ofstream(file, std::ios::binary) << life;
  char hash[32];
  std::snprintf(hash, sizeof hash, "0x%016" PRIX64, HashOf(life));
  ADD_FAILURE() << "the bytes have the hash " << hash << " and are in " << file
                << ": compare them with those of another machine, or of the change before";
}

const Life kKela = {.name = "Kela", .type = EUnitType_Kel, .version = EUnitVersion_Kela, .hash = 0xAF8E325D65304701};
const Life kKelf = {.name = "Kelf", .type = EUnitType_Kel, .version = EUnitVersion_Kelf, .hash = 0x90F9BE8CBAEDD6D7};
const Life kPivoa = {
    .name = "Pivoa", .type = EUnitType_Pivo, .version = EUnitVersion_Pivoa, .hash = 0x973DF35DE8089D43};
const Life kVyda = {.name = "Vyda", .type = EUnitType_Vyd, .version = EUnitVersion_Vyda, .hash = 0x6842AEDBC48514DA};
const Life kZun = {.name = "Zun", .type = EUnitType_Zun, .version = EUnitVersion_Zun, .hash = 0x0AC575F777F3E499};

INSTANTIATE_TEST_SUITE_P(Of, SameBytesTest, testing::Values(kKela, kKelf, kPivoa, kVyda, kZun),
                         [](const auto& life) { return life.param.name; });
INSTANTIATE_TEST_SUITE_P(Of, LifeWithUnitsTest, testing::Values(kKela, kKelf),
                         [](const auto& life) { return life.param.name; });

}  // namespace
}  // namespace ps::hwapi::common::climate
