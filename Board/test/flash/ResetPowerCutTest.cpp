// The power is cut at any moment of an announced reset: the history holds all its old entries, and the new one or not.
#include "AaSysCom.h"
#include "ClimateServiceBlackBoxData.h"
#include "Endpoints.h"
#include "ScenarioTest.h"
#include "messages/MessageIds.h"
#include "messages/Reset.h"

#include <cstdio>
#include <cstring>
#include <sstream>

namespace flash {
namespace {

using ps::hwapi::common::climate::ClimateServiceBlackBoxData;
using History = std::vector<std::string>;

constexpr const char* kBoardFile = "/ffs/fs1/config/lifedata/blackbox";
constexpr const char* kStandbyFile = "/ffs/fs2/config/lifedata/blackbox";
/// Two less than are kept, so that both announcements find room.
constexpr int kOldEntries = 8;

History OldHistory() {
  History entries;
  for (int i = 1; i <= kOldEntries; ++i) {
    entries.push_back("2026-03-0" + std::to_string(i) +
                      "T10:00:00.000Z Warm reset : User (old) Runnig partition: /ffs/fs1 RLC: 0");
  }
  return entries;
}

std::string EntryFor(const std::string& info) {
  return "2026-03-14T15:09:26.000Z Cold reset : User (" + info + ") Runnig partition: /ffs/fs1 RLC: 0";
}

void PutHistory(Tree& flash) {
  std::string text = "TIMESTAMP: old\nRESET Reason and timestamp:\n";
  for (const std::string& entry : OldHistory()) text += entry + "\n";
  flash[kBoardFile] = {.mode = 0600, .content = text + "SW VERSION: active: old\n"};
}

/// Hands the service the announcement of a cold reset, as it comes from the reset service.
void Announce(const char* info) {
  const TAaSysComNid node = AaSysComGetOwnNid();
  void* msg =
      AaSysComMsgCreate(API2_RESET_REQ_MSG, sizeof(SApi2ResetReq), AaSysComSicadGet(HWAPI_TEMPERATURE_SERVICE, node));
  SApi2ResetReq request{};
  request.target_board = 1;
  request.target_cpu = 1;
  request.reset_state = EHwapiResetServiceResetState_ON;
  request.reset_extra = EHwapiResetServiceMCUResetType_ColdReset;
  request.reset_reason.category = EResetCategory_User;
  std::snprintf(request.reset_reason.extended_info, sizeof request.reset_reason.extended_info, "%s", info);
  std::memcpy(AaSysComMsgGetPayload(msg), &request, sizeof request);
  AaSysComMsgSetSender(msg, AaSysComSicadGet(HWAPI_RESET_SERVICE, node));
  ClimateServiceBlackBoxData(EUnitVersion_Kela, EUnitType_Kel).HandleApi2ResetReqMsg(msg);
  AaSysComMsgDestroy(&msg);
}

constexpr Scenario kFirstReset = {.name = "reset_request",
                                  .prepare = PutHistory,
                                  .use = nullptr,
                                  .change = [](Scenario::BlackBoxData&) { Announce("first"); },
                                  .mostBlocks = 48};
constexpr Scenario kNextReset = {
    .name = "next_reset_request", .prepare = nullptr, .use = nullptr, .change = [](Scenario::BlackBoxData&) {
      Announce("next");
    }};

/// @return the reset history in a file; empty when there is none
History HistoryIn(const Tree& flash, const char* path) {
  const auto file = flash.find(path);
  std::istringstream text(file != flash.end() ? file->second.content : "");
  History entries;
  bool isInside = false;
  for (std::string line; std::getline(text, line);) {
    if (line.starts_with("SW VERSION:")) isInside = false;
    if (isInside) entries.push_back(line);
    if (line.starts_with("RESET Reason")) isInside = true;
  }
  return entries;
}

std::string Listed(const History& history) {
  std::string text;
  for (const std::string& entry : history) text += "  " + entry + "\n";
  return text;
}

class ResetPowerCut : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::string problem = m_test.Prepare(kFirstReset);
    if (!problem.empty()) GTEST_SKIP() << problem;
  }

  /// @return the old history, the announced reset behind it
  static History With(const std::string& info) {
    History history = OldHistory();
    history.push_back(EntryFor(info));
    return history;
  }
  /// Judges what the power cut left.
  Faults Judge(const Tree& state, bool atEnd) const {
    Faults faults = atEnd ? m_test.Expected().FaultsOfDone(state) : m_test.Expected().FaultsOf(state);
    const History history = HistoryIn(state, kBoardFile);
    const bool isStored = history == With("first");
    if (!isStored && (atEnd || history != OldHistory())) faults.push_back("the history is\n" + Listed(history));
    return faults;
  }
  /// Starts the service on that, announces one more reset, and judges what both left.
  Faults JudgeRestart(const Tree& state) const {
    LayOutFlash(state);
    const auto problem = Live([] { return StartAndChange(kNextReset, nullptr); });
    if (!problem) return {"the service ended:\n" + Log()};
    if (!problem->empty()) return {*problem + ":\n" + Log()};
    const Tree after = ReadFlash();
    History expected = HistoryIn(state, kBoardFile);
    expected.push_back(EntryFor("next"));
    Faults faults = m_test.Expected().StraysOf(after);
    for (const char* file : {kBoardFile, kStandbyFile}) {
      const History history = HistoryIn(after, file);
      if (history != expected) faults.push_back(std::string(file) + " has the history\n" + Listed(history));
    }
    return faults;
  }

  ScenarioTest m_test;
};

TEST_F(ResetPowerCut, LeavesAllOldEntriesAndTheNewOneOrNot) {
  m_test.ExpectNoFaults(kFirstReset.mostBlocks, [this](const Tree& state, bool atEnd) {
    const Faults faults = Judge(state, atEnd);
    return faults.empty() ? JudgeRestart(state) : faults;
  });
}

TEST_F(ResetPowerCut, IsNoticedWhereFilesAreNotSynced) {
  EXPECT_FALSE(m_test
                   .FaultsWithout(Operation::Kind::Sync, kFirstReset.mostBlocks,
                                  [this](const Tree& state, bool atEnd) { return Judge(state, atEnd); })
                   .empty());
}

}  // namespace
}  // namespace flash
