#include "fsm/mp_fsm_service.h"
#include "kalvobase/fsm.h"

Kalvo_FSMService::Kalvo_FSMService() : impl_(new MP_FSMService) {}
Kalvo_FSMService::~Kalvo_FSMService() { delete impl_; }

Kalvo_FSM_State* Kalvo_FSMService::AddState(const char* name) { return impl_->AddState(name); }
Kalvo_FSM_State* Kalvo_FSMService::GetState(const char* name) { return impl_->GetState(name); }
unsigned long Kalvo_FSMService::GetStateCount() { return impl_->GetStateCount(); }

void Kalvo_FSMService::AddIntMsgHandle(unsigned long code, long value, FSM_Handler handler,
                                       const char* nextState) {
  impl_->sharedState().AddIntRule(code, value, handler, nextState);
}

void Kalvo_FSMService::AddIntMsgHandle(unsigned long code, long low, long high, FSM_Handler handler,
                                       const char* nextState) {
  impl_->sharedState().AddIntRule(code, low, high, handler, nextState);
}

void Kalvo_FSMService::AddIntMsgHandle(unsigned long code, FSM_Handler handler,
                                       const char* nextState) {
  impl_->sharedState().AddIntRule(code, handler, nextState);
}

void Kalvo_FSMService::AddStrMsgHandle(const char* name, long value, FSM_Handler handler,
                                       const char* nextState) {
  impl_->sharedState().AddStringRule(name, value, handler, nextState);
}

void Kalvo_FSMService::AddStrMsgHandle(const char* name, long low, long high, FSM_Handler handler,
                                       const char* nextState) {
  impl_->sharedState().AddStringRule(name, low, high, handler, nextState);
}

void Kalvo_FSMService::AddStrMsgHandle(const char* name, FSM_Handler handler,
                                       const char* nextState) {
  impl_->sharedState().AddStringRule(name, handler, nextState);
}

void Kalvo_FSMService::HandleIntMsg(unsigned long code, long value, Kalvo_FSM_Object* object,
                                    void* data, FSM_LogCallback log) {
  impl_->HandleInteger(code, value, object, data, log);
}

void Kalvo_FSMService::HandleStringMsg(const char* name, long value, Kalvo_FSM_Object* object,
                                       void* data, FSM_LogCallback log) {
  impl_->HandleString(name, value, object, data, log);
}

int Kalvo_FSMService::FinishAndCheck(FSM_LogCallback report) {
  return impl_->FinishAndCheck(report);
}
