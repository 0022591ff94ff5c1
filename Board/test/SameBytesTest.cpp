/// Every machine gives the same bytes: what a whole board of real processes answers and writes in a seeded life is
/// compared with what is on record here. All presets have the same record, that of the 32-bit processor included.
#include "ByteRecord.h"
#include "StandingClockBoard.h"
#include "Wire.h"

#include <algorithm>
#include <iterator>

namespace boardtest {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kSeed = 20240131;
constexpr unsigned kRounds = 3;     ///< of a life, a minute each
constexpr unsigned kRequests = 14;  ///< of a round

constexpr unsigned kMeasure = 0x2B29;
constexpr unsigned kReadOnce = 0x203F;
constexpr unsigned kFanSpeed = 0x2C15;
constexpr unsigned kFanSpeed2 = 0x2CF1;
constexpr std::uint32_t kStart = 0;
constexpr std::uint32_t kStop = 1;

/// Types of sensors that the board has: its own, the slots one by one and together.
constexpr std::uint32_t kTypes[] = {1, 2, 3, 4, 6, 7, 8};
constexpr const char* kDevices[] = {"0x10000", "0x10001", "0x10002", "0x10003",
                                    "0x10004", "0x10005", "0x50000", "0x50001"};
constexpr const char* kVariants[] = {"basic", "m", "p"};

const Hashes kOnRecord = {
    {"blackbox-replies", 0xD2ED395B8F4F8FBC},    {"board-files", 0x59E74798065BFC6B},
    {"configuration-files", 0xEECD4E7128DA3422}, {"fan-replies", 0x7B1EB2C3524813E3},
    {"fan-speeds", 0x4A86826F7110C62F},          {"other-files", 0x577C2BE7F9FC85F2},
    {"stored-files", 0x55349061BC406510},        {"techlog", 0x3801995D1832DCE7},
    {"temperature-replies", 0x1C6FFBB239491E40}, {"temperatures", 0x76712D71C93353E6},
    {"trace-files", 0x8123AA368E2EB4B6},
};

class SameBytesTest : public StandingClockBoard {
 protected:
  /// A life of the daemon, from its start to the reset of the board.
  void Live() {
    ASSERT_NO_FATAL_FAILURE(Begin());
    for (unsigned i = 0; i < kRounds; ++i) ASSERT_NO_FATAL_FAILURE(LiveARound());
  }

  void EndWith(const std::vector<std::string>& reset) {
    m_record.Add("blackbox-replies", Send(m_seeded.Announcement()));
    ASSERT_NO_FATAL_FAILURE(ResetAndAwaitHistory(reset));
  }

  void RecordFiles() {
    const std::string techlog = Folder() / "techlog";
    const Result collect = Clmctl({"techlog", "collect", techlog, "--timeout", "30s"});
    EXPECT_EQ(collect.status, 0) << collect.out << collect.err;
    RecordFolder(techlog, [](const std::string&) { return "techlog"; });
    RecordFolder(StateFolder() + "/rom", [](const std::string&) { return "other-files"; });
    RecordFolder(StateFolder() + "/ffs", [](const std::string& path) {
      const std::string name = fs::path(path).filename();
      if (name == "blackbox") return "board-files";
      if (name == "blackbox_temperature") return "trace-files";
      if (name == "blackbox_config") return "configuration-files";
      return std::any_of(name.begin(), name.end(), isdigit) && name.starts_with("blackbox_") ? "stored-files"
                                                                                             : "other-files";
    });
  }

  SeededRequests m_seeded{kSeed};
  ByteRecord m_record;

 private:
  void Begin() {
    for (unsigned fan = 0; fan < 2; ++fan) ASSERT_NO_FATAL_FAILURE(SetFan(fan, "rpm=" + std::to_string(3000 + fan)));
    m_record.Add("fan-replies", Send({.to = "fan", .id = kFanSpeed, .hex = Words({0, 0, 1, 201, 50})}));
    ASSERT_NO_FATAL_FAILURE(BeginTrace());
    ASSERT_NO_FATAL_FAILURE(ReadFans());
    ASSERT_NO_FATAL_FAILURE(AwaitUnits());
  }

  void LiveARound() {
    ASSERT_NO_FATAL_FAILURE(SetHardware());
    ASSERT_NO_FATAL_FAILURE(ReadFans());
    for (const std::uint32_t type : kTypes) {
      m_record.Add("temperatures", Send({.to = "temperature", .id = kReadOnce, .hex = Words({type})}));
    }
    for (unsigned i = 0; i < kRequests; ++i) SendSeeded();
    ASSERT_NO_FATAL_FAILURE(Measure(kTypes[m_seeded.Below(std::size(kTypes))]));
    ASSERT_NO_FATAL_FAILURE(PassToNextRow());
    ASSERT_NO_FATAL_FAILURE(ChangeUnit());
  }

  void SendSeeded() {
    const Request request = m_seeded.Next();
    const std::string exchange = Send(request);
    m_record.Add(request.to + "-replies", exchange);
    // A measurement that was begun by chance ends: what it reads later would be no one's.
    for (const std::uint32_t type : kTypes) {
      if (request.id == kMeasure && exchange.find(Words({kStart, type, 0})) != std::string::npos) Stop(type);
    }
  }

  void Stop(std::uint32_t type) {
    m_record.Add("temperature-replies",
                 Send({.to = "temperature", .id = kMeasure, .hex = Words({kStop, type, 0, 0, 0})}));
  }

  void Measure(std::uint32_t type) {
    const unsigned seconds = 1 + m_seeded.Below(3);
    const Request start{.to = "temperature", .id = kMeasure, .hex = Words({kStart, type, seconds * 1000, 0, 0})};
    m_record.Add("temperatures", SendForIndications(start, 3, seconds, seconds));
    Stop(type);
  }

  /// Sets fan speeds and takes the first report, so that the black box has the fans' present speeds.
  void ReadFans() {
    constexpr unsigned kFirstPeriod = 20;  // seconds, of requests that name none
    const unsigned period = 8 + m_seeded.Below(12);
    const bool second = m_seeded.Below(2) == 0;
    const std::uint32_t speed = 30 + m_seeded.Below(71);
    Request request{.to = "fan", .id = kFanSpeed, .hex = Words({period, 0, 1, 201, speed})};
    if (second) request = {.to = "fan", .id = kFanSpeed2, .hex = Words({speed, 0, period, 2, 201, speed, 202, 100})};
    m_record.Add("fan-speeds", SendForIndications(request, 1, second ? period : kFirstPeriod, 0));
  }

  void SetHardware() {
    for (unsigned i = 0; i < 3; ++i) {
      std::string value = "fail=-" + std::to_string(1 + m_seeded.Below(9));
      if (m_seeded.Below(4) != 0) value = std::to_string(static_cast<int>(m_seeded.Below(1600)) - 400);
      if (!value.starts_with("fail")) value.insert(value.size() - 1, value.size() > 1 ? "." : "");
      const Result set = Boardsim({"temp", kDevices[m_seeded.Below(std::size(kDevices))], value});
      ASSERT_EQ(set.status, 0) << value << set.err;
    }
    const unsigned fan = m_seeded.Below(2);
    static const char* const kFailures[] = {"fail-read=", "fail-write=", "fail="};
    const std::string failure = kFailures[m_seeded.Below(std::size(kFailures))];
    ASSERT_NO_FATAL_FAILURE(
        SetFan(fan, m_seeded.Below(2) == 0 ? "auto" : failure + "-" + std::to_string(1 + m_seeded.Below(9))));
    ASSERT_NO_FATAL_FAILURE(SetFan(fan, "rpm=" + std::to_string(m_seeded.Below(9000))));
  }

  void SetFan(unsigned fan, const std::string& value) {
    const Result set = Boardsim({"fan", std::to_string(fan), value});
    ASSERT_EQ(set.status, 0) << value << set.err;
  }

  void ChangeUnit() {
    const unsigned slot = 1 + m_seeded.Below(3);
    if (m_units.contains(slot)) {
      Unplug(std::to_string(slot));
      m_units.erase(slot);
    } else {
      const std::string variant = kVariants[m_seeded.Below(std::size(kVariants))];
      Plug(std::to_string(slot), variant);
      m_units[slot] = UnitNames(slot, variant);
    }
    ASSERT_NO_FATAL_FAILURE(AwaitUnits());
  }

  /// The service hears of units when it gets to it; what it then measures is in the trace's head.
  void AwaitUnits() {
    Names names;
    for (const auto& [slot, unit] : m_units) names = names + unit;
    ASSERT_TRUE(ColumnsBecome(names));
  }

  void RecordFolder(const fs::path& folder, const std::function<std::string(const std::string&)>& kindOf) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file() && !entry.is_symlink()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
      const std::string name = file.lexically_relative(folder);
      m_record.Add(kindOf(name), "== " + name + "\n" + FileText(file));
    }
  }

  std::map<unsigned, Names> m_units;  ///< sensors of the units, by slot
};

TEST_F(SameBytesTest, AreTheOnesOnRecord) {
  ASSERT_NO_FATAL_FAILURE(UpStandingStill());
  ASSERT_NO_FATAL_FAILURE(Live());
  ASSERT_NO_FATAL_FAILURE(EndWith({"0"}));
  ASSERT_NO_FATAL_FAILURE(Live());
  ASSERT_NO_FATAL_FAILURE(EndWith({"2", "--counter", "6"}));
  ASSERT_NO_FATAL_FAILURE(Live());
  RecordFiles();
  if (HasFailure()) return;
  m_record.ExpectOnRecord(kOnRecord);
}

}  // namespace
}  // namespace boardtest
