/// @file
/// The fixture of the black box's tests.
#pragma once

#include "BlackBoxData.h"
#include "ServiceOnBoard.h"

#include <memory>
#include <optional>
#include <string>

namespace ps::hwapi::common::climate {

/// Where the board of these tests has its black-box files.
inline const std::string kLifedata = "/ffs/run/config/lifedata/";
inline const std::string kConfigFile = kLifedata + "blackbox_config";
inline const std::string kBoardFile = kLifedata + "blackbox";
inline const std::string kTraceFile = kLifedata + "blackbox_temperature";
inline const std::string kAlarmsFile = kLifedata + "blackbox_alarms";
inline const std::string kSfpFile = kLifedata + "blackbox_sfp";
inline const std::string kOamAlarmsFile = "/ffs/run/logs/alarms";
inline const std::string kOamSfpFile = "/ffs/run/logs/sfp";

/// What a black box finds around it: the tags that tell where its files are, their directory, and a reset service that
/// is online and answers.
struct BlackBoxBoard {
  BlackBoxBoard() {
    fake::SetTag("app.hwapi.blackbox.config.file", kConfigFile);
    fake::SetTag("app.hwapi.blackbox.file", kBoardFile);
    fake::SetTag("app.hwapi.blackbox.temperature.file", kTraceFile);
    fake::SetTag("app.hwapi.blackbox.alarms.file", kAlarmsFile);
    fake::SetTag("app.hwapi.blackbox.oam.alarms.file", kOamAlarmsFile);
    fake::SetTag("app.hwapi.blackbox.sfp.file", kSfpFile);
    fake::SetTag("app.hwapi.blackbox.oam.sfp.file", kOamSfpFile);
    fake::MakeDir(kLifedata);
    fake::MakeDir("/ffs/run/logs");
    fake::SetTag("app.hwapi.online.4a7", 6u);
    fake::OnSent(0x2BC5, [this](const fake::Message& request) {
      if (answer) fake::Deliver({.id = 0x2BC6, .payload = *answer, .sender = 0x010104A7, .receiver = request.sender});
    });
  }
  BlackBoxBoard(const BlackBoxBoard&) = delete;
  BlackBoxBoard& operator=(const BlackBoxBoard&) = delete;

  /// Lets the reset service tell how the board was last reset.
  void SetResetType(u32 type) { answer = Words({0, 0, type}); }

  /// Field, status and value of the reset service's answer; nothing: it does not answer. Until it is changed the type
  /// is one that the history passes over.
  std::optional<fake::Bytes> answer = Words({0, 0, 1});
};

/// A black box of the test's own, or the process's, on a board that has everything for it.
class BlackBoxTest : public fake::PlatformTest {
 protected:
  static constexpr EAaSysLogSeverityLevel kDebug = EAaSysLogSeverityLevel_Debug;
  static constexpr EAaSysLogSeverityLevel kInfo = EAaSysLogSeverityLevel_Info;
  static constexpr EAaSysLogSeverityLevel kWarning = EAaSysLogSeverityLevel_Warning;
  static constexpr EAaSysLogSeverityLevel kError = EAaSysLogSeverityLevel_Error;

  /// @param blackBox null: one of the test's own. Threads and callbacks use the process's, BlackBoxData::getInstance();
  ///                 a test with that one needs a process of its own.
  explicit BlackBoxTest(BlackBoxData* blackBox = nullptr)
      : m_own(blackBox == nullptr ? std::make_unique<BlackBoxData>() : nullptr),
        m_blackBox(blackBox == nullptr ? *m_own : *blackBox) {}

  /// Forgets the calls, log lines and sent messages so far.
  static void Forget() {
    fake::Clear();
    fake::ClearLog();
    fake::ClearSentMessages();
  }

  /// Initializes the black box and forgets what that did.
  void Init(EUnitType unitType = EUnitType_Kel) {
    EXPECT_EQ(m_blackBox.init(unitType), 1u);
    Forget();
  }

  /// Lets an initialized black box record readings, and forgets what that did.
  void EnableTrace() {
    EXPECT_EQ(m_blackBox.enableTemperatureTrace(), 1u);
    EXPECT_EQ(m_blackBox.isTemperatureTraceEnabled(), 1u);
    Forget();
  }

  /// @return what is in a file; "(no file)" when there is none
  static std::string File(const std::string& path) { return fake::FileContent(path).value_or("(no file)"); }

  /// @return the write of a text, whose items are its bytes
  static fake::Call Written(const std::string& text, const std::string& path) {
    return {"AaFileWrite", fake::Bytes(text.begin(), text.end()), path, 1, text.size()};
  }

  /// @return a log line of the service
  static fake::LogLine Line(EAaSysLogSeverityLevel level, const std::string& text) { return {level, 131143, text}; }

 private:
  std::unique_ptr<BlackBoxData> m_own;

 protected:
  BlackBoxBoard m_board;
  BlackBoxData& m_blackBox;
};

}  // namespace ps::hwapi::common::climate
