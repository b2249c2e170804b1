// Takes samples, again and again, whenever its timer fires.

#ifndef GATEWAY_SAMPLER_H_
#define GATEWAY_SAMPLER_H_

#include <kalvobase/kalvobase.h>

#include "settings.h"

class Sampler : public Kalvo_Timer {
 public:
  // Puts samples in `queue`. Both must outlive the sampler.
  Sampler(Kalvo_Queue* queue, const Settings& settings);
  ~Sampler() override;

  // Returns when the last round is over.
  void Run();

  long taken() { return taken_.Get(); }

  void OnTimer(unsigned long id, unsigned long count, unsigned long owner, unsigned long attr,
               unsigned long seq, const char* data) override;

 private:
  Kalvo_Queue* queue_;
  const Settings& settings_;
  Kalvo_Counter taken_;
  Kalvo_Event done_;
  unsigned long timer_;
};

#endif  // GATEWAY_SAMPLER_H_
