/// Driver and file calls at which a thread can be held: the linker (--wrap) leads them through here.
#include "AaFile.h"
#include "HeldThread.h"
#include "HwapiUnit.h"
#include "ddal_board.h"
#include "ddal_product.h"

#include <chrono>
#include <utility>

namespace ps::hwapi::common::climate {
namespace {

/// After this, whoever should let the thread go on is taken to wait for it.
constexpr std::chrono::seconds kGiveUp(20);

thread_local HeldThread* t_self = nullptr;

}  // namespace

HeldThread::HeldThread(std::function<void()> work, std::string function, unsigned nth)
    : m_function(std::move(function)), m_momentsLeft(nth) {
  m_thread = std::thread([this, work = std::move(work)] {
    t_self = this;
    work();
    const std::lock_guard lock(m_mutex);
    m_arrived = true;
    m_changed.notify_all();
  });
  std::unique_lock lock(m_mutex);
  m_changed.wait(lock, [this] { return m_arrived; });
}

void HeldThread::GoOnTo(unsigned nth) {
  std::unique_lock lock(m_mutex);
  m_momentsLeft = nth;
  m_arrived = false;
  m_mayGoOn = true;
  m_changed.notify_all();
  m_changed.wait(lock, [this] { return m_arrived; });
}

void HeldThread::Finish() {
  {
    const std::lock_guard lock(m_mutex);
    m_mayGoOn = true;
    m_changed.notify_all();
  }
  if (m_thread.joinable()) m_thread.join();
}

void HeldThread::Moment(const char* function) {
  if (t_self != nullptr) t_self->Pass(function);
}

void HeldThread::Pass(const char* function) {
  if (!m_function.empty() && m_function != function) return;
  if (m_momentsLeft == 0 || --m_momentsLeft != 0) return;
  std::unique_lock lock(m_mutex);
  m_place = function;
  m_arrived = true;
  m_mayGoOn = false;
  m_changed.notify_all();
  m_gaveUp = !m_changed.wait_for(lock, kGiveUp, [this] { return m_mayGoOn; });
}

}  // namespace ps::hwapi::common::climate

using ps::hwapi::common::climate::HeldThread;

#define HELD(result, name, parameters, arguments)   \
  extern "C" result __real_##name parameters;       \
  extern "C" result __wrap_##name parameters {      \
    HeldThread::Moment(#name);                      \
    result const outcome = __real_##name arguments; \
    HeldThread::Moment(#name);                      \
    return outcome;                                 \
  }

HELD(TAaFile*, AaFileOpen, (const char* path, const char* mode), (path, mode))
HELD(i32, AaFileClose, (TAaFile * file), (file))
HELD(char*, AaFileReadLine, (char* buffer, u32 size, TAaFile* file), (buffer, size, file))
HELD(u32, AaFileWrite, (const void* data, u32 size, u32 count, TAaFile* file), (data, size, count, file))
HELD(i32, AaFileCopy, (const char* source, const char* target), (source, target))
HELD(i32, AaFileRemove, (const char* path), (path))
HELD(TBoolean, AaFileExists, (const char* path), (path))
HELD(u32, ApiGetModuleProductionCode, (char* buffer, u32 size), (buffer, size))
HELD(u32, ApiGetModuleSerialNumber, (char* buffer, u32 size), (buffer, size))
HELD(int, ddal_boot_get_linux_active, (u32 * fileSystem), (fileSystem))
HELD(int, ddal_boot_get_linux_id, (u32 * image), (image))
HELD(int, ddal_boot_get_reset_loop_count, (i32 * count), (count))
HELD(int, ddal_ffs_is_mounted, (u32 fileSystem, u32* state), (fileSystem, state))
HELD(int, ddal_devicetree_get_isti, (u32 index, i32* value), (index, value))
HELD(int, ddal_devicetree_get_ecc_single, (u32 index, i32* value), (index, value))
HELD(int, ddal_devicetree_get_ecc_double, (u32 index, i32* value), (index, value))
HELD(int, ddal_psu_get_product_data, (u32 selector, void* out), (selector, out))
HELD(int, ddal_filter_get_product_data, (u32 selector, void* out), (selector, out))
