// The gateway: takes what the agents of this machine tell.
//
//   gateway gateway.ini COUNT   ends when so many agents are done
//   gateway --draw              prints the machine of a metric for Graphviz
//
// It listens on a port of its own, which a beacon tells the agents. It reads metrics from each
// sample, which move through the states of a machine, and answers it. Agents that vanish are
// missed, and welcome again. At the end it prints a line for each.

#include <kalvobase/kalvobase.h>

#include <cstdio>

#include "beacon.h"
#include "fleet.h"
#include "journal.h"
#include "link.h"
#include "metric.h"
#include "settings.h"

namespace {

constexpr int kPatienceMs = 60000;
constexpr int kPollMs = 20;

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && Kalvo_String(argv[1]) == "--draw") {
    DrawMachine(Limits());
    return 0;
  }
  if (argc < 3) {
    std::puts("usage: gateway gateway.ini COUNT");
    return 2;
  }
  Settings settings;
  LoadSettings(argv[1], &settings);
  const int expected = static_cast<int>(Kalvo_String(argv[2]).ToInt(10));
  Journal journal(settings.logDirectory, "gateway", settings.logLevel);
  Fleet fleet(settings, journal.log());
  LinkServer server(&fleet);
  if (server.Listen("127.0.0.1", 0) == 0) return 1;
  const int port = server.GetLocalAddr()->GetPort();
  Beacon beacon;
  if (!beacon.Start(settings.beaconPort, port)) return 1;
  std::printf("the gateway listens on port %d, run %d\n", port, CountRun(argv[1]));
  std::fflush(stdout);
  journal.log()->Trace(1, "listening on port %d", port);

  int waited = 0;
  for (; fleet.done() < expected && waited < kPatienceMs; waited += kPollMs) {
    Kalvo_Thread_Sleep(kPollMs);
  }
  server.Close();
  std::puts("");
  fleet.Print();
  std::printf("\n%ld beacons sent\n", beacon.sent());
  return waited < kPatienceMs ? 0 : 1;
}
