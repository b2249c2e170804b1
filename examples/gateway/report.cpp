#include "report.h"

#include <algorithm>
#include <cstdio>

#include "sample.h"

namespace {

// The samples of one metric, which follow each other in the sorted queue.
struct Metric {
  explicit Metric(Sample* sample)
      : first(sample), last(sample), least(sample->value), greatest(sample->value), count(0) {}

  void Add(Sample* sample) {
    last = sample;
    least = std::min(least, sample->value);
    greatest = std::max(greatest, sample->value);
    ++count;
  }

  Sample* first;
  Sample* last;
  double least;
  double greatest;
  int count;
};

void PrintMetric(const Metric& metric) {
  Kalvo_String span;
  span.FormatDate(metric.first->time, "hh:mi:ss")->strcat(" - ");
  span.Append_FormatDate(metric.last->time, "hh:mi:ss");
  Kalvo_String line;
  line.sprintf("%-26s%3d  %s%12.2f%12.2f%12.2f  %s", metric.first->name.c_str(), metric.count,
               span.c_str(), metric.last->value, metric.least, metric.greatest,
               metric.first->unit.c_str());
  line.TrimRight();
  std::puts(line.c_str());
}

}  // namespace

void PrintReport(Kalvo_Queue* samples) {
  Kalvo_String heading;
  heading.sprintf("%-26s%3s  %-19s%12s%12s%12s", "metric", "n", "taken", "last", "least",
                  "greatest");
  std::puts(heading.c_str());
  std::puts(Kalvo_String('-', static_cast<int>(heading.length())).c_str());
  Kalvo_QueueObject* object = samples->PeekHead(0);
  while (object != nullptr) {
    Sample* sample = static_cast<Sample*>(object);
    Metric metric(sample);
    for (; object != nullptr && static_cast<Sample*>(object)->name == metric.first->name;
         object = object->Next()) {
      metric.Add(static_cast<Sample*>(object));
    }
    PrintMetric(metric);
  }
}
