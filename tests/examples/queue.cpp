#include "kalvobase/queue.h"

#include "examples/example.h"

int main() {
#include "queue_1.inc"
  assert(job != nullptr && jobs.GetItemCount() == 0);
}
