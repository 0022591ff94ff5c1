/// @file
/// Threads. AaSysComEuCreateAndStart only writes the thread down; a test runs it when it likes, on its own thread.
#pragma once

#include "AaSysCom.h"
#include "fake/Recorder.h"

#include <functional>
#include <string>
#include <vector>

namespace fake {

/// A thread as it was asked for.
struct StartedThread {
  TAaProEuId eu = 0;
  std::string name;
  void* (*entry)(void*) = nullptr;
  u32 stackSize = 0;
  u32 priority = 0;
  Bytes argument;                 ///< copy of the argument; empty when its size was 0
  const void* pointer = nullptr;  ///< the argument itself when its size was 0
  bool hasRun = false;            ///< it ran, by RunThread or by a receive
};

/// How a run of a thread ended.
enum class ThreadEnd { Returned, Sleeping };

/// @return the threads started since the last Reset
std::vector<StartedThread> StartedThreads();

/// Runs @p action after each thread that was started, before the call that started it returns, e.g. to let the new
/// thread be the faster one. A Reset takes the action back.
void OnThreadStarted(std::function<void()> action);

/// Runs a thread from its beginning on the calling thread, with its own execution unit and a fresh copy of its
/// argument, until it returns or comes to its sleep number @p sleeps + 1; the sleeps before let virtual time pass. The
/// last sleep ends the run by an exception of an unnamed type, so a thread that catches everything cannot be run.
/// @param nth which one of several threads with that name, from 1
/// @throw std::invalid_argument when there is no such thread
ThreadEnd RunThread(const std::string& name, unsigned sleeps = 0, unsigned nth = 1);

}  // namespace fake
