/// @file
/// What was called: every call of a platform function, in order, with copied arguments.
///
/// Arguments are recorded in the order of the function's own parameters, with these rules: outputs and function
/// pointers are left out; a buffer and its size are one Bytes (that of AaFileWrite is followed by its path, then by
/// size and number of its items); a message is its id (create: id, size, receiver; send and start of a timer: id,
/// receiver); a file is its path; a semaphore is its number, from 1; a log line is level, feature and the formatted
/// text; a calendar time is its seven numbers; members of Service and of ArgumentParser are named "Service::Name" and
/// "ArgumentParser::Name".
///
/// Function names are checked: one that the platform does not have throws std::invalid_argument, so that a misspelt
/// name cannot make a test pass. Everything here may be called from every thread.
#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace fake {

/// A copied buffer.
using Bytes = std::vector<std::uint8_t>;

/// @return the bytes of a number or record, as they lie in memory
template <typename T>
Bytes BytesOf(const T& value) {
  static_assert(std::is_trivially_copyable_v<T>);
  Bytes bytes(sizeof(T));
  std::memcpy(bytes.data(), &value, sizeof(T));
  return bytes;
}

/// A copied argument: null, a number, a text or a buffer.
class Value {
 public:
  Value(std::nullptr_t) {}
  template <typename T>
  requires(std::is_integral_v<T> || std::is_enum_v<T>) Value(T number) : m_value(static_cast<std::int64_t>(number)) {}
  Value(const char* text) {
    if (text != nullptr) m_value = std::string(text);
  }
  Value(std::string text) : m_value(std::move(text)) {}
  Value(Bytes bytes) : m_value(std::move(bytes)) {}

  /// @return the number; throws std::bad_variant_access when it is none
  std::int64_t Number() const { return std::get<std::int64_t>(m_value); }
  /// @return the text; throws std::bad_variant_access when it is none
  const std::string& Text() const { return std::get<std::string>(m_value); }
  /// @return the buffer; throws std::bad_variant_access when it is none
  const Bytes& Buffer() const { return std::get<Bytes>(m_value); }

  bool operator==(const Value&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Value& value);

 private:
  std::variant<std::monostate, std::int64_t, std::string, Bytes> m_value;
};

/// One call.
struct Call {
  /// E.g. Call("ddal_fan_set_pwm", 0, 40).
  template <typename... Arguments>
  explicit(false) Call(std::string name, Arguments&&... values)
      : function(std::move(name)), arguments{Value(std::forward<Arguments>(values))...} {}

  std::string function;
  std::vector<Value> arguments;

  bool operator==(const Call&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Call& call);
};

/// @return every call since the last Clear
std::vector<Call> Calls();
/// @return the calls of one function
std::vector<Call> Calls(const std::string& function);
/// @return the calls of some functions, in the order in which they came
std::vector<Call> Calls(std::initializer_list<std::string> functions);
/// Forgets the calls so far. Failures that are asked for, messages and answers stay.
void Clear();

/// Compares the order of some calls with the recorded one. An expected call stands for a recorded one of that function
/// whose arguments begin with the expected ones; other calls may lie between.
/// @return "" when the expected calls came in that order, else which one is missing and what was called instead
std::string OrderMismatch(const std::vector<Call>& expected);

}  // namespace fake
