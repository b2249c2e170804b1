#include "fleet.h"

#include <cstdio>

namespace {

constexpr int kLongestName = 64;
constexpr std::size_t kMostAgents = 1000;

}  // namespace

Fleet::Fleet(const Settings& settings, Kalvo_Log* log) : settings_(settings), log_(log) {}

bool Fleet::Take(Kalvo_KValueTable* table, Kalvo_String* name) {
  Kalvo_Value* told = table->GetValue("agent");
  if (told == nullptr) return false;
  name->Reset();
  told->Format(name, 1);
  if (name->length() == 0 || name->length() > kLongestName) return false;

  Kalvo_AutoLock guard(&lock_);
  std::unique_ptr<Agent>& agent = agents_[name->c_str()];
  if (agent == nullptr) {
    if (agents_.size() > kMostAgents) {
      agents_.erase(name->c_str());
      return false;
    }
    agent.reset(new Agent);
    agent->watch.Start(settings_);
  }
  if (!agent->isHere) {
    Tell("agent %s is %s", name->c_str(), agent->samples > 0 ? "back" : "here");
    agent->isHere = true;
    agent->isDone = false;
  }
  if (table->GetValue("done") != nullptr) {
    Tell("agent %s is done", name->c_str());
    agent->isDone = true;
    return true;
  }
  if (!agent->watch.Look(table)) return false;
  ++agent->samples;
  log_->Trace(2, "sample %d of agent %s", agent->samples, name->c_str());
  return true;
}

void Fleet::Lose(const char* name, int error) {
  Kalvo_AutoLock guard(&lock_);
  const auto found = agents_.find(name);
  if (found == agents_.end()) return;
  Agent* agent = found->second.get();
  agent->isHere = false;
  if (agent->isDone) return;
  ++agent->lost;
  agent->watch.End();
  Tell("agent %s is lost: error %d", name, error);
}

int Fleet::done() {
  Kalvo_AutoLock guard(&lock_);
  int count = 0;
  for (const auto& agent : agents_) count += agent.second->isDone ? 1 : 0;
  return count;
}

void Fleet::Print() {
  Kalvo_AutoLock guard(&lock_);
  std::printf("%-8s%-9s%-6s%s\n", "agent", "samples", "lost", Watch::Heading().c_str());
  for (const auto& agent : agents_) {
    std::printf("%-8s%-9d%-6d%s\n", agent.first.c_str(), agent.second->samples, agent.second->lost,
                agent.second->watch.Line().c_str());
  }
}

void Fleet::Tell(const char* format, ...) {
  va_list args;
  va_start(args, format);
  Kalvo_String line;
  line.vsprintf(format, args);
  va_end(args);
  log_->Trace(1, "%s", line.c_str());
  std::puts(line.c_str());
  std::fflush(stdout);
}
