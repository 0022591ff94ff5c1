/// @file
/// The fixture of tests that announce resets to a started service, or ask it for the last one.
#pragma once

#include "BlackBoxTest.h"
#include "NextStart.h"
#include "ServiceOnBoard.h"

#include <sstream>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {

/// The address of the reset service, which announces resets and asks for the last one.
inline constexpr TAaSysComSicad kResetService = 0x010104A7;
inline constexpr u32 kResetReq = 0x1134;
inline constexpr u32 kResetResp = 0x2B82;
inline constexpr u32 kResetInfoReq = 0x1177;
inline constexpr u32 kResetInfoResp = 0x1178;

/// What the clock of the recording platform shows, as it stands before an entry of the history.
inline const std::string kNoon = "2024-06-15T12:00:00.000Z ";
/// The board file's copy on the file system that does not run.
inline const std::string kStandbyFile = "/ffs/stb/config/lifedata/blackbox";

/// An announced reset, field by field; as it stands here, a warm reset of this board that a user asked for.
struct ResetRequest {
  u32 board = 1;
  u32 cpu = 1;
  u32 state = 1;
  u32 extra = 7;
  u32 category = 1;
  std::string extended = {};  ///< at most 60 bytes
  u32 node = 0;

  /// @return the message that brings it, with 84 bytes
  fake::Message Message() const {
    fake::Bytes payload = Words({board, cpu, state, extra, category});
    payload.insert(payload.end(), extended.begin(), extended.end());
    payload.resize(80);
    const fake::Bytes last = Words({node});
    payload.insert(payload.end(), last.begin(), last.end());
    return {.id = kResetReq, .payload = payload, .sender = kResetService, .receiver = kTemperatureEndpoint};
  }
  /// @return the log line of its arrival
  std::string Arrival() const {
    std::ostringstream line;
    line << std::hex << std::uppercase << "HandleApi2ResetReqMsg(): Received API2_RESET_REQ_MSG { board=0x" << board
         << ", cpu=0x" << cpu << std::nouppercase << ", state=0x" << state << std::uppercase << ", extra=0x" << extra
         << ", Category=0x" << category << ", extended_info='" << std::string(extended.c_str()) << "' }";
    return line.str();
  }
  /// @return the payload of its answer
  fake::Bytes Answer() const { return Words({0, board, cpu, state, extra}); }
};

/// A board with a black box; the tests start the service.
class ResetTest : public ServiceOnBoardTest {
 protected:
  static constexpr EAaSysLogSeverityLevel kDebug = EAaSysLogSeverityLevel_Debug;
  static constexpr EAaSysLogSeverityLevel kInfo = EAaSysLogSeverityLevel_Info;
  static constexpr EAaSysLogSeverityLevel kWarning = EAaSysLogSeverityLevel_Warning;
  static constexpr EAaSysLogSeverityLevel kError = EAaSysLogSeverityLevel_Error;

  ResetTest() { fake::MakeDir("/ffs/stb/config/lifedata"); }

  void StartService() {
    Start(EUnitVersion_Kela);
    ASSERT_EQ(BlackBoxData::getInstance()->isInitialized(), 1u);
  }
  /// Starts the service with resets in its history.
  void StartWith(const std::string& entries) {
    fake::SetFile(kBoardFile, "RESET Reason and timestamp:\n" + entries + "SW VERSION:\n");
    StartService();
  }

  /// Announces a reset.
  /// @return the only answer
  static fake::Message Announce(const ResetRequest& request) {
    fake::ClearSentMessages();
    return AnswerTo(request.Message(), kResetResp);
  }

  /// @return the reasons in the board file, oldest first, without times and boot states
  static std::vector<std::string> Reasons() {
    std::vector<std::string> reasons;
    std::istringstream history(HistoryIn(kBoardFile));
    for (std::string line; std::getline(history, line);) {
      EXPECT_EQ(line.substr(0, 2), "20") << line;
      EXPECT_NE(line.rfind(" Runnig partition: "), std::string::npos) << line;
      reasons.push_back(line.substr(0, line.rfind(" Runnig partition: ")).erase(0, kNoon.size()));
    }
    return reasons;
  }

  /// @return the log lines of the reset request's handler, but for its arrival and its answer
  static std::vector<fake::LogLine> LinesOfTheHandler() {
    std::vector<fake::LogLine> lines = fake::LogLines();
    std::erase_if(lines, [](const fake::LogLine& line) {
      return !line.text.starts_with("HandleApi2ResetReqMsg(): ") || line.text.find("): Received ") != std::string::npos;
    });
    return lines;
  }
  static fake::LogLine Line(EAaSysLogSeverityLevel level, const std::string& text) { return {level, 131143, text}; }

  BlackBoxBoard m_board;
};

}  // namespace ps::hwapi::common::climate
