/// Every unit version as a board, asked everything that it can be asked.
#include "BlackBoxBoard.h"
#include "UnitVersions.h"

#include <array>
#include <set>

namespace boardtest {

void PrintTo(const UnitVersion& version, std::ostream* out) { *out << version.board; }

namespace {

constexpr std::array kTypes = {"Dax1", "Dax2", "Dax3", "DaxAll", "Borz", "Kel",        "KelOcxo", "Tov",
                               "RFP1", "RFP2", "RFP3", "Filter", "Psu",  "KelOcxoDcm", "Mipo1",   "0"};
constexpr int kServed = 0;
constexpr int kRefused = 1;
constexpr int kUnanswered = 3;
/// Requests that have no handler are not answered at all.
constexpr const char* kNoAnswerTime = "1s";
constexpr const char* kAnswerTime = "20s";

class UnitVersionTest : public BlackBoxBoard, public testing::WithParamInterface<UnitVersion> {
 protected:
  void SetUp() override {
    const std::string file = std::string(BOARDS_FOLDER) + "/" + GetParam().board + ".toml";
    UpWith(Write("board.toml", "[clock]\nspeed = " + std::to_string(kClockSpeed) + "\n" + FileText(file)));
  }

  void AskForTemperatures(const std::string& type) {
    const Result watch = Clmctl({"temp", "watch", type, "--count", "1", "--json", "--timeout", kAnswerTime});
    const auto sensors = GetParam().sensors->find(type);
    const bool isThere = sensors != GetParam().sensors->end();
    EXPECT_EQ(watch.status, isThere ? kServed : kRefused) << type << ": " << watch.err;
    if (!isThere) return;
    const auto lines = JsonLines(watch.out);
    if (sensors->second.empty()) {
      EXPECT_EQ(lines.at(0)["state"], "no sensors") << type;
      return;
    }
    ASSERT_EQ(lines.size(), sensors->second.size()) << type << "\n" << watch.out;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      EXPECT_EQ(lines[i]["sensor_number"], sensors->second[i].number) << type;
      EXPECT_TRUE(lines[i]["temperature_celsius"].is_number()) << lines[i];
    }
  }

  /// @return how a request about fan number @p fan, counted from 0, is answered
  int ExpectedForFan(unsigned fan) const {
    if (GetParam().fans == 0) return kUnanswered;
    return fan < GetParam().fans ? kServed : kRefused;
  }
  void AskFans() {
    const char* const patience = GetParam().fans == 0 ? kNoAnswerTime : kAnswerTime;
    for (unsigned fan = 0; fan < (GetParam().fans == 0 ? 1 : 3); ++fan) {
      const std::string name = std::to_string(201 + fan);
      EXPECT_EQ(Clmctl({"fan", "freq", name + "=5kHz", "--timeout", patience}).status, ExpectedForFan(fan)) << name;
      EXPECT_EQ(Clmctl({"fan", "speed", name + "=70", "--timeout", patience}).status, ExpectedForFan(fan)) << name;
    }
    if (GetParam().fans == 0) return;
    const Result watch = Clmctl({"fan", "watch", "--count", "1", "--json", "--timeout", kAnswerTime});
    EXPECT_EQ(watch.status, kServed) << watch.err;
    EXPECT_EQ(JsonLines(watch.out).size(), GetParam().fans) << watch.out;
  }

  void AskBlackBox() {
    const int expected = GetParam().hasBlackBox ? kServed : kUnanswered;
    const char* const patience = GetParam().hasBlackBox ? kAnswerTime : kNoAnswerTime;
    EXPECT_EQ(Clmctl({"reset", "WarmReset", "--category", "User", "--timeout", patience}).status, expected);
    EXPECT_EQ(Clmctl({"blackbox", "reset-info", "--timeout", patience}).status, expected);
    EXPECT_EQ(Clmctl({"blackbox", "store", "--timeout", patience}).status, expected);
    // A file can be kept on every board.
    EXPECT_EQ(Clmctl({"blackbox", "store-file", "/ffs/run/logs/alarms", "--timeout", kAnswerTime}).status, kServed);
    EXPECT_EQ(Clmctl({"blackbox", "show", "board"}).status, GetParam().hasBlackBox ? kServed : kRefused);
    if (GetParam().hasBlackBox) ExpectColumns();
  }
  /// The black box knows every sensor by name.
  void ExpectColumns() const {
    const std::string trace = FileText(Lifedata("blackbox_temperature"));
    for (const auto& [type, sensors] : *GetParam().sensors) {
      for (const NamedSensor& sensor : sensors) {
        EXPECT_NE(trace.find("\t" + sensor.name + "\t"), std::string::npos) << sensor.name << "\n" << trace;
      }
    }
  }
};

TEST_P(UnitVersionTest, AnswersEverythingItCanBeAsked) {
  for (const char* type : kTypes) AskForTemperatures(type);
  AskFans();
  AskBlackBox();
}

INSTANTIATE_TEST_SUITE_P(On, UnitVersionTest, testing::ValuesIn(kUnitVersions),
                         [](const auto& version) { return std::string(version.param.board); });

TEST(UnitVersions, AreAllThatHaveABoardDescription) {
  std::set<std::string> known = {"arm-board", "dev", "linux-box"};
  for (const UnitVersion& version : kUnitVersions) known.insert(version.board);
  std::set<std::string> described;
  for (const std::string& file : BoardFiles()) described.insert(std::filesystem::path(file).stem());
  EXPECT_EQ(known, described);
}

}  // namespace
}  // namespace boardtest
