#include "TempTypes.h"

#include "CommandError.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

TEST(SensorType, IsKnownByNameInAnyCase) {
  EXPECT_EQ(ParseSensorType("Kel"), ETempSensorType_Kel);
  EXPECT_EQ(ParseSensorType("kelocxodcm"), ETempSensorType_KelOcxoDcm);
  EXPECT_EQ(ParseSensorType("DAXALL"), ETempSensorType_DaxAll);
}

TEST(SensorType, IsKnownByNumber) {
  EXPECT_EQ(ParseSensorType("6"), ETempSensorType_Kel);
  EXPECT_EQ(ParseSensorType("99"), static_cast<ETempSensorType>(99));
}

TEST(SensorType, WithAnUnknownNameIsAUsageError) {
  try {
    ParseSensorType("Kell");
    FAIL();
  } catch (const CommandError& error) {
    EXPECT_EQ(error.Code(), ExitCode::Usage);
  }
}

TEST(SensorType, ReadsBackAsItIsWritten) {
  for (u32 type = 0; type <= ETempSensorType_Backplane; ++type) EXPECT_EQ(ParseSensorType(SensorTypeText(type)), type);
}

TEST(TempError, AlreadyStartedSaysWhatToDo) {
  EXPECT_NE(TempErrorMeaning(ETempMeasError_AlreadyStarted, "Kel").find("clmctl temp stop Kel"), std::string::npos);
}

TEST(TempError, WithoutANameIsShownByItsNumber) {
  EXPECT_EQ(TempErrorName(2), "Unknown");
  EXPECT_NE(TempErrorMeaning(2, "Kel").find("2"), std::string::npos);
}

}  // namespace
}  // namespace clmctl
