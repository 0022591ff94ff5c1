/// @file
/// What the commands write: data on standard output, diagnostics on standard error.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string_view>
#include <vector>

namespace clmctl {

/// Writes one line of data at once.
/// @return false when nobody reads it any more
bool WriteLine(std::string_view line);
/// Writes one JSON object as a line; otherwise as WriteLine. Text that is no UTF-8 is shown with replacement
/// characters.
bool WriteJson(const nlohmann::ordered_json& object);
/// Writes the objects one after the other; otherwise as above.
bool WriteJsonLines(const std::vector<nlohmann::ordered_json>& objects);
/// Writes text as it is, without a line end; otherwise as WriteLine.
bool WriteRaw(std::string_view text);
/// Writes "clmctl: text" to standard error.
void Diagnose(std::string_view text);

}  // namespace clmctl
