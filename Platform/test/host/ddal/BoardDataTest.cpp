// What the board tells of itself.
#include "TestBoard.h"
#include "ddal_board.h"
#include "ddal_error.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class BoardDataTest : public testing::Test {
 protected:
  void ShowMemoryErrors(const char* controller, const char* counter, const char* count) {
    const auto folder = m_board.Folder() / "sys/devices/system/edac/mc" / controller;
    std::filesystem::create_directories(folder);
    TestBoard::Write(folder / counter, std::string(count) + '\n');
  }

  TestBoard m_board;
};

TEST_F(BoardDataTest, WhatIsDescribedIsTold) {
  m_board.Describe(
      "[backplane]\ntype = 1\n[boot]\nactive = 54\nimage = 1\nreset_loop_count = 3\n[devicetree]\nisti = -4");
  int type = 0;
  u32 fileSystem = 0, image = 0;
  i32 count = 0, isti = 0;
  EXPECT_EQ(ddal_bp_3hu_backplane_type_get(&type), DDAL_OK);
  EXPECT_EQ(type, 1);
  EXPECT_EQ(ddal_boot_get_linux_active(&fileSystem), DDAL_OK);
  EXPECT_EQ(fileSystem, DDAL_FFS_FS2);
  EXPECT_EQ(ddal_boot_get_linux_id(&image), DDAL_OK);
  EXPECT_EQ(image, 1u);
  EXPECT_EQ(ddal_boot_get_reset_loop_count(&count), DDAL_OK);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(ddal_devicetree_get_isti(0, &isti), DDAL_OK);
  EXPECT_EQ(isti, -4);
}

TEST_F(BoardDataTest, WhatIsNotDescribedIsNotSupported) {
  m_board.Describe("");
  int type = -77;
  u32 word = 77;
  EXPECT_EQ(ddal_bp_3hu_backplane_type_get(&type), DDAL_ERR_NOT_SUPPORTED);
  EXPECT_EQ(ddal_boot_get_linux_active(&word), DDAL_ERR_NOT_SUPPORTED);
  EXPECT_EQ(ddal_boot_get_linux_id(&word), DDAL_ERR_NOT_SUPPORTED);
  EXPECT_EQ(ddal_boot_get_reset_loop_count(&type), DDAL_ERR_NOT_SUPPORTED);
  EXPECT_EQ(ddal_devicetree_get_isti(0, &type), DDAL_ERR_NOT_SUPPORTED);
  EXPECT_EQ(type, -77);
  EXPECT_EQ(word, 77u);
}

TEST_F(BoardDataTest, NullOutputsAreInvalid) {
  m_board.Describe("");
  EXPECT_EQ(ddal_bp_3hu_backplane_type_get(nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_boot_get_linux_active(nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_boot_get_reset_loop_count(nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_ffs_is_mounted(DDAL_FFS_FS1, nullptr), DDAL_ERR_INVALID);
  EXPECT_EQ(ddal_devicetree_get_ecc_single(0, nullptr), DDAL_ERR_INVALID);
}

TEST_F(BoardDataTest, DescribedMountStatesReplaceTheMountTable) {
  m_board.Describe("[mounts]\nfs1 = 'writable'\nfs2 = 'read-only'");
  u32 state = 77;
  EXPECT_EQ(ddal_ffs_is_mounted(DDAL_FFS_FS1, &state), DDAL_OK);
  EXPECT_EQ(state, DDAL_FFS_WRITABLE);
  EXPECT_EQ(ddal_ffs_is_mounted(DDAL_FFS_FS2, &state), DDAL_OK);
  EXPECT_EQ(state, DDAL_FFS_READ_ONLY);
}

TEST_F(BoardDataTest, AFolderThatIsNoMountIsUnmounted) {
  m_board.Describe("");
  u32 state = 77;
  EXPECT_EQ(ddal_ffs_is_mounted(DDAL_FFS_FS2, &state), DDAL_OK);
  EXPECT_EQ(state, DDAL_FFS_UNMOUNTED);
}

/// What the exit status of a process in a root of its own means.
enum Outcome { kRight = 0, kWrong = 1, kNoRoot = 2 };

/// Makes the board's folder the root of this process, and mounts there the first file system, read-only or not.
bool EnterRoot(const std::string& root, unsigned long flags) {
  const std::string fileSystem = root + "/ffs/fs1";
  const std::string proc = root + "/proc";
  return (unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 || unshare(CLONE_NEWNS) == 0) &&
         mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         mount("/proc", proc.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0 &&
         mount("flash", fileSystem.c_str(), "tmpfs", flags, nullptr) == 0 && chroot(root.c_str()) == 0 &&
         setenv("HWAPI_BOARD", "/board.toml", 1) == 0;
}

class MountTableTest : public testing::TestWithParam<std::pair<unsigned long, u32>> {
 protected:
  MountTableTest() {
    m_board.Describe("");
    std::filesystem::create_directories(m_board.Folder() / "ffs/fs1");
    std::filesystem::create_directories(m_board.Folder() / "proc");
  }

  TestBoard m_board;
};

TEST_P(MountTableTest, TellsTheStateOfAFileSystem) {
  const auto [flags, expected] = GetParam();
  const pid_t child = fork();
  if (child == 0) {
    u32 state = 77;
    if (!EnterRoot(m_board.Folder(), flags)) _exit(kNoRoot);
    _exit(ddal_ffs_is_mounted(DDAL_FFS_FS1, &state) == DDAL_OK && state == expected ? kRight : kWrong);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  if (WIFEXITED(status) && WEXITSTATUS(status) == kNoRoot) GTEST_SKIP() << "mounts of one's own are refused here";
  EXPECT_EQ(status, 0);
}

INSTANTIATE_TEST_SUITE_P(, MountTableTest,
                         testing::Values(std::pair(0ul, u32{DDAL_FFS_WRITABLE}),
                                         std::pair(static_cast<unsigned long>(MS_RDONLY), u32{DDAL_FFS_READ_ONLY})),
                         [](const auto& tested) { return tested.param.first == 0 ? "Writable" : "ReadOnly"; });

TEST_F(BoardDataTest, OnlyTheTwoFileSystemsHaveAMountState) {
  m_board.Describe("");
  u32 state = 77;
  EXPECT_EQ(ddal_ffs_is_mounted(52, &state), DDAL_ERR_INVALID);
}

TEST_F(BoardDataTest, MemoryErrorsAreTheSumOverTheKernelsControllers) {
  m_board.Describe("");
  ShowMemoryErrors("mc0", "ce_count", "3");
  ShowMemoryErrors("mc1", "ce_count", "4");
  ShowMemoryErrors("mc0", "ue_count", "1");
  i32 count = 0;
  ASSERT_EQ(ddal_devicetree_get_ecc_single(0, &count), DDAL_OK);
  EXPECT_EQ(count, 7);
  ASSERT_EQ(ddal_devicetree_get_ecc_double(0, &count), DDAL_OK);
  EXPECT_EQ(count, 1);
}

TEST_F(BoardDataTest, MemoryErrorsThatAreTooManyToCountAreTheMost) {
  m_board.Describe("");
  ShowMemoryErrors("mc0", "ce_count", "4294967295");
  ShowMemoryErrors("mc1", "ce_count", "1");
  ShowMemoryErrors("mc0", "ue_count", "2147483640");
  ShowMemoryErrors("mc1", "ue_count", "100");
  i32 count = 0;
  ASSERT_EQ(ddal_devicetree_get_ecc_single(0, &count), DDAL_OK);
  EXPECT_EQ(count, INT32_MAX);
  ASSERT_EQ(ddal_devicetree_get_ecc_double(0, &count), DDAL_OK);
  EXPECT_EQ(count, INT32_MAX);
}

TEST_F(BoardDataTest, DescribedMemoryErrorsReplaceTheKernels) {
  m_board.Describe("[devicetree]\necc_single = 11");
  ShowMemoryErrors("mc0", "ce_count", "3");
  i32 count = 0;
  ASSERT_EQ(ddal_devicetree_get_ecc_single(0, &count), DDAL_OK);
  EXPECT_EQ(count, 11);
}

TEST_F(BoardDataTest, MemoryThatNobodyWatchesIsNotSupported) {
  m_board.Describe("");
  i32 count = 0;
  EXPECT_EQ(ddal_devicetree_get_ecc_single(0, &count), DDAL_ERR_NOT_SUPPORTED);
}

TEST_F(BoardDataTest, OnlyTheFirstValueOfAPropertyIsThere) {
  m_board.Describe("[devicetree]\nisti = 1");
  i32 value = 0;
  EXPECT_EQ(ddal_devicetree_get_isti(1, &value), DDAL_ERR_INVALID);
}

}  // namespace
