#include "BlackBoxJson.h"

#include "BoardSample.h"
#include "TraceSample.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace clmctl {
namespace {

using Json = nlohmann::ordered_json;

std::vector<std::string> KeysOf(const Json& object) {
  std::vector<std::string> keys;
  for (const auto& item : object.items()) keys.push_back(item.key());
  return keys;
}

TEST(BoardJson, HasNumbersTextsAndNull) {
  const Json board = BoardJson(ParseBoardFile(With(kBoardFile, ": L1", ":")));
  EXPECT_EQ(board["product_code"], "472573A.101");
  EXPECT_EQ(board["serial_number"], nullptr);
  EXPECT_EQ(board["ecc_single_bit_errors"], 4);
  EXPECT_EQ(board["power_supply"], nullptr);
}

TEST(BoardJson, HasTheSameKeysForEveryFile) {
  EXPECT_EQ(KeysOf(BoardJson(ParseBoardFile(kBoardFile))), KeysOf(BoardJson(ParseBoardFile("rubbish\n"))));
}

TEST(BoardJson, HasTheResets) {
  const Json board = BoardJson(ParseBoardFile(With(kBoardFile, kBoardReset, kBoardReset + "rubbish\n")));
  ASSERT_EQ(board["resets"].size(), 2u);
  EXPECT_EQ(board["resets"][0]["category"], "User");
  EXPECT_EQ(board["resets"][0]["reset_counter"], 0);
  EXPECT_EQ(board["resets"][0]["fallback"], false);
  EXPECT_EQ(board["resets"][1]["damaged"], true);
  EXPECT_EQ(board["resets"][1]["text"], "rubbish");
  EXPECT_EQ(KeysOf(board["resets"][0]), KeysOf(board["resets"][1]));
}

TEST(BoardJson, HasProductDataWhereThereIsSome) {
  const Json board = BoardJson(ParseBoardFile(kBoardFile + kBoardProductData));
  EXPECT_EQ(board["power_supply"]["vendor"], "b");
  EXPECT_EQ(board["filter"]["hwswid"], 12);
}

TEST(ConfigJson, HasAllPathsOrNull) {
  const Json config = ConfigJson(ParseConfigFile("# temperature log for blackbox\ntemp=/ffs/t\n"));
  EXPECT_EQ(config.dump(), R"({"trace_file":"/ffs/t","alarm_file":null,"sfp_file":null,"board_file":null})");
}

TEST(TraceJson, NamesTheUnitInTheKey) {
  const TraceFile trace = Trace({Row(5, "41500\terror\t3000\t")});
  const TraceStatistics statistics = StatisticsOf(trace);
  const Json kel = TraceColumnJson(trace.columns[0], statistics.columns[0]);
  const Json fan = TraceColumnJson(trace.columns[2], statistics.columns[2]);
  EXPECT_EQ(kel["last_millicelsius"], 41500);
  EXPECT_EQ(kel["last_rpm"], nullptr);
  EXPECT_EQ(kel["since_start_min_millicelsius"], 39000);
  EXPECT_EQ(fan["last_millicelsius"], nullptr);
  EXPECT_EQ(fan["last_rpm"], 3000);
  EXPECT_EQ(KeysOf(kel), KeysOf(fan));
}

TEST(TraceJson, HasNullForAFailedReading) {
  const TraceFile trace = Trace({Row(5, "41500\terror\t3000\t")});
  const Json row = TraceRowJson(trace, trace.rows[0]);
  EXPECT_EQ(row["state"], "good");
  EXPECT_EQ(row["time"], "2024-03-07T14:05:09.042Z");
  EXPECT_EQ(row["readings"][1]["name"], "KEL_MCU");
  EXPECT_EQ(row["readings"][1]["value_millicelsius"], nullptr);
  EXPECT_EQ(row["readings"][1]["state"], "failed");
  EXPECT_EQ(row["readings"][2]["value_rpm"], 3000);
}

TEST(TraceJson, AttributesNothingOfOtherRows) {
  const TraceFile trace = Trace({Row(5, "41500\t"), "rubbish\n", Row(6, "1\t2\t3\t")});
  EXPECT_EQ(TraceRowJson(trace, trace.rows[0])["state"], "other_columns");
  EXPECT_TRUE(TraceRowJson(trace, trace.rows[0])["readings"].empty());
  EXPECT_EQ(TraceRowJson(trace, trace.rows[1])["state"], "damaged");
  EXPECT_EQ(TraceRowJson(trace, trace.rows[1])["text"], "rubbish");
  EXPECT_EQ(KeysOf(TraceRowJson(trace, trace.rows[0])), KeysOf(TraceRowJson(trace, trace.rows[2])));
}

}  // namespace
}  // namespace clmctl
