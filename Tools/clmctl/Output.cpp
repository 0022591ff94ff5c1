#include "Output.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <string>

namespace clmctl {

bool WriteRaw(std::string_view text) {
  return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
}

bool WriteLine(std::string_view line) { return WriteRaw(std::string(line) + "\n"); }

bool WriteJson(const nlohmann::ordered_json& object) {
  return WriteLine(object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

bool WriteJsonLines(const std::vector<nlohmann::ordered_json>& objects) {
  return std::all_of(objects.begin(), objects.end(),
                     [](const nlohmann::ordered_json& object) { return WriteJson(object); });
}

void Diagnose(std::string_view text) {
  std::fprintf(stderr, "clmctl: %.*s\n", static_cast<int>(text.size()), text.data());
}

}  // namespace clmctl
