#include "ProcessingUnitBoard.h"

#include <algorithm>
#include <optional>
#include <sstream>
#include <utility>

namespace boardtest {
namespace {

namespace fs = std::filesystem;

std::size_t Occurrences(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

Names NamesIn(const std::vector<nlohmann::json>& objects) {
  Names names;
  for (const nlohmann::json& object : objects) {
    if (!object["sensor"].is_null()) names.push_back(object["sensor"]);
  }
  return names;
}

}  // namespace

Names UnitNames(unsigned slot, const std::string& variant) {
  const std::string unit = "DAX" + std::to_string(slot);
  Names names = {unit + "_MCU"};
  const int processors = variant == "m" ? 9 : 6;
  for (int dsp = 1; dsp <= processors; ++dsp) names.push_back(unit + "_DSP" + std::to_string(dsp));
  // There is no p-variant for the first slot.
  if (variant == "m" || (variant == "p" && slot != 1)) names.push_back(unit + "_VORNIK");
  return names;
}

Names operator+(Names names, const Names& more) {
  names.insert(names.end(), more.begin(), more.end());
  return names;
}

std::vector<nlohmann::json> UnitWatch::Next() {
  std::vector<nlohmann::json> objects = std::exchange(m_begun, {});
  // An indication is whole once the next one begins.
  while (const std::optional<std::string> line = m_watch->NextLine()) {
    nlohmann::json object = nlohmann::json::parse(*line);
    if (!objects.empty() && object["indication"] != objects[0]["indication"]) {
      m_begun.push_back(std::move(object));
      return objects;
    }
    objects.push_back(std::move(object));
  }
  return {};
}

bool UnitWatch::Shows(const Names& names) {
  const auto deadline = std::chrono::steady_clock::now() + kDeadline;
  while (std::chrono::steady_clock::now() < deadline) {
    const std::vector<nlohmann::json> objects = Next();
    if (objects.empty()) return false;
    if (NamesIn(objects) == names) return true;
  }
  return false;
}

std::string UnitWatch::Newest() const {
  const std::string& out = m_watch->SoFar().out;
  return "..." + out.substr(out.size() - std::min<std::size_t>(out.size(), 2000)) + m_watch->SoFar().err;
}

void ProcessingUnitBoardTest::UpWithClient(unsigned clockSpeed) {
  std::string text = "[clock]\nspeed = " + std::to_string(clockSpeed) + "\n[rad]\n\"0x200B5\" = 1\n";
  text += FileText(fs::path(BOARDS_FOLDER) / "kela.toml");
  UpWith(Write("kela.toml", text));
  ASSERT_TRUE(Eventually([this] { return Registrations() != 0; }));
}

std::size_t ProcessingUnitBoardTest::Registrations() const {
  return Occurrences(FileText(StateFolder() + "/boardsim.log"), "autodetection service: request of");
}

void ProcessingUnitBoardTest::Plug(const std::string& slot, const std::string& variant,
                                   const std::string& state) const {
  const Result plug = Boardsim({"plug", slot, variant, state});
  ASSERT_EQ(plug.status, 0) << plug.err;
}

bool ProcessingUnitBoardTest::PlugEverywhere(const std::string& variant, const std::string& state) const {
  std::vector<std::unique_ptr<Program>> plugs;
  for (const char* slot : {"1", "2", "3"}) plugs.push_back(StartBoardsim({"plug", slot, variant, state}));
  return std::all_of(plugs.begin(), plugs.end(), [](const auto& plug) { return plug->Wait().status == 0; });
}

void ProcessingUnitBoardTest::Unplug(const std::string& slot) const {
  const Result unplug = Boardsim({"unplug", slot});
  ASSERT_EQ(unplug.status, 0) << unplug.err;
}

void ProcessingUnitBoardTest::GoOffline() const {
  const Result offline = Boardsim({"autodet", "offline"});
  ASSERT_EQ(offline.status, 0) << offline.err;
}

void ProcessingUnitBoardTest::GoOnline() const {
  const std::size_t before = Registrations();
  const Result online = Boardsim({"autodet", "online"});
  ASSERT_EQ(online.status, 0) << online.err;
  ASSERT_TRUE(Eventually([&] { return Registrations() > before; }));
}

UnitWatch ProcessingUnitBoardTest::Watch(const std::string& type) const {
  return UnitWatch(StartClmctl({"temp", "watch", type, "--json"}));
}

Names ProcessingUnitBoardTest::Measured(const std::string& type) const {
  const Result watch = Clmctl({"temp", "watch", type, "--count", "1", "--json"});
  EXPECT_EQ(watch.status, 0) << watch.err;
  return NamesIn(JsonLines(watch.out));
}

std::set<std::string> ProcessingUnitBoardTest::Columns() const {
  const Result store = Clmctl({"blackbox", "store", "--timeout", "20s"});
  EXPECT_EQ(store.status, 0) << store.err;
  std::istringstream file(FileText(StateFolder() + "/ffs/fs1/config/lifedata/blackbox_temperature"));
  std::string line;
  for (int number = 1; number <= 7; ++number) std::getline(file, line);
  std::istringstream columns(line.substr(std::min(line.find('\t'), line.size())));
  std::set<std::string> names;
  for (std::string name; columns >> name;) names.insert(name);
  return names;
}

std::set<std::string> ProcessingUnitBoardTest::BoardColumnsAnd(const Names& names) {
  std::set<std::string> columns = {"GAR_FAN1", "GAR_FAN2", "KEL",        "KEL_ENV", "KEL_INTAKE",
                                   "KEL_MCU",  "KEL_OCXO", "KEL_VORNIK", "TOV",     "TOV_MCU"};
  columns.insert(names.begin(), names.end());
  return columns;
}

bool ProcessingUnitBoardTest::ColumnsBecome(const Names& names) const {
  return Eventually([&] { return Columns() == BoardColumnsAnd(names); });
}

}  // namespace boardtest
