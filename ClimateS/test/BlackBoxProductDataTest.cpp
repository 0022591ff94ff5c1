/// What the board file tells of the power supply and the filter, on units that have them.
#include "BlackBoxTest.h"
#include "PrivateRoot.h"

#include <gmock/gmock.h>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

const std::string kProductData =
    "\nPSU DATA\n"
    "PRODUCT CODE: psu code\n"
    "VENDOR: psu vendor\n"
    "SERIAL NUMBER: psu serial\n"
    "HWSWID: psu hwswid\n"
    "\nFILTER DATA\n"
    "PRODUCT CODE: filter code\n"
    "VENDOR: filter vendor\n"
    "HW VERSION: filter version\n"
    "SERIAL NUMBER: filter serial\n"
    "HWSWID: 1234567890\n";

/// A unit with power supply and filter.
class BlackBoxProductDataTest : public InPrivateRoot<BlackBoxTest> {
 protected:
  BlackBoxProductDataTest() {
    fake::Board().psu = {{3, "psu code"}, {4, "psu vendor"}, {1, "psu serial"}, {2, "psu hwswid"}};
    fake::Board().filter = {{0, "filter code"}, {2, "filter vendor"}, {4, "filter version"}, {1, "filter serial"}};
    fake::Board().filterNumbers = {{6, 1234567890}};
    Init(EUnitType_Pivo);
  }

  /// @return the board file, written anew
  std::string NewFile() {
    EXPECT_EQ(m_blackBox.createBlackboxFile(), 1u);
    return File(kBoardFile);
  }

  /// @return the part of the new board file behind the main text
  std::string NewProductData() {
    const std::string file = NewFile();
    const std::size_t lastLine = file.find("ERRORS: ECC double-bit");
    return file.substr(file.find('\n', lastLine) + 1);
  }
};

TEST_F(BlackBoxProductDataTest, StandsBehindTheMainText) { EXPECT_EQ(NewProductData(), kProductData); }

TEST_F(BlackBoxProductDataTest, IsAWriteOfItsOwn) {
  m_blackBox.createBlackboxFile();
  const std::vector<fake::Call> writes = fake::Calls("AaFileWrite");
  ASSERT_EQ(writes.size(), 2u);
  EXPECT_EQ(writes.at(1), Written(kProductData, kBoardFile));
}

TEST_F(BlackBoxProductDataTest, IsAskedBehindTheMainTextInTheOrderOfTheLines) {
  m_blackBox.createBlackboxFile();
  EXPECT_TRUE(fake::CalledInOrder({{"ddal_devicetree_get_ecc_double"},
                                   {"AaFileWrite"},
                                   {"ddal_psu_get_product_data", 3},
                                   {"ddal_psu_get_product_data", 4},
                                   {"ddal_psu_get_product_data", 1},
                                   {"ddal_psu_get_product_data", 2},
                                   {"ddal_filter_get_product_data", 0},
                                   {"ddal_filter_get_product_data", 2},
                                   {"ddal_filter_get_product_data", 4},
                                   {"ddal_filter_get_product_data", 1},
                                   {"ddal_filter_get_product_data", 6},
                                   {"AaFileWrite"},
                                   {"AaFileClose", kBoardFile}}));
}

TEST_F(BlackBoxProductDataTest, EachDatumIsAskedOnce) {
  m_blackBox.createBlackboxFile();
  EXPECT_EQ(fake::Calls("ddal_psu_get_product_data").size(), 4u);
  EXPECT_EQ(fake::Calls("ddal_filter_get_product_data").size(), 5u);
}

TEST_F(BlackBoxProductDataTest, ALongTextKeepsItsFirst99Characters) {
  fake::Board().psu[4] = std::string(150, 'v');
  EXPECT_THAT(NewFile(), HasSubstr("VENDOR: " + std::string(99, 'v') + "\nSERIAL NUMBER: psu serial\n"));
}

TEST_F(BlackBoxProductDataTest, ATextWithoutItsZeroKeepsItsFirst99Characters) {
  fake::Board().unterminated = true;
  for (auto* texts : {&fake::Board().psu, &fake::Board().filter}) {
    for (auto& [selector, text] : *texts) text = std::string(99, static_cast<char>('a' + selector)) + "-lost";
  }
  const auto line = [](const char* label, char c) { return std::string(label) + ": " + std::string(99, c) + "\n"; };
  EXPECT_EQ(NewProductData(), "\nPSU DATA\n" + line("PRODUCT CODE", 'd') + line("VENDOR", 'e') +
                                  line("SERIAL NUMBER", 'b') + line("HWSWID", 'c') + "\nFILTER DATA\n" +
                                  line("PRODUCT CODE", 'a') + line("VENDOR", 'c') + line("HW VERSION", 'e') +
                                  line("SERIAL NUMBER", 'b') + "HWSWID: 1234567890\n");
}

TEST_F(BlackBoxProductDataTest, IsInABoardFileThatIsAskedForBeforeTheStartIsOver) {
  for (const fake::TrblFile& file : fake::TrblFiles()) AaTrblFileUnregister(file.name.c_str());
  fake::RemoveTag("app.hwapi.online.4a7");
  BlackBoxData starting;
  std::string file;
  fake::After(1'000'000, [&] {
    fake::RemoveAll(kBoardFile);
    EXPECT_EQ(starting.isInitialized(), 0u);
    EXPECT_EQ(starting.prepareFileForTechlog("blackbox"), EAaTrblCbStatus_Ok);
    file = File(kBoardFile);
    fake::SetTag("app.hwapi.online.4a7", 6u);
  });
  EXPECT_EQ(starting.init(EUnitType_Pivo), 1u);
  EXPECT_THAT(file, EndsWith(kProductData));
}

TEST_F(BlackBoxProductDataTest, AnEmptyTextIsAText) {
  fake::Board().filter[4] = "";
  EXPECT_THAT(NewFile(), HasSubstr("\nHW VERSION: \n"));
}

TEST_F(BlackBoxProductDataTest, TheFiltersHwswidMayBeNegative) {
  fake::Board().filterNumbers[6] = -3;
  EXPECT_THAT(NewFile(), EndsWith("HWSWID: -3\n"));
}

TEST_F(BlackBoxProductDataTest, WithEveryQueryFailingHoldsTheLabels) {
  fake::FailEvery("ddal_psu_get_product_data");
  fake::FailEvery("ddal_filter_get_product_data");
  EXPECT_EQ(NewProductData(),
            "\nPSU DATA\nPRODUCT CODE:\nVENDOR:\nSERIAL NUMBER:\nHWSWID:\n"
            "\nFILTER DATA\nPRODUCT CODE:\nVENDOR:\nHW VERSION:\nSERIAL NUMBER:\nHWSWID:\n");
}

/// A datum that cannot be read, and what the file and the log say then.
struct MissingDatum {
  const char* function;
  unsigned call;  ///< which call of that function fails
  const char* line;
  const char* label;
  const char* what;
};

void PrintTo(const MissingDatum& row, std::ostream* out) { *out << row.what; }

class MissingProductDatumTest : public BlackBoxProductDataTest, public testing::WithParamInterface<MissingDatum> {};

TEST_P(MissingProductDatumTest, LeavesItsLabelAndAnErrorWithTheResult) {
  const MissingDatum& row = GetParam();
  std::string expected = kProductData;
  expected.replace(expected.find(row.line), std::string(row.line).size(), row.label);
  fake::FailCall(row.function, row.call, -1004);
  EXPECT_EQ(NewProductData(), expected);
  std::vector<fake::LogLine> lines = fake::LogLines();
  std::erase_if(lines, [](const fake::LogLine& line) { return line.text.find("SW ") != std::string::npos; });
  EXPECT_THAT(
      lines, ElementsAre(Line(kError, std::string("BlackBoxData::createBlackboxFile(): failed to get ") + row.what +
                                          " (result = -1004)"),
                         Line(kDebug, "BlackBoxData::createBlackboxFile(): " + kBoardFile + " file has been created")));
}

INSTANTIATE_TEST_SUITE_P(
    Queries, MissingProductDatumTest,
    testing::Values(
        MissingDatum{"ddal_psu_get_product_data", 1, "PRODUCT CODE: psu code\n", "PRODUCT CODE:\n", "PSU product code"},
        MissingDatum{"ddal_psu_get_product_data", 2, "VENDOR: psu vendor\n", "VENDOR:\n", "PSU vendor"},
        MissingDatum{"ddal_psu_get_product_data", 3, "SERIAL NUMBER: psu serial\n", "SERIAL NUMBER:\n",
                     "PSU serial number"},
        MissingDatum{"ddal_psu_get_product_data", 4, "HWSWID: psu hwswid\n", "HWSWID:\n", "PSU hwswid"},
        MissingDatum{"ddal_filter_get_product_data", 1, "PRODUCT CODE: filter code\n", "PRODUCT CODE:\n",
                     "Filter product code"},
        MissingDatum{"ddal_filter_get_product_data", 2, "VENDOR: filter vendor\n", "VENDOR:\n", "Filter vendor"},
        MissingDatum{"ddal_filter_get_product_data", 3, "HW VERSION: filter version\n", "HW VERSION:\n",
                     "Filter HW version"},
        MissingDatum{"ddal_filter_get_product_data", 4, "SERIAL NUMBER: filter serial\n", "SERIAL NUMBER:\n",
                     "Filter serial number"},
        MissingDatum{"ddal_filter_get_product_data", 5, "HWSWID: 1234567890\n", "HWSWID:\n", "Filter hwswid"}));

}  // namespace
}  // namespace ps::hwapi::common::climate
