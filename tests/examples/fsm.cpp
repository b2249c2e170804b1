#include "kalvobase/fsm.h"

#include "examples/example.h"

namespace {

int opened = 0;

#include "fsm_1.inc"

void Door::OnOpen(const char*, unsigned long, long, void*, Kalvo_FSM_State*, Kalvo_FSM_State*,
                  Kalvo_FSM_State* next) {
  assert(std::string(next->GetStateName()) == "open");
  ++opened;
}

}  // namespace

int main() {
#include "fsm_2.inc"
  assert(sound && opened == 1);
  service.HandleStringMsg("key", 0, &door, nullptr, nullptr);  // no rule in "open"
  assert(opened == 1);
  service.HandleIntMsg(1, 9, &door, nullptr, nullptr);
  service.HandleStringMsg("key", 0, &door, nullptr, nullptr);
  assert(opened == 2);
}
