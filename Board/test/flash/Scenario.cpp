#include "Scenario.h"

#include "Life.h"

#include <iterator>
#include <optional>
#include <ostream>

namespace flash {
namespace {

using ps::hwapi::common::climate::BlackBoxData;

const std::string kLifedata = "/ffs/fs1/config/lifedata";
const std::string kStandby = "/ffs/fs2/config/lifedata";

constexpr const char* kConfiguration =
    "# temperature log for blackbox\ntemp=/ffs/run/config/lifedata/blackbox_temperature\n"
    "# alarm log for blackbox\nalarm=/ffs/run/config/lifedata/blackbox_alarms\n"
    "# sfp log for blackbox\nsfp=/ffs/run/config/lifedata/blackbox_sfp\n"
    "# blackbox data file\nblackbox=/ffs/run/config/lifedata/blackbox\n";
constexpr const char* kSensors[] = {"Kel",      "Kel_Env",    "Kel_Intake", "Kel_Mcu",
                                    "Kel_Ocxo", "Kel_Vornik", "Tov",        "Tov_Mcu"};

void PutFolder(Tree& flash, const std::string& path) { flash[path] = {.isFolder = true, .mode = 0755}; }

void Put(Tree& flash, const std::string& path, const std::string& content, mode_t mode = 0644) {
  flash[path] = {.mode = mode, .content = content};
}

std::string Lines(const std::string& line, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += line + " " + std::to_string(i) + "\n";
  return text;
}

/// The flash of a board that has been running for a while; each file has a mode of its own.
Tree UsedFlash() {
  Tree flash;
  for (const char* folder : {"/ffs/fs1", "/ffs/fs1/config", "/ffs/fs1/logs", "/ffs/fs2", "/ffs/fs2/config"}) {
    PutFolder(flash, folder);
  }
  PutFolder(flash, kLifedata);
  PutFolder(flash, kStandby);
  Put(flash, kLifedata + "/blackbox_config", kConfiguration, 0640);
  Put(flash, kLifedata + "/blackbox",
      "TIMESTAMP: old\nRESET Reason and timestamp:\n" + Lines("2026-03-01T00:00:00.000Z old reset", 15) +
          "SW VERSION: active:\n",
      0600);
  Put(flash, kLifedata + "/blackbox_temperature",
      "#MINMAX: old\n\n#TEMPANDSPEED: old\n#\tKel\n" +
          Lines("2026-03-14T15:00:00.000Z\t40125\t41250\t38875\t46125\t68000\t43500\t46375\t40625\t4200\t-\t-\t-\t-\t-"
                "\t-\t-\t-",
                175));
  Put(flash, kLifedata + "/blackbox_alarms", Lines("old alarm", 10));
  Put(flash, kLifedata + "/blackbox_sfp", Lines("old module", 10));
  Put(flash, kStandby + "/blackbox", "of an earlier day\n");
  Put(flash, "/ffs/fs1/logs/alarms", Lines("alarm", 30));
  Put(flash, "/ffs/fs1/logs/sfp", Lines("module", 30));
  return flash;
}

void RemoveFolders(Tree& flash) {
  std::erase_if(flash, [](const auto& entry) { return entry.first.starts_with("/ffs/fs1/config"); });
}

void RemoveConfiguration(Tree& flash) { flash.erase(kLifedata + "/blackbox_config"); }

void ChangeConfiguration(Tree& flash) {
  Put(flash, kLifedata + "/blackbox_config", "# of an earlier software\ntemp=/elsewhere\n", 0640);
}

void MoveToOldPlace(Tree& flash) {
  Put(flash, "/ffs/fs1/logs/blackbox_alarms", Lines("alarm of an earlier software", 12));
  Put(flash, "/ffs/fs1/logs/blackbox_temperature", Lines("temperature of an earlier software", 12));
}

void PutStoredCopies(Tree& flash) {
  for (const char* day : {"01", "02", "03"}) {
    Put(flash, kLifedata + "/blackbox_202601" + day + "120000_report", Lines(std::string("report of day ") + day, 8));
  }
}

void RecordReadings(BlackBoxData& blackBox) {
  for (const char* sensor : kSensors) blackBox.addSensor(sensor);
  blackBox.addFan("Fan_1");
  blackBox.enableTemperatureTrace();
  int temperature = 40000;
  for (const char* sensor : kSensors) blackBox.addTemperature(sensor, temperature += 125);
  blackBox.addFanSpeed("Fan_1", 4200);
  blackBox.takeSnapshot();
}

void WriteBoardFile(BlackBoxData& blackBox) { blackBox.createBlackboxFile(); }

void WriteTrace(BlackBoxData& blackBox) { blackBox.writeTempAndSpeedDataToFile(); }

void CopyLogs(BlackBoxData& blackBox) {
  blackBox.copyAlarmsFile();
  blackBox.copySfpFile();
}

void WriteAll(BlackBoxData& blackBox) { blackBox.createDataFiles(); }

void StoreFile(BlackBoxData& blackBox) { blackBox.copyFile(2, "/ffs/run/logs/alarms", "report"); }

void CopyToStandby(BlackBoxData& blackBox) { blackBox.CopyFileToNonRunningFS(); }

void Nothing(Tree&) {}

}  // namespace

const Scenario kScenarios[] = {
    {.name = "first_start", .prepare = RemoveFolders, .use = nullptr, .change = nullptr},
    {.name = "first_configuration_file", .prepare = RemoveConfiguration, .use = nullptr, .change = nullptr},
    {.name = "configuration_file", .prepare = ChangeConfiguration, .use = nullptr, .change = nullptr},
    {.name = "files_of_earlier_software",
     .prepare = MoveToOldPlace,
     .use = nullptr,
     .change = nullptr,
     .mostBlocks = 48},
    {.name = "board_file", .prepare = Nothing, .use = nullptr, .change = WriteBoardFile},
    {.name = "trace", .prepare = Nothing, .use = RecordReadings, .change = WriteTrace, .mostBlocks = 48},
    {.name = "log_copies", .prepare = Nothing, .use = nullptr, .change = CopyLogs},
    {.name = "all_data_files", .prepare = Nothing, .use = RecordReadings, .change = WriteAll, .mostBlocks = 24},
    {.name = "stored_file", .prepare = PutStoredCopies, .use = nullptr, .change = StoreFile},
    {.name = "standby_file_system",
     .prepare = Nothing,
     .use = nullptr,
     .change = CopyToStandby,
     .cleanedByChange = true},
};
const std::size_t kNumberOfScenarios = std::size(kScenarios);

Tree LayOut(const Scenario& scenario) {
  Tree flash = UsedFlash();
  scenario.prepare(flash);
  LayOutFlash(flash);
  return ReadFlash();
}

std::string StartAndChange(const Scenario& scenario, FileCallObserver* observer) {
  std::optional<Observation> observation;
  if (scenario.IsMadeByStart() && observer != nullptr) observation.emplace(*observer);
  if (!StartBlackBox()) return "the black box cannot be taken into use";
  if (scenario.IsMadeByStart()) return "";
  if (scenario.use != nullptr) scenario.use(*BlackBoxData::getInstance());
  if (observer != nullptr) observation.emplace(*observer);
  scenario.change(*BlackBoxData::getInstance());
  return "";
}

void PrintTo(const Scenario& scenario, std::ostream* out) { *out << scenario.name; }

}  // namespace flash
