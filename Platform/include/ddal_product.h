/// @file
/// Product data of the power supply and of the filter.
#pragma once

#include "GloTypes.h"

/// Most bytes that a product-data read writes.
inline constexpr u32 DDAL_PRODUCT_DATA_SIZE = 100;

/// Data of the power supply; all are texts.
enum EDdalPsuData : u32 {
  DDAL_PSU_SERIAL_NUMBER = 1,
  DDAL_PSU_HWSWID = 2,
  DDAL_PSU_PRODUCT_CODE = 3,
  DDAL_PSU_VENDOR = 4
};

/// Data of the filter; texts unless said.
enum EDdalFilterData : u32 {
  DDAL_FILTER_PRODUCT_CODE = 0,
  DDAL_FILTER_SERIAL_NUMBER = 1,
  DDAL_FILTER_VENDOR = 2,
  DDAL_FILTER_HW_VERSION = 4,
  DDAL_FILTER_HWSWID = 6  ///< an i32
};

extern "C" {

/// Reads one datum into @p out, at most DDAL_PRODUCT_DATA_SIZE bytes; texts are zero-terminated.
int ddal_psu_get_product_data(u32 selector, void* out);
/// Reads one datum into @p out, at most DDAL_PRODUCT_DATA_SIZE bytes; texts are zero-terminated.
int ddal_filter_get_product_data(u32 selector, void* out);

}  // extern "C"
