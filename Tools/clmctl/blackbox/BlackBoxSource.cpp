#include "BlackBoxSource.h"

#include "AaConfig.h"
#include "BoardRoot.h"
#include "Client.h"
#include "CommandError.h"
#include "Output.h"
#include "Screen.h"

#include <algorithm>

namespace clmctl {
namespace {

constexpr std::size_t kMostProblems = 10;

std::string TagText(const char* tag) {
  RequireBoard();
  void* value = nullptr;
  const i32 error = AaConfigTagGet(tag, &value);
  const std::string text = error == 0 && value != nullptr ? static_cast<const char*>(value) : "";
  AaMemUnRefDbg(value, __FILE__, __LINE__);
  if (text.empty()) {
    throw CommandError(ExitCode::Refused, std::string("the board does not tell where this file is: its tag ") + tag +
                                              " has no value; --file names a file");
  }
  return text;
}

}  // namespace

BlackBoxSource ReadBlackBoxFile(const std::string& file, const char* tag) {
  if (!file.empty()) return {.path = file, .text = ReadLocalFile(file)};
  const std::string path = TagText(tag);
  return {.path = path, .text = ReadBoardsFile(path)};
}

void Diagnose(const std::string& path, const std::vector<FileProblem>& problems) {
  for (std::size_t i = 0; i < std::min(problems.size(), kMostProblems); ++i) {
    Diagnose(Printable(path) + ":" + std::to_string(problems[i].line) + ": " + problems[i].text);
  }
  if (problems.size() > kMostProblems) {
    Diagnose("... and " + std::to_string(problems.size() - kMostProblems) + " more");
  }
}

void RequireNone(const std::string& path, const std::vector<FileProblem>& problems) {
  if (problems.empty()) return;
  throw CommandError(ExitCode::Refused,
                     Printable(path) + " is damaged or another kind of file: " + Counted(problems.size(), "problem") +
                         ", see above; what can be read is shown");
}

}  // namespace clmctl
