/// The board file: identity, counters, software builds and the history of resets.
#include "BlackBoxData.h"
#include "BlackBoxFile.h"
#include "Log.h"
#include "UtcText.h"
#include "ddal_board.h"
#include "ddal_product.h"

#include <dirent.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <new>
#include <optional>

namespace ps::hwapi::common::climate {
namespace {

constexpr u32 kValueSize = 100;  ///< of the buffer that values are read into
static_assert(kValueSize >= DDAL_PRODUCT_DATA_SIZE);
constexpr std::size_t kLineLimit = 99;

struct CloseDir {
  void operator()(DIR* dir) const { closedir(dir); }
};

/// @return "LABEL: text", or the label alone
std::string TextLine(const char* label, bool known, const std::string& text) {
  return known ? std::string(label) + ": " + text + "\n" : std::string(label) + ":\n";
}

std::string NumberLine(const char* label, bool known, i32 value) {
  char line[kValueSize];
  if (known) {
    std::snprintf(line, kLineLimit, "%s: %d\n", label, value);
  } else {
    std::snprintf(line, kLineLimit, "%s:\n", label);
  }
  return line;
}

void LogMissing(EAaSysLogSeverityLevel level, const char* what) {
  AaSysLogPrintE(level, ERadHwapi_PrintClimateService, "BlackBoxData::createBlackboxFile(): failed to get %s", what);
}

/// @param read 1 on success
std::string UnitLine(const char* label, u32 (*read)(char*, u32), const char* what) {
  char value[kValueSize] = {};
  const bool known = read(value, kValueSize) == 1;
  value[kValueSize - 1] = '\0';
  if (!known) LogMissing(EAaSysLogSeverityLevel_Error, what);
  return TextLine(label, known, value);
}

std::string DeviceTreeLine(const char* label, int (*read)(u32, i32*), const char* what) {
  i32 value = 0;
  const bool known = read(0, &value) == 0;
  if (!known) LogMissing(EAaSysLogSeverityLevel_Error, what);
  return NumberLine(label, known, value);
}

std::string ResetCounterLine() {
  i32 count = 0;
  const bool known = ddal_boot_get_reset_loop_count(&count) == 0;
  if (!known) LogMissing(EAaSysLogSeverityLevel_Error, "reset counter from devicetree");
  return NumberLine("RESET COUNTER", known, count);
}

std::string SoftwareLine(const char* label, const std::string& build, EAaSysLogSeverityLevel level, const char* what) {
  if (build.empty()) LogMissing(level, what);
  return TextLine(label, !build.empty(), build);
}

std::string ActiveFileSystemLine() {
  u32 id = 0;
  const bool known = ddal_boot_get_linux_active(&id) == 0;
  if (!known) LogMissing(EAaSysLogSeverityLevel_Warning, "active SW filesystem");
  return TextLine("SW VERSION: active filesystem", known, id == DDAL_FFS_FS1 ? "/ffs/fs1" : "/ffs/fs2");
}

/// A text of the power supply or the filter.
struct ProductText {
  const char* label;
  u32 selector;
  const char* what;
};
using ReadProductData = int (*)(u32, void*);

constexpr ProductText kPsuTexts[] = {
    {.label = "PRODUCT CODE", .selector = DDAL_PSU_PRODUCT_CODE, .what = "PSU product code"},
    {.label = "VENDOR", .selector = DDAL_PSU_VENDOR, .what = "PSU vendor"},
    {.label = "SERIAL NUMBER", .selector = DDAL_PSU_SERIAL_NUMBER, .what = "PSU serial number"},
    {.label = "HWSWID", .selector = DDAL_PSU_HWSWID, .what = "PSU hwswid"},
};
constexpr ProductText kFilterTexts[] = {
    {.label = "PRODUCT CODE", .selector = DDAL_FILTER_PRODUCT_CODE, .what = "Filter product code"},
    {.label = "VENDOR", .selector = DDAL_FILTER_VENDOR, .what = "Filter vendor"},
    {.label = "HW VERSION", .selector = DDAL_FILTER_HW_VERSION, .what = "Filter HW version"},
    {.label = "SERIAL NUMBER", .selector = DDAL_FILTER_SERIAL_NUMBER, .what = "Filter serial number"},
};

void LogMissingProductDatum(const char* what, int result) {
  CLM_LOG(Error, "BlackBoxData::createBlackboxFile(): failed to get %s (result = %d)", what, result);
}

std::string ProductLine(const ProductText& row, ReadProductData read) {
  char value[kValueSize] = {};
  const int result = read(row.selector, value);
  value[kValueSize - 1] = '\0';
  if (result != 0) LogMissingProductDatum(row.what, result);
  return TextLine(row.label, result == 0, value);
}

std::string FilterHwswidLine() {
  // A driver may write as much as for a text.
  alignas(i32) char value[kValueSize] = {};
  const int result = ddal_filter_get_product_data(DDAL_FILTER_HWSWID, value);
  i32 number = 0;
  std::memcpy(&number, value, sizeof(number));
  if (result != 0) LogMissingProductDatum("Filter hwswid", result);
  return NumberLine("HWSWID", result == 0, number);
}

std::string ProductLines() {
  std::string text = "\nPSU DATA\n";
  for (const auto& row : kPsuTexts) text += ProductLine(row, ddal_psu_get_product_data);
  text += "\nFILTER DATA\n";
  for (const auto& row : kFilterTexts) text += ProductLine(row, ddal_filter_get_product_data);
  return text + FilterHwswidLine();
}

/// Counts a thread among those in the file calls of a board file.
class Writing {
 public:
  explicit Writing(std::atomic<u32>& writers) : m_writers(writers) { ++m_writers; }
  Writing(const Writing&) = delete;
  Writing& operator=(const Writing&) = delete;
  ~Writing() { --m_writers; }

 private:
  std::atomic<u32>& m_writers;
};

/// @return the build that a directory's descriptor names; empty when there is none
std::string BuildIn(const char* directory) {
  constexpr const char* kMark = "TargetBD";
  constexpr const char* kPrefix = "TargetBD_";
  const std::unique_ptr<DIR, CloseDir> dir(opendir(directory));
  if (dir == nullptr) return "";
  while (const dirent* const entry = readdir(dir.get())) {
    const std::string name = entry->d_name;
    if (name.find(kMark) == std::string::npos) continue;
    const std::size_t prefix = name.find(kPrefix);
    if (prefix == std::string::npos) return "";
    const std::size_t begin = prefix + std::strlen(kPrefix);
    const std::size_t end = name.find(".xml", begin);
    return name.substr(begin, end == std::string::npos ? end : end - begin);
  }
  return "";
}

}  // namespace

void BlackBoxData::getBtsSoftwareVersion(std::string& active, std::string& passive) {
  active.clear();
  passive.clear();
  u32 id = 0;
  if (ddal_boot_get_linux_active(&id) != 0) {
    CLM_LOG(Error, "GetBtsSoftwareVersion: ddal_boot_get_linux_active failed");
    return;
  }
  const bool first = id == DDAL_FFS_FS1;
  active = BuildIn(first ? "/ffs/fs1/" : "/ffs/fs2/");
  passive = BuildIn(first ? "/ffs/fs2/" : "/ffs/fs1/");
  CLM_LOG(Debug, "GetBtsSoftwareVersion: active SW build: %s", active.c_str());
  CLM_LOG(Debug, "GetBtsSoftwareVersion: passive SW build: %s", passive.c_str());
}

/// What the board file says, as far as it is asked of the platform. The history comes into it when it is written:
/// asking may take long.
struct BlackBoxData::BoardFile {
  std::string Text(const std::deque<std::string>& resets) const {
    std::string text = beforeResets;
    for (const std::string& reset : resets) text += reset;
    return text + behindResets;
  }

  std::string beforeResets;
  std::string behindResets;
  std::string products;
};

BlackBoxData::BoardFile BlackBoxData::AskForBoardFile() {
  BoardFile content;
  std::string& text = content.beforeResets;
  text = "TIMESTAMP: " + UtcText(UtcNow()) + "\n";
  text += UnitLine("PRODUCT CODE", ApiGetModuleProductionCode, "product code");
  text += UnitLine("SERIAL NUMBER", ApiGetModuleSerialNumber, "serial number");
  text += DeviceTreeLine("ISTI", ddal_devicetree_get_isti, "ISTI from devicetree");
  text += ResetCounterLine();
  text += "RESET Reason and timestamp:\n";
  std::string active, passive;
  getBtsSoftwareVersion(active, passive);
  std::string& rest = content.behindResets;
  rest = SoftwareLine("SW VERSION: active", active, EAaSysLogSeverityLevel_Error, "active SW version");
  rest += SoftwareLine("SW VERSION: passive", passive, EAaSysLogSeverityLevel_Warning, "passive SW version");
  rest += ActiveFileSystemLine();
  rest += DeviceTreeLine("ERRORS: ECC single-bit error counter", ddal_devicetree_get_ecc_single,
                         "ECC single-bit error counter from devicetree");
  rest += DeviceTreeLine("ERRORS: ECC double-bit error counter", ddal_devicetree_get_ecc_double,
                         "ECC double-bit error counter from devicetree");
  return content;
}

TAaFile* BlackBoxData::OpenBoardFile() const {
  const std::string path = PathIn(blackboxFileLocation);
  TAaFile* const file = AaFileOpen(path.c_str(), "w");
  if (file == nullptr) CLM_LOG(Error, "BlackBoxData::createBlackboxFile(): failed to create file %s", path.c_str());
  return file;
}

/// Puts a board file in place. Another thread may add a reset, and put its file in place, at any moment, also just
/// before this one.
/// @return whether the newest history is in place
bool BlackBoxData::PutInPlace(TAaFile* file, const std::deque<std::string>& resets) const {
  CLM_LOG(Debug, "BlackBoxData::createBlackboxFile(): %s file has been created", blackboxFileLocation.Read()->c_str());
  AaFileClose(file);
  return resetReasonAndTimestamp.Read()->entries == resets;
}

u32 BlackBoxData::createBlackboxFile() try {
  TAaFile* file = OpenBoardFile();
  if (file == nullptr) return 0;
  BoardFile content = AskForBoardFile();
  std::deque<std::string> resets;
  const auto write = [&] {
    resets = resetReasonAndTimestamp.Read()->entries;
    WriteText(content.Text(resets), file);
  };
  const bool hasProducts = unitType == EUnitType_Pivo;
  std::optional<Writing> writing(boardFileWriters);
  write();
  if (hasProducts) {
    writing.reset();
    content.products = ProductLines();
    writing.emplace(boardFileWriters);
    WriteText(content.products, file);
  }
  // Whoever is the last one to put a file in place writes the newest history, without asking anybody again.
  while (!PutInPlace(file, resets)) {
    file = OpenBoardFile();
    if (file == nullptr) return 0;
    write();
    if (hasProducts) WriteText(content.products, file);
  }
  return 1;
} catch (const std::bad_alloc&) {
  LogOutOfMemory("createBlackboxFile");
  return 0;
}

u32 BlackBoxData::blackBoxFileExists() const try {
  return CanBeRead(PathIn(blackboxFileLocation)) ? 1 : 0;
} catch (const std::bad_alloc&) {
  LogOutOfMemory("blackBoxFileExists");
  return 0;
}

}  // namespace ps::hwapi::common::climate
