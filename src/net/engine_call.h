// How handlers reach the engines of the library, which can be gone: after the library's stop, and
// in a child of fork.

#ifndef KALVOBASE_SRC_NET_ENGINE_CALL_H_
#define KALVOBASE_SRC_NET_ENGINE_CALL_H_

#include <cstdint>

#include "net/mp_socket_manager.h"

// An engine pointer and its epoch. Invalid after the library stops or the process forks.
class MP_EngineRef {
 public:
  MP_EngineRef() = default;
  explicit MP_EngineRef(MP_SocketManager* engine);

 private:
  friend class MP_EngineCall;

  MP_SocketManager* engine_ = nullptr;
  std::uint32_t time_ = 0;
};

// As long as one of these lives, its engine does.
class MP_EngineCall {
 public:
  explicit MP_EngineCall(const MP_EngineRef& ref);
  MP_EngineCall(const MP_EngineCall&) = delete;
  MP_EngineCall& operator=(const MP_EngineCall&) = delete;
  ~MP_EngineCall();

  // Null if there is none.
  MP_SocketManager* engine() const { return engine_; }

  // No engine of before is found any more.
  static void EndTime();

  // For a child of fork: nobody is inside but, perhaps, the calling thread.
  static void ForgetOthers();

  // Whether no call is inside an engine, waiting for that up to `ms` milliseconds.
  static bool WaitUntilNone(std::uint32_t ms);

 private:
  // Counts the calls that are under way. Threads take the counters in turn, so that few share one.
  struct alignas(64) Counter;
  static Counter counters_[];

  Counter* const counter_;
  MP_SocketManager* engine_;
};

#endif  // KALVOBASE_SRC_NET_ENGINE_CALL_H_
