// A quantity that is watched, and the machine that tells how it stands.
//
// All metrics have the same states and their own limits between them, so each has a machine.
// The rules of a machine also give the picture of it in the documentation.

#ifndef GATEWAY_METRIC_H_
#define GATEWAY_METRIC_H_

#include <kalvobase/kalvobase.h>

// In percent. What has risen must fall a little further before it counts as fallen.
struct Limits {
  // Whether the states lie apart.
  bool AreSound() const { return warning > kFall && critical > warning + kCriticalFall; }

  static constexpr int kFall = 10;
  static constexpr int kCriticalFall = 5;

  int warning = 80;
  int critical = 95;
};

class Metric : public Kalvo_FSM_Object {
 public:
  // `id` stands at the head of the lines about this metric.
  Metric(unsigned long id, const char* name, Kalvo_FSMService* machine);

  unsigned long GetObjectId() override;

  // Enters the first state of the machine, which must be built.
  void Start();

  // A reading in percent. One that says what the last one said is no news.
  void Read(long percent);

  // There are no readings any more.
  void Lose();

  const char* name() const { return name_.c_str(); }
  const char* state() const { return state_.c_str(); }
  int changes() const { return changes_; }

  // Called by the machine when the metric has entered a state.
  void OnEnter(const char* event, unsigned long code, long value, void* data,
               Kalvo_FSM_State* previous, Kalvo_FSM_State* current, Kalvo_FSM_State* next);

  // Called for what a state has no rule for.
  void OnSurprise(const char* event, unsigned long code, long value, void* data,
                  Kalvo_FSM_State* previous, Kalvo_FSM_State* current, Kalvo_FSM_State* next);

 private:
  unsigned long id_;
  Kalvo_String name_;
  Kalvo_FSMService* machine_;
  Kalvo_String state_;
  long last_;
  int changes_;
};

// Puts the rules into a new service. False if they are not sound.
bool BuildMachine(const Limits& limits, Kalvo_FSMService* machine);

// Prints the rules in the language of Graphviz.
void DrawMachine(const Limits& limits);

#endif  // GATEWAY_METRIC_H_
