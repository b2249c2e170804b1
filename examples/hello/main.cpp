#include <kalvobase/kalvobase.h>

#include <cstdio>
#include <thread>

struct Job : Kalvo_QueueObject {
  Kalvo_String text;
};

int main() {
  Kalvo_Queue jobs(1, 1);  // with a lock and a signal: a queue between threads
  std::thread worker([&jobs] {
    while (Job* job = static_cast<Job*>(jobs.RemoveItemAtHead(200))) {
      std::printf("[%-12s]\n", job->text.c_str());
      delete job;
    }
  });
  for (int i = 1; i <= 3; ++i) {
    Job* job = new Job;
    job->text.sprintf("job %02d of %d", i, 3);
    jobs.AddItemAtTail(job);
  }
  worker.join();
}
