// The autodetection service of the simulated board: what it tells its clients, and what follows when it comes and goes.
#include "ProcessingUnitBoard.h"
#include "Wire.h"

#include <algorithm>

namespace boardtest {
namespace {

using AutodetectionTest = ProcessingUnitBoardTest;

/// A request to be told about units, or not to be any more; waits for so many messages.
std::vector<std::string> Registration(bool wanted, unsigned expected) {
  return {"send",
          "--to",
          "autodet",
          "--id",
          "0xbbc",
          "--hex",
          Words({42, 0, wanted ? 1u : 0u, 0, 0, 0}),
          "--expect",
          std::to_string(expected),
          "--timeout",
          "60s"};
}

TEST_F(AutodetectionTest, RequestIsAnsweredAndUnitsThatArePresentAreTold) {
  UpWithClient();
  Plug("Dax2", "0x16000", "Sleep");
  const Result answer = Clmctl(Registration(true, 2));
  ASSERT_EQ(answer.status, 0) << answer.err;
  EXPECT_EQ(MessageIds(answer.out), (std::vector<std::string>{"0xbbd", "0xbbe"}));
  EXPECT_NE(answer.out.find("0xbbd 1/1/0x4b3 " + Words({42, 0}) + "\n"), std::string::npos) << answer.out;
  EXPECT_NE(answer.out.find("0xbbe 1/1/0x4b3 " + Words({6, 0x13, 0x16, 0x16000})), std::string::npos) << answer.out;
}

TEST_F(AutodetectionTest, IndicationHasTheSizeOfItsRecord) {
  UpWithClient();
  Plug("Dax1", "basic");
  const Result answer = Clmctl(Registration(true, 2));
  const std::size_t payload = answer.out.rfind(' ') + 1;
  EXPECT_EQ(answer.out.size() - 1 - payload, 2 * 84u) << answer.out;
}

TEST_F(AutodetectionTest, EmptySlotsAreNotTold) {
  UpWithClient();
  auto client = StartClmctl(Registration(true, 2));
  ASSERT_TRUE(client->WaitForText("0xbbd"));
  Plug("Dax3", "m");
  const Result told = client->Wait();
  EXPECT_EQ(told.status, 0) << told.err;
  EXPECT_NE(told.out.find("0xbbe 1/1/0x4b3 " + Words({0, 0x14})), std::string::npos) << told.out;
}

TEST_F(AutodetectionTest, ClientThatWantsNoIndicationsGetsTheAnswerOnly) {
  UpWithClient();
  Plug("Dax1", "m");
  std::vector<std::string> request = Registration(false, 2);
  request.insert(request.end(), {"--sender", "0x7000"});
  auto client = StartClmctl(request);
  ASSERT_TRUE(client->WaitForText("0xbbd"));
  Plug("Dax2", "m");
  ASSERT_EQ(Clmctl({"send", "--to", "0x7000", "--id", "0x77", "--expect", "0"}).status, 0);
  EXPECT_EQ(MessageIds(client->Wait().out), (std::vector<std::string>{"0xbbd", "0x77"}));
}

TEST_F(AutodetectionTest, EveryClientIsToldOfAChange) {
  UpWithClient();
  auto client = StartClmctl(Registration(true, 3));
  ASSERT_TRUE(client->WaitForText("0xbbd"));
  UnitWatch watch = Watch("Dax3");
  Plug("Dax3", "m", "Plugged");
  EXPECT_TRUE(client->WaitForText("0xbbe 1/1/0x4b3 " + Words({7, 0x14, 0x0C, 0x0C000}))) << client->SoFar().out;
  EXPECT_TRUE(watch.Shows(UnitNames(3, "m"))) << watch.Newest();
  Unplug("Dax3");
  EXPECT_TRUE(client->WaitForText("0xbbe 1/1/0x4b3 " + Words({2, 0x14, 0x0C, 0x0C000}))) << client->SoFar().out;
  EXPECT_TRUE(watch.Shows({})) << watch.Newest();
}

TEST_F(AutodetectionTest, ClientThatHasGoneIsForgotten) {
  Up({"--no-daemon"});
  auto client = StartClmctl(Registration(true, 2));
  ASSERT_TRUE(client->WaitForText("0xbbd"));
  EXPECT_EQ(Boardsim({"plug", "Dax1", "m"}).err, "");
  ASSERT_EQ(client->Wait().status, 0);
  EXPECT_NE(Boardsim({"unplug", "Dax1"}).err.find("no client"), std::string::npos);
}

TEST_F(AutodetectionTest, ServiceThatGoesAndComesBackChangesNothing) {
  UpWithClient();
  Plug("Dax1", "m");
  UnitWatch watch = Watch("DaxAll");
  ASSERT_TRUE(watch.Shows(UnitNames(1, "m"))) << watch.Newest();
  GoOffline();
  EXPECT_EQ(Clmctl({"tag", "get", "app.hwapi.online.4b3"}).out, "app.hwapi.online.4b3 7\n");
  EXPECT_EQ(Measured("Dax1"), UnitNames(1, "m"));
  GoOnline();
  Plug("Dax3", "basic");
  EXPECT_TRUE(watch.Shows(UnitNames(1, "m") + UnitNames(3, "basic"))) << watch.Newest();
}

TEST_F(AutodetectionTest, UnitThatCameWhileTheServiceWasAwayIsToldWhenItIsBack) {
  UpWithClient();
  GoOffline();
  const Result plug = Boardsim({"plug", "Dax1", "basic"});
  EXPECT_EQ(plug.status, 0);
  EXPECT_NE(plug.err.find("autodet online"), std::string::npos) << plug.err;
  EXPECT_EQ(Measured("DaxAll"), Names{});
  GoOnline();
  EXPECT_TRUE(Eventually([this] { return Measured("DaxAll") == UnitNames(1, "basic"); }));
}

TEST_F(AutodetectionTest, UnitThatWentWhileTheServiceWasAwayFailsUntilItIsBack) {
  UpWithClient();
  Plug("Dax2", "p");
  UnitWatch watch = Watch("Dax2");
  ASSERT_TRUE(watch.Shows(UnitNames(2, "p"))) << watch.Newest();
  GoOffline();
  Unplug("Dax2");
  EXPECT_TRUE(Eventually([&] {
    const auto readings = watch.Next();
    const auto failed = [](const nlohmann::json& reading) { return reading["driver_error"] == -1; };
    return readings.size() == 8 && std::all_of(readings.begin(), readings.end(), failed);
  })) << watch.Newest();
  GoOnline();
  EXPECT_TRUE(watch.Shows({})) << watch.Newest();
}

TEST_F(AutodetectionTest, DaemonThatStartsWhileTheServiceIsAwayWaitsForIt) {
  UpWithClient();
  Plug("Dax1", "m");
  GoOffline();
  RestartDaemon();
  EXPECT_EQ(Measured("DaxAll"), Names{});
  GoOnline();
  EXPECT_TRUE(Eventually([this] { return Measured("DaxAll") == UnitNames(1, "m"); }));
}

TEST_F(AutodetectionTest, GoingTwiceAndComingTwiceIsHarmless) {
  UpWithClient();
  for (const char* state : {"online", "offline", "offline", "online", "online"}) {
    EXPECT_EQ(Boardsim({"autodet", state}).status, 0) << state;
  }
  EXPECT_EQ(Clmctl({"tag", "get", "app.hwapi.online.4b3"}).out, "app.hwapi.online.4b3 6\n");
  EXPECT_EQ(Clmctl(Registration(true, 1)).status, 0);
}

TEST_F(AutodetectionTest, ServiceWhoseTaskAnotherProcessHasCannotComeBack) {
  UpWithClient();
  GoOffline();
  auto other = StartClmctl({"send", "--to", "temperature", "--id", "0x2b29", "--hex", Words({1, 6, 0, 0, 0}),
                            "--sender", "autodet", "--expect", "2", "--timeout", "60s"});
  ASSERT_TRUE(other->WaitForText("0x2b2a"));  // from here on it has the task
  const Result online = Boardsim({"autodet", "online"});
  EXPECT_EQ(online.status, 1);
  EXPECT_NE(online.err.find("another process"), std::string::npos) << online.err;
  other.reset();
  EXPECT_EQ(Boardsim({"autodet", "online"}).status, 0);
}

TEST_F(AutodetectionTest, UnknownUnitIsLoggedAndChangesNothing) {
  UpWithClient();
  Plug("Dax1", "m");
  ASSERT_TRUE(Eventually([this] { return Measured("DaxAll") == UnitNames(1, "m"); }));
  ASSERT_EQ(
      Clmctl({"send", "--to", "temperature", "--id", "0xbbe", "--expect", "0", "--hex", Words({2, 0x15, 0, 0})}).status,
      0);
  EXPECT_TRUE(Eventually([this] { return DaemonLog().find("Undetermined unit_id: 21\n") != std::string::npos; }));
  EXPECT_EQ(Measured("DaxAll"), UnitNames(1, "m"));
}

TEST_F(AutodetectionTest, UnitOfAnotherCabinetIsInTheSameSlot) {
  UpWithClient();
  UnitWatch watch = Watch("DaxAll");
  for (const std::uint32_t unit : {0x62u, 0x43u}) {
    ASSERT_EQ(
        Clmctl({"send", "--to", "temperature", "--id", "0xbbe", "--expect", "0", "--hex", Words({0, unit, 0, 0x11000})})
            .status,
        0);
  }
  EXPECT_TRUE(watch.Shows(UnitNames(1, "basic") + UnitNames(2, "p"))) << watch.Newest();
}

}  // namespace
}  // namespace boardtest
