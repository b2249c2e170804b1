#include <string>

#include "frame/messages.h"
#include "fsm/mp_fsm_object.h"
#include "fsm/mp_fsm_service.h"

// One event on its way to one object. Handlers and callbacks may do anything, deliver further
// events to the same object among it, so what is in a rule is taken before they run, and the
// object's states are read anew after each.
template <class Event>
class MP_FSMService::Delivery {
 public:
  Delivery(MP_FSMService* service, const Event& event, Kalvo_FSM_Object* object, void* data,
           FSM_LogCallback log)
      : service_(service),
        event_(event),
        object_(object),
        position_(MP_FSM_Object::Of(*object)),
        data_(data),
        log_(log) {}

  void Run() {
    if (position_.currentState == nullptr) {
      position_.currentState = service_->InitialState();
      Call(Current().enterHandler, nullptr, position_.currentState, nullptr);
    }
    TraceEvent(messages::kFsmStringEvent, messages::kFsmIntEvent);
    MP_FSM_Rule* rule = Current().Find(event_);
    if (rule == nullptr) rule = service_->sharedState().Find(event_);
    if (rule == nullptr) {
      TraceEvent(messages::kFsmStringDropped, messages::kFsmIntDropped);
      return;
    }
    service_->Resolve(rule, position_.currentState);
    if (rule->nextStatus == FSM_NEXT_INVALID) return TraceNoTarget(*rule);
    Kalvo_FSM_State* const next = rule->nextState;
    Call(rule->handler, next);
    Call(Current().exitHandler, next);
    if (next == nullptr) return;
    TraceEvent(messages::kFsmStringMove, messages::kFsmIntMove, NameOf(next));
    Enter(next);
    if (Current().forceRule != nullptr) FollowForcedSteps();
  }

 private:
  static const char* NameOf(Kalvo_FSM_State* state) {
    return MP_FSM_State::Of(*state).name.c_str();
  }

  MP_FSM_State& Current() const { return MP_FSM_State::Of(*position_.currentState); }

  // A handler of a derived class is called through the base class. If the object has another base
  // in front, the sanitizer takes that for a call on a wrong object.
  __attribute__((no_sanitize("vptr"))) void Call(FSM_Handler handler, Kalvo_FSM_State* previous,
                                                 Kalvo_FSM_State* current,
                                                 Kalvo_FSM_State* next) const {
    if (handler == nullptr) return;
    (object_->*handler)(event_.name(), event_.code, event_.value, data_, previous, current, next);
  }

  void Call(FSM_Handler handler, Kalvo_FSM_State* next) const {
    Call(handler, position_.previousState, position_.currentState, next);
  }

  void Enter(Kalvo_FSM_State* next) {
    position_.MoveTo(next);
    Call(Current().enterHandler, next);
  }

  // What most events do not come to is kept out of line.
  [[gnu::noinline]] void TraceNoTarget(const MP_FSM_Rule& rule) const {
    const std::string target = rule.nextStateName;
    TraceEvent(messages::kFsmStringNoTarget, messages::kFsmIntNoTarget, target.c_str());
  }

  [[gnu::noinline]] void FollowForcedSteps() {
    constexpr int kMostSteps = 3;
    for (int step = 0; step < kMostSteps; ++step) {
      MP_FSM_Rule* rule = Current().forceRule.get();
      if (rule == nullptr) return;
      service_->Resolve(rule, position_.currentState);
      if (rule->nextStatus == FSM_NEXT_INVALID) {
        const std::string target = rule->nextStateName;
        Trace(messages::kFsmForcedNoTarget, target.c_str());
        return;
      }
      Kalvo_FSM_State* const next = rule->nextState;
      if (next == nullptr) return;
      Call(rule->handler, next);
      Trace(messages::kFsmForcedMove, NameOf(next));
      Enter(next);
    }
  }

  // A line begins with the object and its state.
  template <class... Rest>
  void Trace(const char* format, Rest... rest) const {
    if (log_ != nullptr) Print(format, rest...);
  }

  template <class... Rest>
  [[gnu::noinline]] void Print(const char* format, Rest... rest) const {
    const std::uint32_t id = static_cast<std::uint32_t>(object_->GetObjectId());
    log_(-1, format, id, Current().name.c_str(), rest...);
  }

  // The event follows.
  template <class... Rest>
  void TraceEvent(const char* stringFormat, const char* intFormat, Rest... rest) const {
    const char* format = Event::kKind == FSM_KEY_STRING ? stringFormat : intFormat;
    Trace(format, event_.told(), event_.value, rest...);
  }

  MP_FSMService* service_;
  const Event event_;
  Kalvo_FSM_Object* object_;
  MP_FSM_Object& position_;
  void* data_;
  FSM_LogCallback log_;
};

void MP_FSMService::HandleInteger(unsigned long code, long value, Kalvo_FSM_Object* object,
                                  void* data, FSM_LogCallback log) {
  if (object == nullptr) return;
  Delivery<MP_FSM_IntEvent>(this, {code, value}, object, data, log).Run();
}

void MP_FSMService::HandleString(const char* name, long value, Kalvo_FSM_Object* object, void* data,
                                 FSM_LogCallback log) {
  if (object == nullptr || name == nullptr) return;
  Delivery<MP_FSM_StringEvent>(this, {name, value}, object, data, log).Run();
}
