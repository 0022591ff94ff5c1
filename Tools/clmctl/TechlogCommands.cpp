/// @file
/// clmctl techlog: collecting the files that travel with the technical log.
#include "AaTrbl.h"
#include "Client.h"
#include "CommandError.h"
#include "Commands.h"
#include "Output.h"
#include "TechlogFolder.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace clmctl {
namespace {

/// What became of a file of the board.
struct Row {
  std::optional<std::string> name;  ///< none: the process as a whole
  u32 process = 0;
  std::optional<long long> sizeBytes;  ///< none: it was not copied
  std::string result;                  ///< a constant word
  std::string problem;                 ///< "" when it was copied
};

struct Meaning {
  EAaTrblCollect result;
  const char* word;
  const char* text;
};

constexpr Meaning kMeanings[] = {
    {.result = EAaTrblCollect_NotReady, .word = "not_ready", .text = "its process says that it is not ready"},
    {.result = EAaTrblCollect_Failed, .word = "failed", .text = "its process could not prepare it"},
    {.result = EAaTrblCollect_NoFile, .word = "no_file", .text = "it cannot be opened"},
    {.result = EAaTrblCollect_Withdrawn, .word = "withdrawn", .text = "its process has withdrawn it meanwhile"},
    {.result = EAaTrblCollect_Gone, .word = "gone", .text = "its process ended meanwhile"},
    {.result = EAaTrblCollect_NoAnswer,
     .word = "no_answer",
     .text = "its process does not answer in time; --timeout says how long to wait"},
    {.result = EAaTrblCollect_Refused,
     .word = "refused",
     .text = "its process refuses this user; access.send of the board description names who may collect"},
};

void Explain(Row& row, const SAaTrblFile& file) {
  for (const Meaning& meaning : kMeanings) {
    if (meaning.result != file.result) continue;
    row.result = meaning.word;
    row.problem = meaning.text;
  }
  if (file.error != 0) row.problem += std::string(": ") + std::strerror(file.error);
}

/// Stores what is handed to it and keeps a row for each file.
class Collector {
 public:
  explicit Collector(const TechlogFolder& folder) : m_folder(folder) {}

  static TBoolean Visit(const SAaTrblFile* file, void* collector) {
    return static_cast<Collector*>(collector)->Take(*file) ? GLO_TRUE : GLO_FALSE;
  }
  const std::vector<Row>& Rows() const { return m_rows; }

 private:
  bool Take(const SAaTrblFile& file) {
    Row& row = m_rows.emplace_back();
    if (file.name != nullptr) row.name = file.name;
    row.process = file.process;
    if (file.result != EAaTrblCollect_Ok) {
      Explain(row, file);
      return false;
    }
    const bool firstOfItsName = m_names.insert(*row.name).second;
    const Stored stored = firstOfItsName
                              ? m_folder.Store(*row.name, file.content)
                              : Stored{.problem = "another process has a file of this name, which was copied"};
    row.problem = stored.problem;
    row.result = stored.problem.empty() ? "copied" : "not_stored";
    if (stored.problem.empty()) row.sizeBytes = stored.sizeBytes;
    return stored.problem.empty();
  }

  const TechlogFolder& m_folder;
  std::vector<Row> m_rows;
  std::set<std::string> m_names;
};

/// Text of another process, for a terminal.
std::string Shown(std::string text) {
  for (char& character : text) {
    if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) character = '?';
  }
  return text;
}

std::string NameOf(const Row& row) {
  return row.name ? Shown(*row.name) : "(process " + std::to_string(row.process) + ")";
}

void PrintTable(const std::vector<Row>& rows) {
  std::size_t width = std::strlen("NAME");
  for (const Row& row : rows) width = std::max(width, NameOf(row).size());
  const auto line = [width](const std::string& name, const std::string& size, const std::string& result) {
    const std::string padding(width - name.size(), ' ');
    const std::string sizePadding(size.size() < 10 ? 10 - size.size() : 0, ' ');
    return WriteLine(name + padding + "  " + sizePadding + size + "  " + result);
  };
  line("NAME", "BYTES", "RESULT");
  for (const Row& row : rows) {
    line(NameOf(row), row.sizeBytes ? std::to_string(*row.sizeBytes) : "-",
         row.problem.empty() ? row.result : row.result + ": " + row.problem);
  }
}

void PrintJson(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    nlohmann::ordered_json object;
    object["name"] = row.name ? nlohmann::ordered_json(*row.name) : nullptr;
    object["process"] = row.process;
    object["size_bytes"] = row.sizeBytes ? nlohmann::ordered_json(*row.sizeBytes) : nullptr;
    object["result"] = row.result;
    object["problem"] = row.problem.empty() ? nullptr : nlohmann::ordered_json(row.problem);
    WriteJson(object);
  }
}

void RunCollect(const std::string& directory, const Settings& settings) {
  RequireBoard();
  const TechlogFolder folder(directory);
  Collector collector(folder);
  const auto timeoutMs = std::min<std::int64_t>(settings.timeout.count(), std::numeric_limits<i32>::max());
  const i32 answered = AaTrblCollect(static_cast<u32>(timeoutMs), Collector::Visit, &collector);
  const std::vector<Row>& rows = collector.Rows();
  if (answered != EAaTrblRet_Ok && rows.empty()) {
    throw CommandError(ExitCode::Unreachable,
                       "no process of this board has troubleshooting files; `boardsim status` tells whether the board "
                       "is up and the daemon running");
  }
  settings.json ? PrintJson(rows) : PrintTable(rows);
  const auto failed = std::ranges::count_if(rows, [](const Row& row) { return !row.problem.empty(); });
  if (failed == 0) return;
  const bool onlySilence =
      answered != EAaTrblRet_Ok && std::ranges::all_of(rows, [](const Row& row) { return row.result == "no_answer"; });
  throw CommandError(onlySilence ? ExitCode::Unreachable : ExitCode::Refused,
                     std::to_string(failed) + " of " + std::to_string(rows.size()) + " were not copied to " +
                         directory + "; the others are there");
}

}  // namespace

void AddTechlogCommands(CLI::App& app, Settings& settings) {
  const auto directory = std::make_shared<std::string>();
  CLI::App* techlog = app.add_subcommand("techlog", "Files that travel with the technical log");
  techlog->require_subcommand(1);
  CLI::App* collect = techlog->add_subcommand("collect", "Copy the files of every process of the board");
  collect->add_option("DIR", *directory, "Folder for the files; made when it is missing")->required();
  collect->callback(
      [&settings, directory] { settings.run = [&settings, directory] { RunCollect(*directory, settings); }; });
}

}  // namespace clmctl
