#include "sampler.h"

#include "sample.h"

Sampler::Sampler(Kalvo_Queue* queue, const Settings& settings)
    : queue_(queue), settings_(settings), done_(1, 0, nullptr), timer_(0) {}

Sampler::~Sampler() { ClearTimer(timer_); }

void Sampler::Run() {
  timer_ = SetRepeatTimer(static_cast<unsigned long>(settings_.rounds),
                          static_cast<unsigned long>(settings_.intervalMs), 0, 0, 0, nullptr);
  if (timer_ != 0) done_.Wait(0xFFFFFFFF);
  timer_ = 0;  // which ends with its last round
}

void Sampler::OnTimer(unsigned long, unsigned long count, unsigned long, unsigned long,
                      unsigned long, const char*) {
  Sample* sample = new Sample;
  TakeSample(settings_.interfaces, &sample->values);
  queue_->AddItemAtTail(sample);
  taken_.Inc();
  if (count == static_cast<unsigned long>(settings_.rounds)) done_.Set();
}
