/// @file
/// Files of the board where no board is: a root directory of the test's own, for calls that go past the platform to the
/// C library.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace ps::hwapi::common::climate {

/// Gives this process, from the calling thread on, a root directory whose "/ffs" and "/rom" are its own; everything
/// else is as it was. Both are empty after every call, and gone with the process. Needs no rights, but a kernel that
/// lets users have namespaces. A process with threads and without rights starts itself anew with them first.
/// @return "" or why that is not possible here
std::string EnterPrivateRoot();

/// Writes a file below "/ffs" or "/rom", with the directories above it.
void WriteRealFile(const std::string& path, const std::string& content = "");
/// Makes a directory and those above it.
void MakeRealDir(const std::string& path);
/// Makes a symbolic link, with the directories above it.
void MakeRealLink(const std::string& path, const std::string& target);
/// @return the content of a file; "" when there is none
std::string RealFile(const std::string& path);
/// @return whether there is anything of that name
bool RealFileExists(const std::string& path);

/// A fixture whose tests have a private root; they are skipped where there is none to be had.
template <typename Fixture>
class InPrivateRoot : public Fixture {
 protected:
  void SetUp() override {
    Fixture::SetUp();
    const std::string problem = EnterPrivateRoot();
    if (!problem.empty()) GTEST_SKIP() << problem;
  }
};

}  // namespace ps::hwapi::common::climate
