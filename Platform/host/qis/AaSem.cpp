// Counting semaphores.
#include "AaSem.h"

#include "Export.h"

#include <semaphore.h>

#include <cerrno>
#include <memory>
#include <new>

struct TAaSem {
  sem_t semaphore;
};

QIS_EXPORT TAaSem* AaSemCreateC(u32 initialCount) {
  std::unique_ptr<TAaSem> created(new (std::nothrow) TAaSem);
  return created && ::sem_init(&created->semaphore, 0, initialCount) == 0 ? created.release() : nullptr;
}

QIS_EXPORT i32 AaSemWait(TAaSem* semaphore) {
  if (semaphore == nullptr) {
    return EINVAL;
  }
  while (::sem_wait(&semaphore->semaphore) != 0) {
    if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

QIS_EXPORT i32 AaSemPost(TAaSem* semaphore) {
  if (semaphore == nullptr) {
    return EINVAL;
  }
  return ::sem_post(&semaphore->semaphore) == 0 ? 0 : errno;
}

QIS_EXPORT i32 AaSemDestroy(TAaSem* semaphore) {
  if (semaphore == nullptr) {
    return EINVAL;
  }
  ::sem_destroy(&semaphore->semaphore);
  delete semaphore;
  return 0;
}
