#include "fake/Recorder.h"

#include "AaTrbl.h"
#include "Functions.h"
#include "Internal.h"
#include "ddal_error.h"
#include "fake/Failures.h"

#include <algorithm>
#include <ostream>
#include <sstream>
#include <stdexcept>

namespace fake {
namespace {

using internal::Failing;
using internal::HowItFails;
using internal::Lock;

/// A failure that a test asked for: of the calls number `first` to `last` from the time of asking.
struct Failure {
  std::string function;
  unsigned first;
  unsigned last;
  int result;
  unsigned seen = 0;
};

struct Recording {
  std::vector<Call> calls;
  std::vector<Failure> failures;
};

Recording& TheRecording() {
  static auto& recording = *new Recording;
  return recording;
}

constexpr unsigned kForEver = ~0u;

int DefaultResult(Failing failing) {
  switch (failing) {
    case Failing::Errno:
      return EIO;
    case Failing::Trbl:
      return EAaTrblRet_Failed;
    case Failing::Driver:
      return DDAL_ERR_IO;
    case Failing::Never:
    case Failing::Zero:
    case Failing::Throws:
      return 0;
  }
  return 0;
}

void AddFailure(const std::string& function, unsigned first, unsigned last, std::optional<int> result) {
  const Failing failing = HowItFails(function);
  if (failing == Failing::Never) throw std::invalid_argument(function + " cannot fail");
  if (first == 0) throw std::invalid_argument("calls are counted from 1");
  const Lock lock;
  TheRecording().failures.push_back({function, first, last, result.value_or(DefaultResult(failing))});
}

/// Whether a recorded call is what was expected, as far as that says something.
bool Matches(const Call& recorded, const Call& expected) {
  return recorded.function == expected.function && recorded.arguments.size() >= expected.arguments.size() &&
         std::equal(expected.arguments.begin(), expected.arguments.end(), recorded.arguments.begin());
}

}  // namespace

std::vector<Call> Calls() {
  const Lock lock;
  return TheRecording().calls;
}

std::vector<Call> Calls(const std::string& function) { return Calls({function}); }

std::vector<Call> Calls(std::initializer_list<std::string> functions) {
  for (const std::string& function : functions) HowItFails(function);
  std::vector<Call> calls = Calls();
  std::erase_if(calls,
                [&](const Call& call) { return std::ranges::find(functions, call.function) == functions.end(); });
  return calls;
}

void Clear() {
  const Lock lock;
  TheRecording().calls.clear();
}

std::string OrderMismatch(const std::vector<Call>& expected) {
  for (const Call& call : expected) HowItFails(call.function);
  const std::vector<Call> calls = Calls();
  auto position = calls.begin();
  for (const Call& call : expected) {
    const auto found = std::find_if(position, calls.end(), [&](const Call& one) { return Matches(one, call); });
    if (found == calls.end()) {
      std::ostringstream text;
      text << "missing: " << call
           << (position == calls.begin() ? "\ncalled:\n" : "\ncalled after the one before it:\n");
      for (auto later = position; later != calls.end(); ++later) text << "  " << *later << "\n";
      return text.str();
    }
    position = found + 1;
  }
  return "";
}

void FailCall(const std::string& function, unsigned n, std::optional<int> result) {
  AddFailure(function, n, n, result);
}

void FailFrom(const std::string& function, unsigned n, std::optional<int> result) {
  AddFailure(function, n, kForEver, result);
}

void FailEvery(const std::string& function, std::optional<int> result) { FailFrom(function, 1, result); }

void StopFailing() {
  const Lock lock;
  TheRecording().failures.clear();
}

std::ostream& operator<<(std::ostream& out, const Value& value) {
  if (const auto* number = std::get_if<std::int64_t>(&value.m_value)) return out << *number;
  if (const auto* text = std::get_if<std::string>(&value.m_value)) return out << '"' << *text << '"';
  const auto* bytes = std::get_if<Bytes>(&value.m_value);
  if (bytes == nullptr) return out << "null";
  constexpr char kDigits[] = "0123456789abcdef";
  out << '[';
  for (const std::uint8_t byte : *bytes) out << kDigits[byte >> 4] << kDigits[byte & 0xF];
  return out << ']';
}

std::ostream& operator<<(std::ostream& out, const Call& call) {
  out << call.function << '(';
  const char* separator = "";
  for (const Value& argument : call.arguments) {
    out << separator << argument;
    separator = ", ";
  }
  return out << ')';
}

namespace internal {

std::optional<int> Record(Call call) {
  HowItFails(call.function);
  const Lock lock;
  std::optional<int> result;
  for (Failure& failure : TheRecording().failures) {
    if (failure.function != call.function) continue;
    if (failure.seen != kForEver) ++failure.seen;
    if (failure.seen >= failure.first && failure.seen <= failure.last) result = failure.result;
  }
  TheRecording().calls.push_back(std::move(call));
  return result;
}

void ResetRecorder() { TheRecording() = Recording(); }

}  // namespace internal
}  // namespace fake
