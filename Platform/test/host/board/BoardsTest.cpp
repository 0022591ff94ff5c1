// The descriptions in Board/boards.
#include "BoardDescription.h"
#include "TestBoard.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <set>
#include <sstream>
#include <string>

using namespace hwapi::board;

namespace {

using Devices = std::set<u32>;

Devices Range(u32 first, u32 last) {
  Devices devices;
  for (u32 device = first; device <= last; ++device) devices.insert(device);
  return devices;
}

Devices Union(std::initializer_list<Devices> parts) {
  Devices all;
  for (const Devices& part : parts) all.insert(part.begin(), part.end());
  return all;
}

// The three slots with the largest processing unit.
const Devices kSlots = Union({Range(0x20000, 0x2000A), Range(0x30000, 0x3000A), Range(0x40000, 0x4000A)});
const Devices kTransport = {0x50000, 0x50001};
const Devices kControlBoard = Union({Range(0x10000, 0x10005), kTransport, kSlots});
const Devices kThreeRfParts = Union({Range(0x60000, 0x60006), Range(0x60010, 0x60011), Range(0x60022, 0x60025),
                                     Range(0x60032, 0x60035), Range(0x60042, 0x60045)});
const Devices kTwoRfParts = Union({Range(0x70000, 0x70003),
                                   {0x70005},
                                   Range(0x70010, 0x70012),
                                   Range(0x70021, 0x70023),
                                   {0x70025},
                                   Range(0x70031, 0x70033),
                                   {0x70035},
                                   Range(0x70040, 0x70041)});

struct Board {
  const char* file;
  EUnitType type;
  EUnitVersion version;
  const Devices& sensors;
  std::size_t fans;
};

void PrintTo(const Board& board, std::ostream* out) { *out << board.file; }

const Devices kKele = Union({Range(0x10000, 0x10005), {0x80006}, kSlots});
const Devices kKelf = Union({Range(0x10000, 0x10004), kTransport, kSlots});
const Devices kNone = {};
const Devices kZun = {0x10007};

const Board kBoards[] = {
    {"dev", EUnitType_Kel, EUnitVersion_Kela, kControlBoard, 2},
    {"kela", EUnitType_Kel, EUnitVersion_Kela, kControlBoard, 2},
    {"kelb", EUnitType_Kel, EUnitVersion_Kelb, kControlBoard, 2},
    {"kelbn", EUnitType_Kel, EUnitVersion_Kelbn, kNone, 2},
    {"kelc", EUnitType_Kel, EUnitVersion_Kelc, kControlBoard, 3},
    {"keld", EUnitType_Kel, EUnitVersion_Keld, kControlBoard, 2},
    {"kele", EUnitType_Kel, EUnitVersion_Kele, kKele, 0},
    {"kelf", EUnitType_Kel, EUnitVersion_Kelf, kKelf, 3},
    {"kelg", EUnitType_Kel, EUnitVersion_Kelg, kControlBoard, 2},
    {"kelh", EUnitType_Kel, EUnitVersion_Kelh, kControlBoard, 0},
    {"pivoa", EUnitType_Pivo, EUnitVersion_Pivoa, kTwoRfParts, 2},
    {"pivob", EUnitType_Pivo, EUnitVersion_Pivob, kTwoRfParts, 0},
    {"pivoc", EUnitType_Pivo, EUnitVersion_Pivoc, kTwoRfParts, 2},
    {"pivod", EUnitType_Pivo, EUnitVersion_Pivod, kTwoRfParts, 2},
    {"vyda", EUnitType_Vyd, EUnitVersion_Vyda, kThreeRfParts, 3},
    {"vydj", EUnitType_Vyd, EUnitVersion_Vydj, kThreeRfParts, 3},
    {"vyea", EUnitType_Vyd, EUnitVersion_Vyea, kThreeRfParts, 3},
    {"vyga", EUnitType_Vyg, EUnitVersion_Vyga, kTwoRfParts, 2},
    {"zun", EUnitType_Zun, EUnitVersion_Zun, kZun, 0},
};

BoardDescription LoadBoard(const std::string& file) { return Load(std::string(BOARDS_FOLDER) + '/' + file + ".toml"); }

class BoardsTest : public testing::TestWithParam<Board> {};

TEST_P(BoardsTest, HasTheUnitOfItsName) {
  const Unit unit = LoadBoard(GetParam().file).unit;
  EXPECT_EQ(unit.type, GetParam().type);
  EXPECT_EQ(unit.version, GetParam().version);
  EXPECT_FALSE(unit.serialNumber.empty());
}

TEST_P(BoardsTest, HasExactlyTheSensorsOfItsVersion) {
  Devices devices;
  for (const Temperature& sensor : LoadBoard(GetParam().file).temperatures) devices.insert(sensor.device);
  EXPECT_EQ(devices, GetParam().sensors);
}

TEST_P(BoardsTest, HasTheFansOfItsVersion) { EXPECT_EQ(LoadBoard(GetParam().file).fans.size(), GetParam().fans); }

TEST_P(BoardsTest, TellsWhereTheBlackBoxFilesAre) { EXPECT_EQ(LoadBoard(GetParam().file).tags.size(), 7u); }

INSTANTIATE_TEST_SUITE_P(Board, BoardsTest, testing::ValuesIn(kBoards),
                         [](const auto& tested) { return std::string(tested.param.file); });

TEST(Boards, EveryDescriptionInTheFolderLoads) {
  std::size_t loaded = 0;
  for (const auto& entry : std::filesystem::directory_iterator(BOARDS_FOLDER)) {
    if (entry.path().extension() != ".toml") continue;
    EXPECT_NO_THROW(Load(entry.path())) << entry.path();
    ++loaded;
  }
  EXPECT_GT(loaded, std::size(kBoards));
}

TEST(Boards, ALinuxBoxStartsWithoutAnyOfItsSensors) {
  const auto sensors = LoadBoard("linux-box").temperatures;
  EXPECT_FALSE(sensors.empty());
  for (const Temperature& sensor : sensors) EXPECT_TRUE(sensor.optional) << sensor.device;
}

/// @return the unit versions that a description may name, as the refusal of another one tells them
std::set<std::string> VersionsOfDescriptions() {
  const TestBoard board;
  board.Describe("[unit]\nversion = \"none of them\"\n");
  std::string text;
  try {
    Load(board.Description());
  } catch (const std::exception& refusal) {
    text = refusal.what();
  }
  text = text.substr(text.find("Allowed:") + 8);
  std::ranges::replace(text, ',', ' ');
  std::istringstream names(text.substr(0, text.find('\n')));
  return {std::istream_iterator<std::string>(names), {}};
}

TEST(Boards, EveryVersionThatADescriptionMayNameHasOne) {
  std::set<std::string> named = VersionsOfDescriptions();
  EXPECT_EQ(named.erase("Unallocated"), 1u) << "that one is no board";
  std::set<std::string> described;
  for (const Board& board : kBoards) {
    std::string name = board.file;
    name.front() = static_cast<char>(name.front() - 'a' + 'A');
    if (name != "Dev") described.insert(name);
  }
  EXPECT_EQ(named, described);
}

}  // namespace
