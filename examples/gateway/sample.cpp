#include "sample.h"

Sample::Sample(const char* metric, double measured, const char* measuredIn, long moment)
    : name(metric), unit(measuredIn), value(measured), time(moment) {}

const char* Sample::GetTypename(Kalvo_String* out) {
  return out != nullptr ? out->strcpy("sample")->c_str() : "sample";
}

int Sample::ByMetric(Kalvo_QueueObject* a, Kalvo_QueueObject* b, void*) {
  const Sample* left = static_cast<Sample*>(a);
  const Sample* right = static_cast<Sample*>(b);
  const int order = left->name.Compare(right->name.c_str());
  if (order != 0) return order;
  return left->time < right->time ? -1 : left->time > right->time;
}
