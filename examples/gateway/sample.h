// One measured value of one moment.

#ifndef GATEWAY_SAMPLE_H_
#define GATEWAY_SAMPLE_H_

#include <kalvobase/kalvobase.h>

class Sample : public Kalvo_QueueObject {
 public:
  Sample(const char* metric, double measured, const char* measuredIn, long moment);

  const char* GetTypename(Kalvo_String* out) override;

  // Orders samples by metric, then by time.
  static int ByMetric(Kalvo_QueueObject* a, Kalvo_QueueObject* b, void* context);

  Kalvo_String name;
  Kalvo_String unit;
  double value;
  long time;
};

#endif  // GATEWAY_SAMPLE_H_
