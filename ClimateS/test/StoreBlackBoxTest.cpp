/// Requests to store black-box data and files, on a board whose black box could not be initialized.
#include "ServiceOnBoard.h"

namespace ps::hwapi::common::climate {
namespace {

class StoreBlackBoxTest : public ServiceOnBoardTest {
 protected:
  static constexpr TAaSysComSicad kBlackBoxEndpoint = 0x010104D9;
  static constexpr TAaSysComSicad kSoftwareDownload = 0x010104B2;

  StoreBlackBoxTest() { Start(EUnitVersion_Kela); }

  static fake::Message StoreData(fake::Bytes payload) {
    return {.id = 0x43A2, .payload = std::move(payload), .sender = kRequester, .receiver = kBlackBoxEndpoint};
  }
  static fake::Message StoreFile(fake::Bytes payload) {
    return {.id = 0x1302, .payload = std::move(payload), .sender = kRequester, .receiver = kBlackBoxEndpoint};
  }
};

TEST_F(StoreBlackBoxTest, StoredDataIsAnsweredToTheSoftwareDownload) {
  const fake::Message response = AnswerTo(StoreData(Words({77})), 0x43A3);
  EXPECT_EQ(response.receiver, kSoftwareDownload);
  EXPECT_EQ(response.sender, kBlackBoxEndpoint);
  EXPECT_EQ(response.payload, Words({77, 0}));
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Info, "Blackbox data storing is ready"));
}

TEST_F(StoreBlackBoxTest, DataRequestWithoutPayloadIsRefused) {
  EXPECT_EQ(Refusal(StoreData({})), "Message handling error: Payload missing from API_STORE_BLACKBOX_DATA_REQ_MSG");
  EXPECT_TRUE(fake::SentMessages().empty());
}

TEST_F(StoreBlackBoxTest, DataResponseWithoutPayloadIsDestroyed) {
  fake::FailCall("AaSysComMsgGetPayload", 2);
  EXPECT_EQ(Refusal(StoreData(Words({77}))),
            "Message handling error: Creation of API_STORE_BLACKBOX_DATA_RESP_MSG failed");
}

TEST_F(StoreBlackBoxTest, FileIsNotStored) {
  fake::Bytes payload = Words({78, 1});
  payload.resize(264, 'x');  // neither path has its terminating zero
  const fake::Message response = AnswerTo(StoreFile(payload), 0x1303);
  EXPECT_EQ(response.receiver, kRequester);
  EXPECT_EQ(response.sender, kBlackBoxEndpoint);
  EXPECT_EQ(response.payload, Words({78, 4}));
}

TEST_F(StoreBlackBoxTest, FileRequestOfTheOtherByteOrderIsConverted) {
  fake::Message request = StoreFile(Words({0x4E000000, 0x02000000}));
  request.otherEndian = true;
  EXPECT_EQ(WordAt(AnswerTo(request, 0x1303), 0), 0x4Eu);
  EXPECT_TRUE(
      fake::Logged(EAaSysLogSeverityLevel_Debug, "HandleApiBlackboxStoreFileReqMsg() sourceFile  numOfPrevFiles 2"));
}

TEST_F(StoreBlackBoxTest, FileRequestWithoutPayloadIsRefused) {
  EXPECT_EQ(Refusal(StoreFile({})), "Message handling error: Payload missing from API_BLACKBOX_STORE_FILE_REQ_MSG");
  EXPECT_TRUE(fake::SentMessages().empty());
}

TEST_F(StoreBlackBoxTest, FileResponseWithoutPayloadIsDestroyed) {
  fake::FailCall("AaSysComMsgGetPayload", 2);
  EXPECT_EQ(Refusal(StoreFile(Words({78, 1}))),
            "Message handling error: Creation of API_BLACKBOX_STORE_FILE_RESP_MSG failed");
}

}  // namespace
}  // namespace ps::hwapi::common::climate
