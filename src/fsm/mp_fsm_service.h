// What is behind a Kalvo_FSMService.

#ifndef KALVOBASE_SRC_FSM_MP_FSM_SERVICE_H_
#define KALVOBASE_SRC_FSM_MP_FSM_SERVICE_H_

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "frame/hash_map.h"
#include "fsm/mp_fsm_event.h"
#include "fsm/mp_fsm_rule.h"
#include "fsm/mp_fsm_state.h"

class MP_FSMService {
 public:
  MP_FSMService();

  // --- Building and checking: mp_fsm_service.cpp --------------------------------------

  Kalvo_FSM_State* AddState(const char* name);
  Kalvo_FSM_State* GetState(const char* name);
  unsigned long GetStateCount() const { return states_.size(); }
  MP_FSM_State& sharedState() { return MP_FSM_State::Of(sharedState_); }
  int FinishAndCheck(FSM_LogCallback report);

  // --- Events: mp_fsm_dispatch.cpp ----------------------------------------------------

  void HandleInteger(unsigned long code, long value, Kalvo_FSM_Object* object, void* data,
                     FSM_LogCallback log);
  void HandleString(const char* name, long value, Kalvo_FSM_Object* object, void* data,
                    FSM_LogCallback log);

 private:
  template <class Event>
  class Delivery;

  Kalvo_FSM_State* InitialState() { return states_.front().get(); }
  Kalvo_FSM_State* NewState(const char* name);

  // Settles where a rule leads, once, as seen from `from`: a rule that leads there stays.
  void Resolve(MP_FSM_Rule* rule, const Kalvo_FSM_State* from) {
    if (rule->nextStatus <= FSM_NEXT_BY_NAME) LookUpNext(rule, from);
  }
  void LookUpNext(MP_FSM_Rule* rule, const Kalvo_FSM_State* from);

  std::vector<std::unique_ptr<Kalvo_FSM_State>> states_;      // the initial state first
  HashMap<std::string_view, Kalvo_FSM_State*, 17> stateMap_;  // keys in the states
  Kalvo_FSM_State sharedState_;  // no object is ever in it; its rules are the service's
};

#endif  // KALVOBASE_SRC_FSM_MP_FSM_SERVICE_H_
