// Product data of the power supply and of the filter.
#include "TestBoard.h"
#include "ddal_error.h"
#include "ddal_product.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

class ProductDataTest : public testing::Test {
 protected:
  ProductDataTest() { std::memset(m_data, '?', sizeof m_data); }

  TestBoard m_board;
  char m_data[DDAL_PRODUCT_DATA_SIZE + 1];
};

TEST_F(ProductDataTest, ThePowerSupplysTextsAreTold) {
  m_board.Describe("[psu]\nserial_number = 'S'\nhwswid = 'H'\nproduct_code = 'P'\nvendor = 'V'");
  const std::pair<u32, const char*> expected[] = {
      {DDAL_PSU_SERIAL_NUMBER, "S"}, {DDAL_PSU_HWSWID, "H"}, {DDAL_PSU_PRODUCT_CODE, "P"}, {DDAL_PSU_VENDOR, "V"}};
  for (const auto& [selector, text] : expected) {
    ASSERT_EQ(ddal_psu_get_product_data(selector, m_data), DDAL_OK);
    EXPECT_STREQ(m_data, text);
  }
}

TEST_F(ProductDataTest, TheFiltersTextsAreTold) {
  m_board.Describe("[filter]\nserial_number = 'S'\nhw_version = 'H'\nproduct_code = 'P'\nvendor = 'V'");
  const std::pair<u32, const char*> expected[] = {{DDAL_FILTER_SERIAL_NUMBER, "S"},
                                                  {DDAL_FILTER_HW_VERSION, "H"},
                                                  {DDAL_FILTER_PRODUCT_CODE, "P"},
                                                  {DDAL_FILTER_VENDOR, "V"}};
  for (const auto& [selector, text] : expected) {
    ASSERT_EQ(ddal_filter_get_product_data(selector, m_data), DDAL_OK);
    EXPECT_STREQ(m_data, text);
  }
}

TEST_F(ProductDataTest, TheFiltersHardwareIdIsANumber) {
  m_board.Describe("[filter]\nhwswid = -33");
  ASSERT_EQ(ddal_filter_get_product_data(DDAL_FILTER_HWSWID, m_data), DDAL_OK);
  i32 id = 0;
  std::memcpy(&id, m_data, sizeof id);
  EXPECT_EQ(id, -33);
  EXPECT_EQ(m_data[sizeof id], '?');
}

TEST_F(ProductDataTest, ALongTextIsCutToTheRoomThatCallersHave) {
  m_board.Describe("[psu]\nvendor = '" + std::string(200, 'x') + "'");
  ASSERT_EQ(ddal_psu_get_product_data(DDAL_PSU_VENDOR, m_data), DDAL_OK);
  EXPECT_EQ(std::strlen(m_data), DDAL_PRODUCT_DATA_SIZE - 1);
  EXPECT_EQ(m_data[DDAL_PRODUCT_DATA_SIZE], '?');
}

TEST_F(ProductDataTest, WhatIsNotDescribedIsNotSupported) {
  m_board.Describe("");
  EXPECT_EQ(ddal_psu_get_product_data(DDAL_PSU_VENDOR, m_data), DDAL_ERR_NOT_SUPPORTED);
  EXPECT_EQ(ddal_filter_get_product_data(DDAL_FILTER_HWSWID, m_data), DDAL_ERR_NOT_SUPPORTED);
  EXPECT_EQ(m_data[0], '?');
}

TEST_F(ProductDataTest, AnUnknownSelectorIsInvalid) {
  m_board.Describe("");
  EXPECT_EQ(ddal_psu_get_product_data(0, m_data), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_filter_get_product_data(5, m_data), DDAL_ERR_INVALID);
}

TEST_F(ProductDataTest, ANullOutputIsInvalid) {
  m_board.Describe("");
  EXPECT_EQ(ddal_psu_get_product_data(DDAL_PSU_VENDOR, nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_filter_get_product_data(DDAL_FILTER_VENDOR, nullptr), DDAL_ERR_INVALID);
}

}  // namespace
