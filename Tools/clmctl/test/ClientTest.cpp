#include "Client.h"

#include "CommandError.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace clmctl {
namespace {

TEST(RequireBoard, TellsTheRunDirectoryWhenGivenTheStateFolder) {
  char name[] = "/tmp/clmctl-test-XXXXXX";
  const std::filesystem::path folder = mkdtemp(name);
  std::filesystem::create_directory(folder / "run");
  std::ofstream(folder / "run" / "board.toml") << "[unit]\n";
  unsetenv("HWAPI_BOARD");
  setenv("HWAPI_RUN", folder.c_str(), 1);
  std::string refusal;
  try {
    RequireBoard();
  } catch (const CommandError& error) {
    refusal = error.what();
  }
  EXPECT_NE(refusal.find("export HWAPI_RUN=" + (folder / "run").string()), std::string::npos) << refusal;
  setenv("HWAPI_RUN", (folder / "run").c_str(), 1);
  EXPECT_NO_THROW(RequireBoard());
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace clmctl
