/// Requests of so many items that a response's 16 bits of size cannot hold them: what is past its end is carried out
/// and not reported.
#include "FanTest.h"

#include <ostream>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

/// A number of items, and the bytes of the response to them.
struct Size {
  u32 items;
  std::size_t response;
};

/// A request that is good for any number of items.
struct HugeRequest {
  const char* name;
  u32 requestId;
  u32 responseId;
  std::vector<u32> head;  ///< its words before the number of items
  std::vector<u32> item;
  const char* driverCall;
  Size size;

  friend std::ostream& operator<<(std::ostream& out, const HugeRequest& request) {
    return out << request.name << " with " << request.size.items << " items";
  }
};

class FanHugeRequestTest : public FanTest, public testing::WithParamInterface<HugeRequest> {
 protected:
  /// @return the response to a request of that many items
  static fake::Message Ask(u32 items) {
    std::vector<u32> words = GetParam().head;
    words.push_back(items);
    for (u32 i = 0; i < items; ++i) words.insert(words.end(), GetParam().item.begin(), GetParam().item.end());
    return AnswerTo(
        {.id = GetParam().requestId, .payload = Words(words), .sender = kRequester, .receiver = kFanEndpoint},
        GetParam().responseId);
  }
};

TEST_P(FanHugeRequestTest, IsAnsweredInAsManyBytesAsTheLow16BitsOfTheSizeSay) {
  EXPECT_EQ(Ask(GetParam().size.items).payload.size(), GetParam().size.response);
}

TEST_P(FanHugeRequestTest, IsCarriedOutInFull) {
  Ask(GetParam().size.items);
  EXPECT_EQ(fake::Calls(GetParam().driverCall).size(), GetParam().size.items);
}

TEST_P(FanHugeRequestTest, IsAnsweredWithWhatFitsIn) {
  const fake::Message response = Ask(GetParam().size.items);
  EXPECT_EQ(WordAt(response, 0), 7u);
  EXPECT_EQ(StatusOf(response), 0u);
  const std::size_t numOfItems = GetParam().head.size() == 3 ? 44 : 40;
  if (response.payload.size() >= numOfItems + 4) {
    EXPECT_EQ(WordAt(response, numOfItems), GetParam().size.items);
  }
}

TEST_P(FanHugeRequestTest, DoesNotDisturbTheNextRequest) {
  Ask(GetParam().size.items);
  Forget();
  const std::size_t head = GetParam().head.size() == 3 ? 48 : 44;
  EXPECT_EQ(Ask(2).payload.size(), head + 2 * 12);
}

/// The most items that are all reported, the first number whose response is cut, those around the end of a response's
/// head, and the most items that a request can hold.
std::vector<HugeRequest> HugeRequests() {
  std::vector<HugeRequest> requests;
  for (const Size size : {Size{5457, 65528}, {5458, 4}, {5459, 16}, {5461, 40}, {5462, 52}, {8190, 32788}}) {
    requests.push_back({"PwmFrequency", 0x2C13, 0x2C14, {7}, {201, 3}, "ddal_fan_set_fan_pwm_freq", size});
    requests.push_back({"SpeedVersion1", 0x2C15, 0x2C16, {7, 0}, {201, 40}, "ddal_fan_set_pwm", size});
  }
  for (const Size size : {Size{5457, 65532}, {5458, 8}, {5461, 44}, {5462, 56}, {8189, 32780}}) {
    requests.push_back({"SpeedVersion2", 0x2CF1, 0x2CF2, {7, 0, 20}, {201, 40}, "ddal_fan_set_pwm", size});
  }
  return requests;
}

INSTANTIATE_TEST_SUITE_P(Sizes, FanHugeRequestTest, testing::ValuesIn(HugeRequests()), [](const auto& test) {
  return std::string(test.param.name) + "With" + std::to_string(test.param.size.items) + "Items";
});

}  // namespace
}  // namespace ps::hwapi::common::climate
