/// @file
/// boardsim reset-type: what the reset service tells of the last reset.
#include "Commands.h"
#include "ResetAnswer.h"

#include <memory>

namespace boardsim {
namespace {

void RunResetType(const std::string& text, const Settings& settings) {
  const StateDirectory state = settings.State();
  state.Join();
  const ResetAnswer wanted = ResetAnswer::FromCommand(text, ResetAnswer::Current(state.ResetAnswer()));
  // The reset service reads it with each question, so the next start of the daemon finds it.
  wanted.Save(state.ResetAnswer());
}

}  // namespace

void AddResetTypeCommand(CLI::App& app, Settings& settings) {
  const auto answer = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand("reset-type", "Set what the daemon learns of the last reset when it starts");
  command
      ->add_option("ANSWER", *answer,
                   "Number of the reset type; or, of the type set before: fail=STATUS, silent, late=SECONDS")
      ->required();
  command->callback([&settings, answer] { settings.run = [&settings, answer] { RunResetType(*answer, settings); }; });
}

}  // namespace boardsim
