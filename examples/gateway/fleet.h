// The agents that a gateway has met.

#ifndef GATEWAY_FLEET_H_
#define GATEWAY_FLEET_H_

#include <kalvobase/kalvobase.h>

#include <map>
#include <memory>
#include <string>

#include "settings.h"
#include "watch.h"

// What they tell moves through the states of machines, each agent's through its own.
class Fleet {
 public:
  // Lines about agents are printed and go to `log`. Both must outlive the fleet.
  Fleet(const Settings& settings, Kalvo_Log* log);

  // A table of an agent. False if it is none: without a name, or with what does not belong there.
  // Stores the agent's name.
  bool Take(Kalvo_KValueTable* table, Kalvo_String* name);

  // The connection of the agent with this name has ended.
  void Lose(const char* name, int error);

  // How many have said that they are done.
  int done();

  // A line for each agent.
  void Print();

 private:
  struct Agent {
    Watch watch;
    int samples = 0;
    int lost = 0;
    bool isHere = false;
    bool isDone = false;
  };

  void Tell(const char* format, ...);

  const Settings& settings_;
  Kalvo_Log* log_;
  Kalvo_Lock lock_;  // guards what follows
  std::map<std::string, std::unique_ptr<Agent>> agents_;
};

#endif  // GATEWAY_FLEET_H_
