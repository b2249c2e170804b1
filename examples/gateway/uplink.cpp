#include "uplink.h"

#include <cstdio>

bool Uplink::Connect(const char* host, int port) {
  connected_ = stream_.Connect(host, port) >= 0;
  if (connected_) {
    std::printf("sending to %s port %d\n", stream_.GetRemoteAddr()->GetAddr(),
                stream_.GetRemoteAddr()->GetPort());
  } else {
    std::printf("%s port %d: error %d\n", host, port, Kalvo_SOCK_GetLastError());
  }
  return connected_;
}

bool Uplink::Send(Kalvo_KValueTable* table) {
  if (!connected_) return false;
  Kalvo_String form;
  table->Dump(&form);
  const int length = static_cast<int>(form.length());
  const bool put = stream_.Write(length) == 4 && stream_.Write(form.c_str(), length) == length;
  connected_ = put && stream_.Write() > 0;
  if (connected_) {
    ++sent_;
  } else {
    std::printf("the receiver is gone: error %d\n", Kalvo_SOCK_GetLastError());
    stream_.DisConnect();
  }
  return connected_;
}
