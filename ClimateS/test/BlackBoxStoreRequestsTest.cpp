/// Requests to store black-box data and files, on a board with a black box.
#include "BlackBoxTest.h"
#include "ServiceOnBoard.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr TAaSysComSicad kBlackBoxEndpoint = 0x010104D9;
constexpr TAaSysComSicad kSoftwareDownload = 0x010104B2;
const std::string kSource = "/tmp/results/selftest.txt";

/// A started service whose black box is in use. The black box is the process's.
class BlackBoxStoreRequestsTest : public ServiceOnBoardTest {
 protected:
  BlackBoxStoreRequestsTest() {
    fake::SetFile(kSource, "a result");
    fake::SetFile(kOamAlarmsFile, "alarms");
    fake::SetFile(kOamSfpFile, "sfp");
    Start(EUnitVersion_Kela);
    EXPECT_EQ(BlackBoxData::getInstance()->isInitialized(), 1u);
  }

  BlackBoxBoard m_board;
};

class StoreDataRequestTest : public BlackBoxStoreRequestsTest {
 protected:
  static fake::Message Request(u32 transaction) {
    return {.id = 0x43A2, .payload = Words({transaction}), .sender = kRequester, .receiver = kBlackBoxEndpoint};
  }
};

TEST_F(StoreDataRequestTest, WritesTheBlackBoxFiles) {
  AnswerTo(Request(1), 0x43A3);
  for (const std::string& path : {kBoardFile, kAlarmsFile, kSfpFile}) {
    EXPECT_TRUE(fake::FileContent(path).has_value()) << path;
  }
}

TEST_F(StoreDataRequestTest, WithoutTraceWritesNoTrace) {
  AnswerTo(Request(1), 0x43A3);
  EXPECT_FALSE(fake::FileContent(kTraceFile).has_value());
}

TEST_F(StoreDataRequestTest, WithTraceWritesTheTrace) {
  BlackBoxData::getInstance()->enableTemperatureTrace();
  AnswerTo(Request(1), 0x43A3);
  EXPECT_TRUE(fake::FileContent(kTraceFile).has_value());
}

TEST_F(StoreDataRequestTest, IsAnsweredAfterTheFilesAreWritten) {
  AnswerTo(Request(1), 0x43A3);
  const auto line = [](EAaSysLogSeverityLevel level, const char* text) {
    return fake::Call("AaSysLogPrintE", level, 131143, text);
  };
  EXPECT_TRUE(
      fake::CalledInOrder({line(EAaSysLogSeverityLevel_Debug, "Received API_STORE_BLACKBOX_DATA_REQ_MSG message"),
                           {"AaFileOpen", kBoardFile, "w"},
                           {"AaFileClose", kBoardFile},
                           {"AaFileCopy", kOamSfpFile, kSfpFile},
                           line(EAaSysLogSeverityLevel_Info, "Blackbox data storing is ready"),
                           {"AaSysComMsgCreate", 0x43A3, 8, kSoftwareDownload},
                           {"AaSysComMsgSendS", 0x43A3}}));
}

TEST_F(StoreDataRequestTest, IsAnsweredToTheSoftwareDownloadFromTheBlackBox) {
  const fake::Message answer = AnswerTo(Request(77), 0x43A3);
  EXPECT_EQ(answer.receiver, kSoftwareDownload);
  EXPECT_EQ(answer.sender, kBlackBoxEndpoint);
  EXPECT_EQ(answer.payload, Words({77, 0}));
}

TEST_F(StoreDataRequestTest, IsAnsweredWithSuccessAlsoWhenNothingCouldBeWritten) {
  for (const char* function : {"AaFileOpen", "AaFileCopy", "AaFileWrite", "AaFileClose"}) fake::FailEvery(function);
  EXPECT_EQ(AnswerTo(Request(77), 0x43A3).payload, Words({77, 0}));
}

TEST_F(StoreDataRequestTest, WithoutPayloadWritesNothing) {
  fake::Message request = Request(1);
  request.payload.clear();
  EXPECT_EQ(Refusal(request), "Message handling error: Payload missing from API_STORE_BLACKBOX_DATA_REQ_MSG");
  EXPECT_FALSE(fake::FileContent(kBoardFile).has_value());
}

TEST_F(StoreDataRequestTest, WithoutPayloadIsLoggedAllTheSame) {
  Refusal({.id = 0x43A2, .sender = kRequester, .receiver = kBlackBoxEndpoint});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug, "Received API_STORE_BLACKBOX_DATA_REQ_MSG message"));
}

/// Puts a text into a field, without a terminating zero when it fills the field.
void PutText(fake::Bytes& payload, std::size_t offset, const std::string& text) {
  std::copy_n(text.begin(), std::min<std::size_t>(text.size(), 128),
              payload.begin() + static_cast<std::ptrdiff_t>(offset));
}

class StoreFileRequestTest : public BlackBoxStoreRequestsTest {
 protected:
  static fake::Message Request(u32 transaction, u32 previous, const std::string& source, const std::string& target) {
    fake::Bytes payload = Words({transaction, previous});
    payload.resize(264);
    PutText(payload, 8, source);
    PutText(payload, 136, target);
    return {.id = 0x1302, .payload = payload, .sender = kRequester, .receiver = kBlackBoxEndpoint};
  }

  /// @return the contents of all stored copies, oldest first
  static std::vector<std::string> Copies() {
    std::vector<std::string> copies;
    for (const std::string& path : fake::FilePaths()) {
      if (path.starts_with(kLifedata + "blackbox_2024")) copies.push_back(*fake::FileContent(path));
    }
    return copies;
  }
};

TEST_F(StoreFileRequestTest, StoresACopy) {
  AnswerTo(Request(1, 2, kSource, ""), 0x1303);
  EXPECT_EQ(fake::FileContent(kLifedata + "blackbox_20240615120000_selftest.txt"), "a result");
}

TEST_F(StoreFileRequestTest, StoresUnderTheGivenTarget) {
  AnswerTo(Request(1, 2, kSource, "my_key"), 0x1303);
  EXPECT_EQ(fake::FileContent(kLifedata + "blackbox_20240615120000_my_key"), "a result");
}

TEST_F(StoreFileRequestTest, IsAnsweredToTheRequesterFromTheBlackBox) {
  const fake::Message answer = AnswerTo(Request(78, 2, kSource, ""), 0x1303);
  EXPECT_EQ(answer.receiver, kRequester);
  EXPECT_EQ(answer.sender, kBlackBoxEndpoint);
  EXPECT_EQ(answer.payload, Words({78, 0}));
}

TEST_F(StoreFileRequestTest, ThatFailsIsAnInvalidParameter) {
  EXPECT_EQ(AnswerTo(Request(78, 2, "/tmp/none", ""), 0x1303).payload, Words({78, 4}));
}

TEST_F(StoreFileRequestTest, ThatCannotBeRegisteredIsAnInvalidParameter) {
  fake::FailCall("AaTrblFileRegister");
  EXPECT_EQ(AnswerTo(Request(78, 2, kSource, ""), 0x1303).payload, Words({78, 4}));
}

TEST_F(StoreFileRequestTest, IsLoggedBeforeTheFileIsStored) {
  AnswerTo(Request(1, 5, kSource, ""), 0x1303);
  const auto debug = [](const std::string& text) {
    return fake::Call("AaSysLogPrintE", EAaSysLogSeverityLevel_Debug, 131143, text);
  };
  EXPECT_TRUE(
      fake::CalledInOrder({debug("Received API_BLACKBOX_STORE_FILE_REQ_MSG message"),
                           debug("HandleApiBlackboxStoreFileReqMsg() sourceFile " + kSource + " numOfPrevFiles 5"),
                           {"AaFileCopy", kSource},
                           {"AaSysComMsgCreate", 0x1303, 8, kRequester},
                           {"AaSysComMsgSendS", 0x1303}}));
}

TEST_F(StoreFileRequestTest, ItsNumberOfOlderCopiesIsLoggedSigned) {
  AnswerTo(Request(1, 0xFFFFFFFF, kSource, ""), 0x1303);
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug,
                           "HandleApiBlackboxStoreFileReqMsg() sourceFile " + kSource + " numOfPrevFiles -1"));
}

TEST_F(StoreFileRequestTest, KeepsAsManyOlderCopiesAsItSays) {
  for (u32 i = 0; i < 4; ++i) {
    fake::SetFile(kSource, "result " + std::to_string(i));
    fake::Dispatch(Request(i, 1, kSource, ""));
    fake::AdvanceTime(1'000'000);
  }
  EXPECT_THAT(Copies(), ElementsAre("result 2", "result 3"));
}

TEST_F(StoreFileRequestTest, OfTheOtherByteOrderKeepsAsManyOlderCopies) {
  for (u32 i = 0; i < 3; ++i) {
    fake::Message request = Request(i, 0x01000000, kSource, "");
    request.otherEndian = true;
    fake::Dispatch(request);
    fake::AdvanceTime(1'000'000);
  }
  EXPECT_EQ(Copies().size(), 2u);
}

TEST_F(StoreFileRequestTest, OfTheOtherByteOrderKeepsItsTexts) {
  fake::Message request = Request(0x4E000000, 0, kSource, "key");
  request.otherEndian = true;
  EXPECT_EQ(AnswerTo(request, 0x1303).payload, Words({0x4E, 0}));
  EXPECT_THAT(Copies(), ElementsAre("a result"));
}

/// @return the payload of a request of the other byte order once its handler has worked on it
fake::Bytes HandledPayload(ClimateService& service, fake::Message request) {
  request.otherEndian = true;
  const fake::ReceivedMessage received(request);
  service.HandleApiBlackboxStoreFileReqMsg(received);
  const auto* payload = static_cast<const u8*>(AaSysComMsgGetPayload(received));
  return fake::Bytes(payload, payload + AaSysComMsgGetPayloadSize(received));
}

TEST_F(StoreFileRequestTest, OfTheOtherByteOrderIsConvertedInPlace) {
  EXPECT_EQ(HandledPayload(*m_service, Request(0x4E000000, 0x02000000, kSource, "key")),
            Request(0x4E, 2, kSource, "key").payload);
}

TEST_F(StoreFileRequestTest, OfTheOtherByteOrderIsConvertedAsFarAsItGoes) {
  fake::Message request = Request(0x4E000000, 0x02000000, kSource, "");
  request.payload.resize(6);
  EXPECT_EQ(HandledPayload(*m_service, request), (fake::Bytes{0x4E, 0, 0, 0, 0, 0}));
}

TEST_F(StoreFileRequestTest, ASourceThatFillsItsFieldEndsThere) {
  const std::string path = "/" + std::string(127, 's');
  fake::SetFile(path, "long");
  EXPECT_EQ(AnswerTo(Request(1, 0, path, "key"), 0x1303).payload, Words({1, 0}));
  EXPECT_THAT(Copies(), ElementsAre("long"));
}

TEST_F(StoreFileRequestTest, ATargetThatFillsItsFieldEndsThere) {
  const std::string key(128, 't');
  EXPECT_EQ(AnswerTo(Request(1, 0, kSource, key), 0x1303).payload, Words({1, 0}));
  EXPECT_EQ(fake::FileContent(kLifedata + "blackbox_20240615120000_" + key), "a result");
}

TEST_F(StoreFileRequestTest, ThatEndsWithinTheSourceIsReadToItsEnd) {
  fake::SetFile("/tmp/x", "short");
  fake::Message request = Request(1, 0, "/tmp/x", "");
  request.payload.resize(8 + 6);
  EXPECT_EQ(AnswerTo(request, 0x1303).payload, Words({1, 0}));
  EXPECT_THAT(Copies(), ElementsAre("short"));
}

TEST_F(StoreFileRequestTest, WithoutPayloadStoresNothing) {
  fake::Message request = Request(1, 0, kSource, "");
  request.payload.clear();
  EXPECT_EQ(Refusal(request), "Message handling error: Payload missing from API_BLACKBOX_STORE_FILE_REQ_MSG");
  EXPECT_THAT(fake::Calls("AaFileCopy"), IsEmpty());
}

TEST_F(StoreFileRequestTest, WithoutPayloadIsLoggedAllTheSame) {
  Refusal({.id = 0x1302, .sender = kRequester, .receiver = kBlackBoxEndpoint});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug, "Received API_BLACKBOX_STORE_FILE_REQ_MSG message"));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
