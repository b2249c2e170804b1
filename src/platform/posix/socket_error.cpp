// The numbers of failures, between the system's and those that hosts see.

#include <errno.h>

#include "platform/socket.h"

namespace platform {
namespace {

struct Pair {
  int system;
  int host;
};

// Of several that are one to the host, the first is the way back.
constexpr Pair kPairs[] = {
    {EINTR, 10004},        {EACCES, 10013},          {EPERM, 10013},
    {EFAULT, 10014},       {EINVAL, 10022},          {EMFILE, 10024},
    {ENFILE, 10024},       {EAGAIN, 10035},          {EINPROGRESS, 10035},
    {EALREADY, 10037},     {ENOTSOCK, 10038},        {EBADF, 10038},
    {EDESTADDRREQ, 10039}, {EMSGSIZE, 10040},        {EPROTOTYPE, 10041},
    {ENOPROTOOPT, 10042},  {EPROTONOSUPPORT, 10043}, {ESOCKTNOSUPPORT, 10044},
    {EOPNOTSUPP, 10045},   {EPFNOSUPPORT, 10046},    {EAFNOSUPPORT, 10047},
    {EADDRINUSE, 10048},   {EADDRNOTAVAIL, 10049},   {ENODEV, 10049},
    {ENETDOWN, 10050},     {ENETUNREACH, 10051},     {ENETRESET, 10052},
    {ECONNABORTED, 10053}, {ECONNRESET, 10054},      {EPIPE, 10054},
    {ENOBUFS, 10055},      {ENOMEM, 10055},          {EISCONN, 10056},
    {ENOTCONN, 10057},     {ESHUTDOWN, 10058},       {ETOOMANYREFS, 10059},
    {ETIMEDOUT, 10060},    {ECONNREFUSED, 10061},    {ELOOP, 10062},
    {ENAMETOOLONG, 10063}, {EHOSTDOWN, 10064},       {EHOSTUNREACH, 10065},
    {ENONET, 10065},       {ENOTEMPTY, 10066},       {EUSERS, 10068},
    {EDQUOT, 10069},       {ESTALE, 10070},          {EREMOTE, 10071},
};

// The one number that the thread has is the system's. A number of the host that would be
// taken for one of those is kept beyond them.
constexpr int kBeyond = 1 << 24;

bool IsSystemNumber(int number) {
  for (const Pair& pair : kPairs) {
    if (pair.system == number) return true;
  }
  return false;
}

}  // namespace

int socket_error() {
  const int number = errno;
  if (number > kBeyond && IsSystemNumber(number - kBeyond)) return number - kBeyond;
  for (const Pair& pair : kPairs) {
    if (pair.system == number) return pair.host;
  }
  return number;
}

void clear_socket_error() { errno = 0; }

void set_socket_error(int code) {
  if (IsSystemNumber(code)) {
    errno = code + kBeyond;
    return;
  }
  errno = code;
  for (const Pair& pair : kPairs) {
    if (pair.host != code) continue;
    errno = pair.system;
    return;
  }
}

}  // namespace platform
