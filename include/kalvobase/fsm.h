// State machines from tables: a Kalvo_FSMService holds states and rules, and drives any
// number of Kalvo_FSM_Objects, each of which has a current state of its own.
//
//   class Door : public Kalvo_FSM_Object {
//    public:
//     unsigned long GetObjectId() override { return 7; }
//     void OnOpen(const char* name, unsigned long code, long value, void* data,
//                 Kalvo_FSM_State* previous, Kalvo_FSM_State* current, Kalvo_FSM_State* next);
//   };
//   ...
//   Kalvo_FSMService service;
//   Kalvo_FSM_State* open = service.AddState("open");
//   service.GetState(nullptr)->AddStrMsgHandle(
//       "key", static_cast<FSM_Handler>(&Door::OnOpen), "open");  // any value: go to "open"
//   open->AddIntMsgHandle(1, 0, 9, nullptr, nullptr);  // code 1 with 0 to 9: back to the start
//   bool sound = service.FinishAndCheck(nullptr) == 0;
//   Door door;
//   service.HandleStringMsg("key", 0, &door, nullptr, nullptr);
//
// An event has a code or a name, and a value. Codes count as unsigned, values as signed
// 32-bit numbers. A rule answers one value, a range of values or any value of a code or a
// name; it may have a handler, and it may lead to another state.
//
// Where a rule leads is told by name:
//  null            the initial state
//  ""              nowhere: the object stays
//  "some name"     the state of that name
// The name is looked up once, in FinishAndCheck or else when the rule is first used; until
// then the state need not be there, and a name that is not found then stays invalid. A rule
// that leads to the very state that it belongs to leads nowhere. A rule of the service
// belongs to no state: after FinishAndCheck it leaves and enters its target even from there,
// and without it, it leads nowhere for ever if it is first used there.
//
// Building a service is for one thread. After FinishAndCheck events change the objects
// only: any number of threads may drive objects of their own through one service. Handlers
// run on the thread that delivers the event.
//
// Copies of these three share what is behind them, with no count of users: exactly one of
// the handles that share it may be destroyed, and after that the others must not be used.

#ifndef KALVOBASE_FSM_H_
#define KALVOBASE_FSM_H_

#include "kalvobase/types.h"

class Kalvo_FSM_Object;
class Kalvo_FSM_State;
class MP_FSM_Object;
class MP_FSM_State;
class MP_FSMService;

// A member function of a subclass of Kalvo_FSM_Object, cast to this type, which takes a
// subclass that does not derive virtually. It gets the event (`name` is null for an integer
// event, `code` 0 for a string event), the caller's `data`, the object's previous and current
// state, and the state that the rule leads to, null if it leads nowhere.
typedef void (Kalvo_FSM_Object::*FSM_Handler)(const char* name, unsigned long code, long value,
                                              void* data, Kalvo_FSM_State* previous,
                                              Kalvo_FSM_State* current, Kalvo_FSM_State* next);

// Takes lines as printf takes them. The texts are GBK. The level is always -1.
typedef void (*FSM_LogCallback)(int level, const char* format, ...);

// What a service drives. It enters the initial state at its first event.
class KALVO_API Kalvo_FSM_Object {
 public:
  Kalvo_FSM_Object();
  virtual ~Kalvo_FSM_Object();

  // Stands at the head of every trace line, as 32 bits.
  virtual unsigned long GetObjectId() = 0;

 private:
  friend class MP_FSM_Object;

  MP_FSM_Object* impl_;
};

// A second exact or plain rule for the same event takes the place of the first, which is still
// checked. Handlers may be null. States are made by a service; one of a host's own is of no
// use.
class KALVO_API Kalvo_FSM_State {
 public:
  Kalvo_FSM_State();
  virtual ~Kalvo_FSM_State();

  // For an event with a code: exactly `value`, `low` to `high`, or any value. Of ranges that
  // overlap the one that came first counts. An exact rule goes before a range, a range
  // before a rule for any value.
  void AddIntMsgHandle(unsigned long code, long value, FSM_Handler handler, const char* nextState);
  void AddIntMsgHandle(unsigned long code, long low, long high, FSM_Handler handler,
                       const char* nextState);
  void AddIntMsgHandle(unsigned long code, FSM_Handler handler, const char* nextState);

  // The same for an event with a name, which is case-sensitive; null counts as "".
  void AddStrMsgHandle(const char* name, long value, FSM_Handler handler, const char* nextState);
  void AddStrMsgHandle(const char* name, long low, long high, FSM_Handler handler,
                       const char* nextState);
  void AddStrMsgHandle(const char* name, FSM_Handler handler, const char* nextState);

  // For every event without a rule in this state, in place of the service's own rules. A
  // second call replaces the first, and a null `handler` removes the rule.
  void SetUnExceptEventHandle(FSM_Handler handler, const char* nextState);

  // When an object has entered this state it goes on to `nextState` at once. Up to three
  // such steps follow one event. The object's first entry into the initial state does not
  // count, and no exit handler is called. A second call replaces the first.
  void SetForceState(const char* nextState, FSM_Handler handler);

  // Called when an object has entered this state, and behind the handler of a rule that one of
  // its events had here, even one that leads nowhere. Null for none.
  void SetStateEnterHandler(FSM_Handler handler);
  void SetStateExitHandler(FSM_Handler handler);

  // Good as long as the state. "" for the initial state.
  const char* GetStateName();

 private:
  friend class MP_FSM_State;

  MP_FSM_State* impl_;
};

class KALVO_API Kalvo_FSMService {
 public:
  // Has the initial state, which has no name.
  Kalvo_FSMService();
  virtual ~Kalvo_FSMService();

  // The state of that name, made if there is none; it belongs to the service. The initial
  // state for null, and null for "".
  Kalvo_FSM_State* AddState(const char* name);

  // The state of that name; null if there is none. The initial state for null and "".
  Kalvo_FSM_State* GetState(const char* name);

  // The initial state counts.
  unsigned long GetStateCount();

  // Rules of the service, for events that the object's state has no rule for.
  void AddIntMsgHandle(unsigned long code, long value, FSM_Handler handler, const char* nextState);
  void AddIntMsgHandle(unsigned long code, long low, long high, FSM_Handler handler,
                       const char* nextState);
  void AddIntMsgHandle(unsigned long code, FSM_Handler handler, const char* nextState);
  void AddStrMsgHandle(const char* name, long value, FSM_Handler handler, const char* nextState);
  void AddStrMsgHandle(const char* name, long low, long high, FSM_Handler handler,
                       const char* nextState);
  void AddStrMsgHandle(const char* name, FSM_Handler handler, const char* nextState);

  // Deliver an event to `object`. Called are, as far as they are there: the rule's handler,
  // the exit handler of the state, and if the rule leads somewhere, that state's enter handler
  // and the handlers of forced steps. An event without a rule is dropped, and
  // so is one whose rule leads to a state that does not exist. Exceptions of handlers pass
  // through and leave the object where it is at that moment.
  //
  // A null object does nothing, nor does a null name. Service, object and name must outlive
  // the call. `log`, which may be null, gets a line for the event and one for each step or for
  // what was in its way.
  void HandleIntMsg(unsigned long code, long value, Kalvo_FSM_Object* object, void* data,
                    FSM_LogCallback log);
  void HandleStringMsg(const char* name, long value, Kalvo_FSM_Object* object, void* data,
                       FSM_LogCallback log);

  // Looks up where all rules lead. 0 if the machine is sound, else the sum of 1: a rule
  // leads to a state that does not exist, and 2: no rule of another state leads to some
  // state. `report`, which may be null, gets a line for each such rule and state.
  int FinishAndCheck(FSM_LogCallback report);

 private:
  MP_FSMService* impl_;
};

#endif  // KALVOBASE_FSM_H_
