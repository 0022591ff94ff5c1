/// @file
/// Board files for tests.
#pragma once

#include <string>

namespace clmctl {

inline const std::string kBoardBeforeHistory =
    "TIMESTAMP: 2024-03-07T14:05:09.042Z\nPRODUCT CODE: 472573A.101\nSERIAL NUMBER: L1\nISTI: 3\nRESET COUNTER: 0\n"
    "RESET Reason and timestamp:\n";
inline const std::string kBoardReset =
    "2024-03-06T10:00:00.000Z Cold reset : User (x y) Runnig partition: /ffs/fs1 RLC: 0\n";
inline const std::string kBoardBehindHistory =
    "SW VERSION: active: R1_2.3\nSW VERSION: passive: R1_2.2\nSW VERSION: active filesystem: /ffs/fs1\n"
    "ERRORS: ECC single-bit error counter: 4\nERRORS: ECC double-bit error counter: 0\n";
inline const std::string kBoardProductData =
    "\nPSU DATA\nPRODUCT CODE: a\nVENDOR: b\nSERIAL NUMBER: c\nHWSWID: d\n"
    "\nFILTER DATA\nPRODUCT CODE: e\nVENDOR: f\nHW VERSION: g\nSERIAL NUMBER: h\nHWSWID: 12\n";
inline const std::string kBoardFile = kBoardBeforeHistory + kBoardReset + kBoardBehindHistory;

/// @return @p text with its first @p from replaced
inline std::string With(std::string text, const std::string& from, const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}

}  // namespace clmctl
