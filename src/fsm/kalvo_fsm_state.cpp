#include "fsm/mp_fsm_state.h"
#include "kalvobase/fsm.h"

Kalvo_FSM_State::Kalvo_FSM_State() : impl_(new MP_FSM_State) {}
Kalvo_FSM_State::~Kalvo_FSM_State() { delete impl_; }

void Kalvo_FSM_State::AddIntMsgHandle(unsigned long code, long value, FSM_Handler handler,
                                      const char* nextState) {
  impl_->AddIntRule(code, value, handler, nextState);
}

void Kalvo_FSM_State::AddIntMsgHandle(unsigned long code, long low, long high, FSM_Handler handler,
                                      const char* nextState) {
  impl_->AddIntRule(code, low, high, handler, nextState);
}

void Kalvo_FSM_State::AddIntMsgHandle(unsigned long code, FSM_Handler handler,
                                      const char* nextState) {
  impl_->AddIntRule(code, handler, nextState);
}

void Kalvo_FSM_State::AddStrMsgHandle(const char* name, long value, FSM_Handler handler,
                                      const char* nextState) {
  impl_->AddStringRule(name, value, handler, nextState);
}

void Kalvo_FSM_State::AddStrMsgHandle(const char* name, long low, long high, FSM_Handler handler,
                                      const char* nextState) {
  impl_->AddStringRule(name, low, high, handler, nextState);
}

void Kalvo_FSM_State::AddStrMsgHandle(const char* name, FSM_Handler handler,
                                      const char* nextState) {
  impl_->AddStringRule(name, handler, nextState);
}

void Kalvo_FSM_State::SetUnExceptEventHandle(FSM_Handler handler, const char* nextState) {
  impl_->SetUnexpectedRule(handler, nextState);
}

void Kalvo_FSM_State::SetForceState(const char* nextState, FSM_Handler handler) {
  impl_->SetForceRule(handler, nextState);
}

void Kalvo_FSM_State::SetStateEnterHandler(FSM_Handler handler) { impl_->enterHandler = handler; }
void Kalvo_FSM_State::SetStateExitHandler(FSM_Handler handler) { impl_->exitHandler = handler; }
const char* Kalvo_FSM_State::GetStateName() { return impl_->name.c_str(); }
