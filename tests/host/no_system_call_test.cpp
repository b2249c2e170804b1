// Uncontended locks and events make no system call: a process that may make none does them.

#include <gtest/gtest.h>
#include <kalvobase/kalvobase.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

TEST(NoSystemCall, LocksEventsAndQueues) {
#if defined(KALVOBASE_SANITIZED)
  GTEST_SKIP() << "the sanitizers make system calls of their own";
#endif
  const pid_t child = fork();
  if (child == 0) {
    Kalvo_Lock lock;
    Kalvo_Event manual(1, 0, nullptr);
    Kalvo_Event automatic(0, 0, nullptr);
    Kalvo_Queue queue(1, 1);
    Kalvo_QueueObject item;
    Kalvo_Semaphore semaphore;
    semaphore.Init(0, 9, nullptr);
    Kalvo_Mutex mutex;
    mutex.Init(0, nullptr);
    // The first insertion makes the records, the first lock learns the thread's number.
    queue.AddItemAtTail(&item);
    if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0) _exit(77);
    for (int i = 0; i < 100; ++i) {
      lock.Lock();
      lock.Lock();
      lock.Unlock();
      lock.Unlock();
      manual.Set();
      manual.Wait(1000);
      manual.Reset();
      automatic.Set();
      automatic.Wait(1000);
      queue.RemoveItemAtHead(1000);
      queue.AddItemAtTail(&item);
      semaphore.Post(1);
      semaphore.Wait(1000);
      mutex.Lock(1000);
      mutex.Unlock();
    }
    syscall(SYS_exit, 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 77) GTEST_SKIP() << "no seccomp here";
  EXPECT_EQ(status, 0);
}

}  // namespace
