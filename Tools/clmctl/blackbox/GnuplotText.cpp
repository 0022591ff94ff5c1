#include "GnuplotText.h"

#include "Screen.h"

#include <cstdio>

namespace clmctl {
namespace {

bool IsPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == ' ' || c == '.' ||
         c == ',' || c == ':' || c == '-';
}

}  // namespace

std::string GnuplotString(std::string_view text) {
  std::string constant = "\"";
  bool afterCode = false;
  for (const char c : Printable(text)) {
    // gnuplot takes digits behind a code for more of it.
    const bool digit = c >= '0' && c <= '9';
    if (IsPlain(c) && !(afterCode && digit)) {
      constant += c;
      afterCode = false;
      continue;
    }
    char code[8];
    std::snprintf(code, sizeof code, "\\%03o", static_cast<unsigned>(static_cast<unsigned char>(c)));
    constant += code;
    afterCode = true;
  }
  return constant + "\"";
}

std::string GnuplotNumber(double value, int decimals) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

}  // namespace clmctl
