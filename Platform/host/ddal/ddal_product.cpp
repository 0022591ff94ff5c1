#include "ddal_product.h"

#include "BoardDescription.h"
#include "Export.h"
#include "ddal_error.h"

#include <cstring>
#include <optional>
#include <string>

using namespace hwapi;

namespace {

/// Gives a text, cut to what callers have room for.
int Give(const std::optional<std::string>& told, void* out) {
  if (!told) return DDAL_ERR_NOT_SUPPORTED;
  const std::size_t size = told->copy(static_cast<char*>(out), DDAL_PRODUCT_DATA_SIZE - 1);
  static_cast<char*>(out)[size] = '\0';
  return DDAL_OK;
}

int Give(const std::optional<i32>& told, void* out) {
  if (!told) return DDAL_ERR_NOT_SUPPORTED;
  std::memcpy(out, &*told, sizeof *told);
  return DDAL_OK;
}

}  // namespace

GARDDAL_API int ddal_psu_get_product_data(u32 selector, void* out) {
  if (out == nullptr) return DDAL_ERR_INVALID;
  const board::Psu& psu = board::OwnBoard().psu;
  switch (selector) {
    case DDAL_PSU_SERIAL_NUMBER:
      return Give(psu.serialNumber, out);
    case DDAL_PSU_HWSWID:
      return Give(psu.hwswid, out);
    case DDAL_PSU_PRODUCT_CODE:
      return Give(psu.productCode, out);
    case DDAL_PSU_VENDOR:
      return Give(psu.vendor, out);
    default:
      return DDAL_ERR_INVALID;
  }
}

GARDDAL_API int ddal_filter_get_product_data(u32 selector, void* out) {
  if (out == nullptr) return DDAL_ERR_INVALID;
  const board::Filter& filter = board::OwnBoard().filter;
  switch (selector) {
    case DDAL_FILTER_PRODUCT_CODE:
      return Give(filter.productCode, out);
    case DDAL_FILTER_SERIAL_NUMBER:
      return Give(filter.serialNumber, out);
    case DDAL_FILTER_VENDOR:
      return Give(filter.vendor, out);
    case DDAL_FILTER_HW_VERSION:
      return Give(filter.hwVersion, out);
    case DDAL_FILTER_HWSWID:
      return Give(filter.hwswid, out);
    default:
      return DDAL_ERR_INVALID;
  }
}
