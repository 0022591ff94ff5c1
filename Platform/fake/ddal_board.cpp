#include "ddal_board.h"

#include "Internal.h"
#include "ddal_error.h"
#include "fake/Board.h"

namespace fake {

BoardData& Board() {
  static auto& board = *new BoardData;
  return board;
}

}  // namespace fake

using namespace fake;
using namespace fake::internal;

namespace {

/// Answers a read of one datum.
template <typename T>
int Answer(Call call, T* output, const T& value) {
  const Lock lock;
  if (const auto failure = Record(std::move(call))) return *failure;
  if (output == nullptr) return DDAL_ERR_INVALID;
  *output = value;
  return DDAL_OK;
}

/// Answers a read of a datum of the device tree, of which there is number 0 only.
int AnswerAt(Call call, u32 index, i32* output, i32 value) {
  return Answer(std::move(call), index == 0 ? output : nullptr, value);
}

}  // namespace

extern "C" {

int ddal_bp_3hu_backplane_type_get(int* type) {
  return Answer({"ddal_bp_3hu_backplane_type_get"}, type, Board().backplaneType);
}

int ddal_boot_get_linux_active(u32* fileSystem) {
  return Answer({"ddal_boot_get_linux_active"}, fileSystem, Board().activeFileSystem);
}

int ddal_boot_get_linux_id(u32* image) { return Answer({"ddal_boot_get_linux_id"}, image, Board().runningImage); }

int ddal_boot_get_reset_loop_count(i32* count) {
  return Answer({"ddal_boot_get_reset_loop_count"}, count, Board().resetLoopCount);
}

int ddal_ffs_is_mounted(u32 fileSystem, u32* state) {
  const auto found = Board().mountStates.find(fileSystem);
  const bool known = found != Board().mountStates.end();
  return Answer<u32>({"ddal_ffs_is_mounted", fileSystem}, known ? state : nullptr, known ? found->second : 0);
}

int ddal_devicetree_get_isti(u32 index, i32* value) {
  return AnswerAt({"ddal_devicetree_get_isti", index}, index, value, Board().isti);
}

int ddal_devicetree_get_ecc_single(u32 index, i32* value) {
  return AnswerAt({"ddal_devicetree_get_ecc_single", index}, index, value, Board().eccSingle);
}

int ddal_devicetree_get_ecc_double(u32 index, i32* value) {
  return AnswerAt({"ddal_devicetree_get_ecc_double", index}, index, value, Board().eccDouble);
}

}  // extern "C"
