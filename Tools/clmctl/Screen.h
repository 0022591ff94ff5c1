/// @file
/// What standard output can show, and text that fits it.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

namespace clmctl {

/// Size and abilities of standard output.
struct Screen {
  static constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();

  std::size_t columns = kUnlimited;  ///< kUnlimited where it is no terminal: what reads it wants whole lines
  std::size_t rows = kUnlimited;
  bool colours = false;
  bool utf8 = true;
};

/// @return the screen of this process's standard output
Screen CurrentScreen();

/// @return @p text for people: what is no printable UTF-8 is shown as \xNN, so that no file can drive a terminal
std::string Printable(std::string_view text);
/// @return columns that printable UTF-8 text takes
std::size_t Width(std::string_view text);
/// @return @p text with blanks behind it up to @p width columns
std::string LeftAligned(std::string text, std::size_t width);
/// @return @p text with blanks before it up to @p width columns
std::string RightAligned(std::string text, std::size_t width);

/// @return the first @p width columns of @p text, which is ASCII
std::string Cut(const std::string& text, std::size_t width);
/// @return @p text between the colour of an SGR code ("1;31") and the usual one; as it is where there are no colours
std::string Coloured(const std::string& text, std::string_view code, const Screen& screen);

std::string WithoutTrailingBlanks(std::string text);

/// "1 row", "2 rows"
std::string Counted(std::size_t count, std::string_view what);

}  // namespace clmctl
