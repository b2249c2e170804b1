#include "fsm/mp_fsm_object.h"
#include "kalvobase/fsm.h"

Kalvo_FSM_Object::Kalvo_FSM_Object() : impl_(new MP_FSM_Object) {}
Kalvo_FSM_Object::~Kalvo_FSM_Object() { delete impl_; }
