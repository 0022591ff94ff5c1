/// @file
/// A value that some threads read while others change it, without a lock.
#pragma once

#include <atomic>
#include <memory>
#include <utility>

namespace ps::hwapi::common::climate {

/// Holds a value as a row of immutable versions: a change copies the newest version, alters the copy and publishes it
/// in one atomic step. Readers go on with the version that they found.
///
/// Read and Update may be called from every thread and at the same time. Neither ever waits for another thread: an
/// Update whose copy became outdated repeats its change on the newer version. Old versions are freed by the first
/// Update that finds no reader.
template <typename T>
class Published {
  struct Version {
    T value;
    Version* nextRetired = nullptr;
  };

 public:
  /// The value as it was when reading began; it stays as long as this object does. Keep it shortly.
  class Reader {
   public:
    explicit Reader(const Published& source) : m_source(source) {
      m_source.m_readers.fetch_add(1);
      m_version = m_source.m_current.load();
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() { m_source.m_readers.fetch_sub(1); }

    const T& operator*() const { return m_version->value; }
    const T* operator->() const { return &m_version->value; }

   private:
    friend class Published;
    const Published& m_source;
    Version* m_version;
  };

  Published() : m_current(new Version{}) {}
  Published(const Published&) = delete;
  Published& operator=(const Published&) = delete;
  /// Nobody may read or change the value any more.
  ~Published() {
    delete m_current.load();
    Free(m_retired.load());
  }

  Reader Read() const { return Reader(*this); }

  /// Publishes a changed value.
  /// @param change bool(T&): alters the value it is given; false leaves everything as it is. It is called again when
  ///               another thread published meanwhile, and may throw: nothing is published then.
  /// @return whether something was published
  /// @throw std::bad_alloc without memory for the copy
  template <typename Change>
  bool Update(Change change) {
    if (!Replace(change)) return false;
    Reclaim();
    return true;
  }

  /// Publishes a value in place of whatever there is.
  void Set(T value) {
    Update([&value](T& current) {
      current = value;
      return true;
    });
  }

 private:
  template <typename Change>
  bool Replace(Change& change) {
    const Reader pin(*this);  // while it counts, no version that can be seen here is freed
    Version* seen = pin.m_version;
    for (;;) {
      auto next = std::make_unique<Version>(Version{.value = seen->value});
      if (!change(next->value)) return false;
      if (m_current.compare_exchange_strong(seen, next.get())) {
        static_cast<void>(next.release());
        Retire(seen, seen);
        return true;
      }
    }
  }

  /// Puts a chain of versions among those to be freed.
  void Retire(Version* first, Version* last) {
    last->nextRetired = m_retired.load();
    while (!m_retired.compare_exchange_weak(last->nextRetired, first)) {
    }
  }

  /// Frees what is retired, if nobody reads. Whoever begins to read after the list was taken finds a newer version, so
  /// that one moment without readers is enough.
  void Reclaim() {
    Version* const taken = m_retired.exchange(nullptr);
    if (taken == nullptr) return;
    if (m_readers.load() == 0) {
      Free(taken);
      return;
    }
    Version* last = taken;
    while (last->nextRetired != nullptr) last = last->nextRetired;
    Retire(taken, last);
  }

  static void Free(Version* list) {
    while (list != nullptr) delete std::exchange(list, list->nextRetired);
  }

  std::atomic<Version*> m_current;
  std::atomic<Version*> m_retired = nullptr;
  mutable std::atomic<unsigned> m_readers = 0;
};

}  // namespace ps::hwapi::common::climate
