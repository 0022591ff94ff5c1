/// @file
/// Text for a terminal: what it can show, and pieces of lines that fit it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace clmctl {

/// What a terminal can show.
struct Canvas {
  unsigned columns = 80;
  unsigned rows = 24;
  bool colours = true;
  bool utf8 = true;
};

/// @return @p text with blanks behind it up to @p width columns; a longer one as it is
std::string PaddedRight(const std::string& text, unsigned width);
/// @return @p text with blanks before it up to @p width columns; a longer one as it is
std::string PaddedLeft(const std::string& text, unsigned width);
/// @return the first @p width columns of @p text, which is ASCII
std::string Cut(const std::string& text, unsigned width);
/// @return @p text between the colour of an SGR code ("1;31") and the usual one; as it is where there are no colours
std::string Coloured(const std::string& text, std::string_view code, const Canvas& canvas);

/// @return what a table says about its indications: how many there were, and when the last one came
std::string CountText(unsigned count, const std::string& lastTime);
/// @return the lines above a table's rows: title, status, blank line, header
std::vector<std::string> TableHead(const std::string& title, const std::string& status, const std::string& header,
                                   const Canvas& canvas);

}  // namespace clmctl
