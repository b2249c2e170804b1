// Takes the samples of one agent and prints a line for each.
//
//   receiver [port]     a port of its own choice without one; it is told in the first line
//
// It ends when the agent does. What comes is a stranger's: a length that no sample has, or a
// form that is none, ends it, too.

#include <kalvobase/kalvobase.h>

#include <cstdio>

namespace {

constexpr int kPatienceMs = 10000;
constexpr int kLongestForm = 1 << 20;

// Receives `length` bytes; false if they do not come.
bool Receive(int sock, int length, Kalvo_String* bytes) {
  bytes->Reset();
  Kalvo_String piece;
  for (int left = length; left > 0; left = length - static_cast<int>(bytes->length())) {
    if (Kalvo_SOCK_Wait(sock, kPatienceMs, 0) < 1) return false;
    const int n = Kalvo_SOCK_Read(sock, &piece, left);
    if (n < 1) return false;
    bytes->memcat(piece.c_str(), n);
  }
  return true;
}

double Number(Kalvo_KValueTable* sample, const char* table, const char* key) {
  Kalvo_KValueTable* inner = sample->GetTable(table);
  Kalvo_Value* value = inner != nullptr ? inner->GetValue(key) : nullptr;
  return value != nullptr ? value->GetDouble() : 0;
}

unsigned long CountOf(Kalvo_KValueTable* sample, const char* table) {
  Kalvo_KValueTable* inner = sample->GetTable(table);
  return inner != nullptr ? inner->GetCount() : 0;
}

void Print(Kalvo_KValueTable* sample, int bytes) {
  Kalvo_String line;
  if (Kalvo_Value* time = sample->GetValue("time")) line.FormatDate(time->GetLong(), "hh:mi:ss");
  Kalvo_String host;
  if (Kalvo_Value* name = sample->GetValue("host")) name->Format(&host, 1);
  line.sprintf_append("  %s: load %.2f, %.0f of %.0f MiB free, %lu processors, %lu interfaces",
                      host.c_str(), Number(sample, "load", "1min"),
                      Number(sample, "memory", "available"), Number(sample, "memory", "total"),
                      CountOf(sample, "processors"), CountOf(sample, "network"));
  std::printf("%s (%d bytes)\n", line.c_str(), bytes);
}

// How many samples came.
int TakeSamples(int sock) {
  Kalvo_String bytes;
  for (int count = 0;; ++count) {
    if (!Receive(sock, 4, &bytes)) return count;
    unsigned int length = 0;
    NB_ToValue(bytes.c_str(), length);
    if (length == 0 || length > kLongestForm) return count;
    if (!Receive(sock, static_cast<int>(length), &bytes)) return count;
    Kalvo_KValueTable sample;
    if (sample.Import(bytes.c_str(), static_cast<int>(length)) != length) return count;
    Print(&sample, static_cast<int>(length));
  }
}

}  // namespace

int main(int argc, char** argv) {
  Kalvo_SocketAddr address;
  address.Init("127.0.0.1", argc > 1 ? static_cast<int>(Kalvo_String(argv[1]).ToInt(10)) : 0);
  const int listener = Kalvo_SOCK_OpenTcpForAddr(&address, 1);
  if (listener < 0 || listen(listener, 1) != 0) {
    std::printf("error %d\n", Kalvo_SOCK_GetLastError());
    return 1;
  }
  getsockname(listener, address.GetInfo()->ai_addr, &address.GetInfo()->ai_addrlen);
  address.ReInit();
  std::printf("listening on port %d\n", address.GetPort());
  std::fflush(stdout);

  const int agent =
      Kalvo_SOCK_Wait(listener, kPatienceMs, 0) > 0 ? accept(listener, nullptr, nullptr) : -1;
  const int count = agent >= 0 ? TakeSamples(agent) : 0;
  std::printf("%d samples received\n", count);
  Kalvo_SOCK_Close(agent);
  Kalvo_SOCK_Close(listener);
  return count > 0 ? 0 : 1;
}
