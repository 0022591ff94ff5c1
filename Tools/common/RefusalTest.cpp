#include "Refusal.h"

#include <gtest/gtest.h>
#include <CLI/CLI.hpp>

namespace commandline {
namespace {

/// @return why a program with the commands `temp watch TYPE [--count N]`, `temp stop` and a hidden one, and
/// the option --timeout, refuses a line
std::string RefusalOf(std::vector<std::string> words) {
  CLI::App app("", "prog");
  std::string type, count;
  app.fallthrough();
  app.require_subcommand(1);
  app.add_option("--timeout", count);
  app.add_subcommand("hidden", "")->group("");
  CLI::App* temp = app.add_subcommand("temp", "");
  temp->require_subcommand(1);
  CLI::App* watch = temp->add_subcommand("watch", "");
  watch->add_option("TYPE", type)->required();
  watch->add_option("--count", count);
  temp->add_subcommand("stop", "");
  try {
    std::reverse(words.begin(), words.end());
    app.parse(words);
  } catch (const CLI::ParseError& error) {
    return Refusal(app, error);
  }
  return "";
}

TEST(CommandLine, WithoutACommandIsToldThoseThereAre) {
  EXPECT_EQ(RefusalOf({}), "`prog` needs a command: give temp; `prog --help` tells more");
  EXPECT_EQ(RefusalOf({"temp"}), "`prog temp` needs a command: give watch or stop; `prog temp --help` tells more");
}

TEST(CommandLine, WithAnUnknownCommandIsToldWhichAndThoseThereAre) {
  EXPECT_EQ(RefusalOf({"temp", "wtch", "Kel"}),
            "'wtch' is no command of `prog temp`: give watch or stop; `prog temp --help` tells more");
}

TEST(CommandLine, WithAnUnknownOptionIsToldWhich) {
  EXPECT_EQ(RefusalOf({"temp", "watch", "Kel", "--cuont", "3"}),
            "'--cuont' is no option of `prog temp watch`; `prog temp watch --help` tells more");
}

TEST(CommandLine, WithTooManyArgumentsIsToldWhich) {
  EXPECT_EQ(RefusalOf({"temp", "watch", "Kel", "Tov"}),
            "'Tov' is one argument too many for `prog temp watch`; `prog temp watch --help` tells more");
}

TEST(CommandLine, ThatLacksSomethingIsToldWhat) {
  EXPECT_EQ(RefusalOf({"temp", "watch"}), "TYPE is required; `prog temp watch --help` tells more");
  EXPECT_EQ(RefusalOf({"temp", "watch", "Kel", "--count"}).find("--count"), 0u);
  EXPECT_EQ(RefusalOf({"--timeout"}).find("--timeout"), 0u);
}

TEST(CommandLine, ThatIsGoodIsNotRefused) { EXPECT_EQ(RefusalOf({"temp", "watch", "Kel"}), ""); }

}  // namespace
}  // namespace commandline
