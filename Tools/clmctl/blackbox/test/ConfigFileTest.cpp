#include "ConfigFile.h"

#include "BoardSample.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

const std::string kConfig =
    "# temperature log for blackbox\ntemp=/ffs/t\n# alarm log for blackbox\nalarm=/ffs/a\n"
    "# sfp log for blackbox\nsfp=/ffs/s\n# blackbox data file\nblackbox=/ffs/b\n";

std::string ProblemsOf(const ConfigFile& config) {
  std::string text;
  for (const FileProblem& problem : config.problems) text += std::to_string(problem.line) + ": " + problem.text + "\n";
  return text;
}

TEST(ConfigFile, NamesTheOtherFiles) {
  const ConfigFile config = ParseConfigFile(kConfig);
  EXPECT_EQ(ProblemsOf(config), "");
  EXPECT_EQ(config.paths, (std::vector<std::optional<std::string>>{"/ffs/t", "/ffs/a", "/ffs/s", "/ffs/b"}));
}

TEST(ConfigFile, MayNameNoFile) { EXPECT_EQ(ParseConfigFile(With(kConfig, "/ffs/s", "")).paths.at(2), ""); }

TEST(ConfigFile, WithAMissingLineSaysSoAndShowsTheRest) {
  const ConfigFile config = ParseConfigFile(With(kConfig, "alarm=/ffs/a\n", ""));
  EXPECT_NE(ProblemsOf(config).find("4: should begin with 'alarm='"), std::string::npos);
  EXPECT_EQ(config.paths, (std::vector<std::optional<std::string>>{"/ffs/t", std::nullopt, "/ffs/s", "/ffs/b"}));
}

TEST(ConfigFile, WithALineTooManySaysSo) {
  EXPECT_EQ(ProblemsOf(ParseConfigFile(kConfig + "x=1\n")), "9: stands behind the end of the settings: 'x=1'\n");
}

TEST(ConfigFile, ThatIsCutSaysSo) {
  EXPECT_EQ(ProblemsOf(ParseConfigFile(kConfig.substr(0, kConfig.size() - 1))), "8: is cut off: it has no line end\n");
}

TEST(ConfigFile, OfAnotherKindNamesNothing) {
  for (const auto& path : ParseConfigFile("hello\n").paths) EXPECT_EQ(path, std::nullopt);
  EXPECT_EQ(ParseConfigFile("").problems.size(), 8u);
}

}  // namespace
}  // namespace clmctl
