#include <kalvobase/kalvobase.h>

#include <cstdio>

struct Job : Kalvo_QueueObject {
  Kalvo_String text;
};

unsigned long Work(void* jobs) {
  Kalvo_QueueObject* job;
  while ((job = static_cast<Kalvo_Queue*>(jobs)->RemoveItemAtHead(200)) != nullptr) {
    std::printf("[%-12s]\n", static_cast<Job*>(job)->text.c_str());
    delete job;
  }
  return 0;
}

int main() {
  Kalvo_Queue jobs(1, 1);  // with a lock and a signal: a queue between threads
  for (int i = 1; i <= 3; ++i) {
    Job* job = new Job;
    job->text.sprintf("job %02d of %d", i, 3);
    jobs.AddItemAtTail(job);
  }
  Kalvo_Thread worker(Work, &jobs, 1, "worker", nullptr, 0);
  while (jobs.GetItemCount() > 0) Kalvo_Thread_Sleep(1);
  worker.WaitFor(1000);  // killed if it has not ended by then
}
