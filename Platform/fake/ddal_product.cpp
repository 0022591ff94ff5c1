#include "ddal_product.h"

#include "Internal.h"
#include "ddal_error.h"
#include "fake/Board.h"

#include <algorithm>
#include <cstring>

using namespace fake;
using namespace fake::internal;

namespace {

/// Answers with a text, cut to what a read may write.
int AnswerText(const std::map<u32, std::string>& texts, u32 selector, void* out) {
  if (out == nullptr) return DDAL_ERR_INVALID;
  const auto found = texts.find(selector);
  if (found == texts.end()) return DDAL_ERR_NO_DEVICE;
  const std::size_t room = DDAL_PRODUCT_DATA_SIZE - (Board().unterminated ? 0 : 1);
  const std::size_t length = std::min<std::size_t>(found->second.size(), room);
  std::memcpy(out, found->second.data(), length);
  if (length < DDAL_PRODUCT_DATA_SIZE) static_cast<char*>(out)[length] = '\0';
  return DDAL_OK;
}

}  // namespace

extern "C" {

int ddal_psu_get_product_data(u32 selector, void* out) {
  const Lock lock;
  if (const auto failure = Record({"ddal_psu_get_product_data", selector})) return *failure;
  return AnswerText(Board().psu, selector, out);
}

int ddal_filter_get_product_data(u32 selector, void* out) {
  const Lock lock;
  if (const auto failure = Record({"ddal_filter_get_product_data", selector})) return *failure;
  const auto number = Board().filterNumbers.find(selector);
  if (number == Board().filterNumbers.end() || out == nullptr) return AnswerText(Board().filter, selector, out);
  std::memcpy(out, &number->second, sizeof number->second);
  return DDAL_OK;
}

}  // extern "C"
