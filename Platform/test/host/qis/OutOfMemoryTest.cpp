// The platform when memory ends: a function says that it failed, no exception leaves it, and what was the caller's
// stays the caller's.
#include "AaConfig.h"
#include "AaFile.h"
#include "AaSem.h"
#include "AaSysCom.h"
#include "AaSysTime.h"
#include "AaTrbl.h"
#include "FailingMemory.h"
#include "Support.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <ostream>
#include <string>

namespace hwapi::test {
namespace {

using ps::hwapi::common::climate::EnoughMemory;
using ps::hwapi::common::climate::FailingAllocation;

constexpr u32 kMsg = 0x1234;
constexpr u32 kHour = 3'600'000'000;
constexpr char kTag[] = "test.a tag with a long name";
constexpr const char* kFileName = "a troubleshooting file with a long name";

void* Nothing(void* /*argument*/) { return nullptr; }
void Ignore(const char* /*name*/, const void* /*value*/, u32 /*size*/) {}

/// Calls of the platform. Each gives 0 when it did what it is for, else the error that it told.
class Calls : public ::testing::Test {
 public:
  int StartTimer() {
    void* msg = AaSysComMsgCreate(kMsg, 8, 0);
    TAaSysTimerId timer = 0;
    const int error = AaSysTimermCreate(&timer, kHour, kHour, msg);
    if (error == 0) return AaSysTimerDelete(timer);
    EXPECT_EQ(AaSysComMsgGetId(msg), kMsg) << "it stays the caller's";
    AaSysComMsgDestroy(&msg);
    return error;
  }
  int StartEu() {
    TAaProEuId eu = 0;
    return AaSysComEuCreateAndStart(&eu, "an execution unit", &Nothing, 0, 5, kTag, sizeof kTag);
  }
  int RegisterUser() {
    const u32 task = AaSysComUserRegister(0, m_eu);
    return task != 0 ? AaSysComUserDeregister(task) : ENOMEM;
  }
  int CreateSemaphore() {
    TAaSem* const semaphore = AaSemCreateC(1);
    return semaphore != nullptr ? AaSemDestroy(semaphore) : ENOMEM;
  }
  int SetTag() { return AaConfigTagPublicSet(kTag, kTag, sizeof kTag); }
  int GetTag() {
    void* value = nullptr;
    const int error = AaConfigTagGet(kTag, &value);
    AaMemUnRefDbg(value, __FILE__, __LINE__);
    return error;
  }
  int GetTagU32() {
    u32 value = 0;
    return AaConfigTagGetU32(kTag, &value);
  }
  int ObserveTag() { return AaConfigTagRegister(kTag, &Ignore); }
  int OpenToRead() { return Open("r"); }
  int OpenToWrite() { return Open("w"); }
  int Copy() { return AaFileCopy(m_file.c_str(), m_copy.c_str()); }
  int MakeDir() { return AaFileCreateDir(m_folder.c_str()); }
  int ListDir() {
    char** names = nullptr;
    u32 count = 0;
    const int error = AaFileListDir(m_board.Folder().c_str(), &names, &count);
    AaFileFreeListDirArray(names, count);
    return error;
  }
  int RegisterFile() {
    const int result = AaTrblFileRegister(kFileName, m_file.c_str(), EAaTrblFilePriority_Normal, 0, nullptr, nullptr,
                                          nullptr, nullptr);
    if (result != EAaTrblRet_Ok || AaTrblFileUnregister(kFileName) == EAaTrblRet_Ok) return result;
    const EnoughMemory memory;
    EXPECT_EQ(AaTrblFileUnregister(kFileName), EAaTrblRet_Ok);
    return EAaTrblRet_Failed;
  }

 protected:
  Calls() { std::ofstream(m_file) << "content\n"; }

 private:
  int Open(const char* mode) {
    TAaFile* const file = AaFileOpen(m_file.c_str(), mode);
    return file != nullptr ? AaFileClose(file) : ENOMEM;
  }

  const Board m_board;
  const TAaProEuId m_eu = AaProEuCurrent();
  const std::string m_file = m_board.Folder() + "/a file with a long name";
  const std::string m_copy = m_file + ".copy";
  const std::string m_folder = m_board.Folder() + "/a folder/with a long name";
};

struct CallRow {
  const char* name;
  int (Calls::*call)();
  int error = ENOMEM;     ///< what it tells when memory ends
  bool needsTag = false;  ///< that there is a tag to get, of four bytes

  friend std::ostream& operator<<(std::ostream& out, const CallRow& row) { return out << row.name; }
};

class OutOfMemoryTest : public Calls, public ::testing::WithParamInterface<CallRow> {
 protected:
  OutOfMemoryTest() {
    if (GetParam().needsTag) {
      EXPECT_EQ(AaConfigTagPublicSet(kTag, "four", 4), 0);
    }
  }

  /// Makes the call again and again; each time the next of its allocations fails, until it has no more.
  /// @param isRight says it of a result
  template <typename Predicate>
  void FailEachAllocation(Predicate isRight) {
    const ErrorOutput log;
    for (unsigned nth = 1;; ++nth) {
      const FailingAllocation failing(nth);
      const int error = (this->*GetParam().call)();
      if (!failing.Happened()) {
        EXPECT_EQ(error, 0) << "with enough memory: " << log.Text();
        EXPECT_GT(nth, 1u) << "it needs no memory";
        return;
      }
      EXPECT_TRUE(isRight(error)) << "allocation " << nth << ": " << error;
    }
  }
};

TEST_P(OutOfMemoryTest, IsToldAsAnErrorByTheFirstCall) {
  FailEachAllocation([](int error) { return error == GetParam().error || error == 0; });  // 0: it could do without
}

TEST_P(OutOfMemoryTest, IsToldAsAnErrorByALaterCall) {
  EXPECT_EQ((this->*GetParam().call)(), 0);
  FailEachAllocation([](int error) { return error == GetParam().error; });
}

INSTANTIATE_TEST_SUITE_P(
    Platform, OutOfMemoryTest,
    testing::Values(CallRow{"StartOfATimer", &Calls::StartTimer}, CallRow{"StartOfAnEu", &Calls::StartEu},
                    CallRow{"User", &Calls::RegisterUser}, CallRow{"Semaphore", &Calls::CreateSemaphore},
                    CallRow{"SetOfATag", &Calls::SetTag},
                    CallRow{.name = "Tag", .call = &Calls::GetTag, .needsTag = true},
                    CallRow{.name = "TagWithANumber", .call = &Calls::GetTagU32, .needsTag = true},
                    CallRow{"ObserverOfATag", &Calls::ObserveTag}, CallRow{"FileToRead", &Calls::OpenToRead},
                    CallRow{"FileToWrite", &Calls::OpenToWrite}, CallRow{"CopyOfAFile", &Calls::Copy},
                    CallRow{"NewFolder", &Calls::MakeDir}, CallRow{"Folder", &Calls::ListDir},
                    CallRow{"TroubleshootingFile", &Calls::RegisterFile, EAaTrblRet_Failed}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace hwapi::test
