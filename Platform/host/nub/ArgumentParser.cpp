#include "Contract.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace ps::hwapi::common {
namespace {

constexpr std::string_view kBoard = "-board";
constexpr std::string_view kHelp = "-help";
/// Text of a bare option; as its value, the same.
constexpr std::string_view kOn = "arg on";

struct Option {
  std::string name;   ///< without the dash
  std::string text;   ///< its line of the usage
  std::string value;  ///< what GetOption answers
};

std::string_view FileName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

struct ArgumentParser::State {
  Option* Find(std::string_view name) {
    const auto found = std::find_if(options.begin(), options.end(), [name](const auto& o) { return o.name == name; });
    return found != options.end() ? &*found : nullptr;
  }

  std::string Usage() const {
    std::string usage = "usage: " + program + " [options]\n";
    for (const Option& option : options) usage += "  " + option.text + '\n';
    return usage;
  }

  std::string Wrong(const std::string& what) const { return what + '\n' + Usage(); }

  std::string program;
  std::vector<Option> options;
};

ArgumentParser::ArgumentParser() : m_state(std::make_unique<State>()) {
  AddOption("--board FILE  Board description (environment HWAPI_BOARD)\n");
  AddOption("--help  Shows this text\n");
}

ArgumentParser::~ArgumentParser() = default;

void ArgumentParser::AddOption(const std::string& text) {
  const std::string line = text.substr(0, text.find('\n'));
  const std::string word = line.substr(0, line.find(' '));
  m_state->options.push_back({.name = word.substr(word.empty() ? 0 : 1), .text = line, .value = {}});
}

std::string ArgumentParser::GetOption(const std::string& name) const {
  const Option* option = m_state->Find(name);
  return option != nullptr ? option->value : std::string();
}

std::string ArgumentParser::Parse(int argc, const char* const* argv) {
  State& state = *m_state;
  state.program = argc > 0 ? FileName(argv[0]) : "service";
  for (Option& option : state.options) option.value.clear();
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument.size() < 2 || argument.front() != '-') {
      return state.Wrong("unexpected argument \"" + std::string(argument) + '"');
    }
    const std::size_t equals = argument.starts_with("--") ? argument.find('=') : argument.npos;
    Option* option = state.Find(argument.substr(1, equals == argument.npos ? equals : equals - 1));
    if (option == nullptr) return state.Wrong("unknown option \"" + std::string(argument) + '"');
    const bool attached = equals != argument.npos;
    const bool follows = !attached && option->name != kHelp && i + 1 < argc && argv[i + 1][0] != '-';
    const std::string_view value = attached ? argument.substr(equals + 1) : follows ? argv[++i] : "";
    if (option->name == kBoard && value.empty()) return state.Wrong("option \"--board\" needs a file");
    const bool on = value.empty() || (value == kOn && option->name != kBoard);
    option->value = on ? std::string(kOn) : "arg " + std::string(value);
  }
  // The usage is the answer to --help; with a result that is not empty nobody goes on.
  return GetOption(std::string(kHelp)).empty() ? std::string() : state.Usage();
}

}  // namespace ps::hwapi::common
