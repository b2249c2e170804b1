// What is behind a Kalvo_FSM_Object.

#ifndef KALVOBASE_SRC_FSM_MP_FSM_OBJECT_H_
#define KALVOBASE_SRC_FSM_MP_FSM_OBJECT_H_

#include "kalvobase/fsm.h"

class MP_FSM_Object {
 public:
  static MP_FSM_Object& Of(Kalvo_FSM_Object& object) { return *object.impl_; }

  void MoveTo(Kalvo_FSM_State* state) {
    previousState = currentState;
    currentState = state;
  }

  Kalvo_FSM_State* previousState = nullptr;
  Kalvo_FSM_State* currentState = nullptr;  // null until the first event
};

#endif  // KALVOBASE_SRC_FSM_MP_FSM_OBJECT_H_
