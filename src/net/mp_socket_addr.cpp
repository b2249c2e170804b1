#include "net/mp_socket_addr.h"

#include <algorithm>
#include <cstring>

#include "platform/socket.h"
#include "text/number_text.h"

namespace {

constexpr int kPortAt = 2;
constexpr int kInternetAt = 4;
constexpr int kInternet6At = 8;

void PutPort(char* address, std::uint16_t port) {
  address[kPortAt] = static_cast<char>(port >> 8);
  address[kPortAt + 1] = static_cast<char>(port);
}

}  // namespace

MP_SocketAddr& MP_SocketAddr::operator=(const MP_SocketAddr& other) {
  if (this == &other) return *this;
  if (other.empty()) {
    Reset();
    return *this;
  }
  Take(other.block_.get(), other.blockSize_);
  record_.ai_family = other.record_.ai_family;
  record_.ai_addrlen = other.record_.ai_addrlen;
  port_ = other.port_;
  std::memcpy(text_, other.text_, sizeof(text_));
  return *this;
}

void MP_SocketAddr::Resolve(const char* host, int port) {
  const std::uint16_t port16 = static_cast<std::uint16_t>(port);
  const bool named = host != nullptr && *host != '\0';
  char address[platform::kAddressRoom] = {};
  int length = named ? platform::resolve_host(host, port16, address) : 0;
  if (length == 0) {
    const std::uint16_t family = static_cast<std::uint16_t>(platform::kInternet);
    std::memcpy(address, &family, sizeof(family));
    PutPort(address, port16);
    if (named) platform::parse_internet_address(host, address + kInternetAt);
    length = platform::kInternetLength;
  }
  Take(address, length);
}

// The block has room for any address, whatever was given. A block that is there already is used
// again; what is given may lie in it.
void MP_SocketAddr::Take(const void* address, int length) {
  const int given = address != nullptr ? std::max(length, 0) : 0;
  const int size = std::max(given, platform::kAddressRoom);
  const auto bytes = static_cast<std::size_t>(given);
  if (blockSize_ == size) {
    if (given > 0) std::memmove(block_.get(), address, bytes);
    std::memset(block_.get() + given, 0, static_cast<std::size_t>(size) - bytes);
    port_ = 0;
    text_[0] = '\0';
  } else {
    std::unique_ptr<char[]> block(new char[static_cast<std::size_t>(size)]());
    if (given > 0) std::memcpy(block.get(), address, bytes);
    Reset();
    block_ = std::move(block);
    blockSize_ = size;
  }
  record_ = {};
  record_.ai_addr = reinterpret_cast<sockaddr*>(block_.get());
  TakeFamily();
  record_.ai_addrlen = static_cast<socklen_t>(given);
  ReInit();
}

void MP_SocketAddr::TakeFamily() {
  std::uint16_t family = 0;
  std::memcpy(&family, block_.get(), sizeof(family));
  record_.ai_family = family;
}

void MP_SocketAddr::Written(int length) {
  if (length < 1) return;
  TakeFamily();
  record_.ai_addrlen = static_cast<socklen_t>(length);
  text_[0] = '\0';
  ReInit();
}

void MP_SocketAddr::Reset() {
  record_ = {};
  block_.reset();
  blockSize_ = 0;
  port_ = 0;
  text_[0] = '\0';
}

void MP_SocketAddr::ReInit() {
  if (empty() || (family() != platform::kInternet && family() != platform::kInternet6)) return;
  const auto at = [this](int i) { return static_cast<unsigned>(block_[i] & 0xFF); };
  port_ = static_cast<int>(at(kPortAt) << 8 | at(kPortAt + 1));
  if (family() != platform::kInternet) return;
  char* end = text_;
  for (int i = 0; i < 4; ++i) {
    char digits[text::kMaxIntegerDigits];
    char* const digitsEnd = digits + sizeof(digits);
    if (i > 0) *end++ = '.';
    end = std::copy(text::DecimalDigits(at(kInternetAt + i), digitsEnd), digitsEnd, end);
  }
  *end = '\0';
}

void MP_SocketAddr::SetPort(int port) {
  if (empty()) return;
  PutPort(block_.get(), static_cast<std::uint16_t>(port));
  ReInit();
}

int MP_SocketAddr::length() const {
  return static_cast<int>(
      std::min<std::size_t>(record_.ai_addrlen, static_cast<std::size_t>(blockSize_)));
}

const char* MP_SocketAddr::internetBytes() const {
  if (empty() || family() != platform::kInternet) return nullptr;
  const char* const bytes = block_.get() + kInternetAt;
  return std::any_of(bytes, bytes + 4, [](char c) { return c != 0; }) ? bytes : nullptr;
}

bool MP_SocketAddr::isGroup() const {
  const char* const bytes = internetBytes();
  return bytes != nullptr && (bytes[0] & 0xF0) == 0xE0;
}

void MP_SocketAddr::Widen() {
  if (empty() || family() != platform::kInternet) return;
  std::memset(block_.get() + kInternetAt, 0, 4);
  ReInit();
}

bool MP_SocketAddr::IsSameHost(const char* host) {
  if (host == nullptr || empty() || *host == '/') return false;
  MP_SocketAddr other;
  other.Resolve(host, 0);
  return SameHost(record_, other.record_);
}

// Hosts of families that the library does not know are one if the families are.
bool MP_SocketAddr::SameHost(const addrinfo& a, const addrinfo& b) {
  if (a.ai_family != b.ai_family) return false;
  const char* left = reinterpret_cast<const char*>(a.ai_addr);
  const char* right = reinterpret_cast<const char*>(b.ai_addr);
  if (a.ai_family == platform::kInternet) {
    return std::memcmp(left + kInternetAt, right + kInternetAt, 4) == 0;
  }
  if (a.ai_family == platform::kInternet6) {
    return std::memcmp(left + kInternet6At, right + kInternet6At, 16) == 0;
  }
  return true;
}

// A host may have hung further addresses behind the one.
bool MP_SocketAddr::Equals(const MP_SocketAddr& other) const {
  if (empty() || other.empty() || port_ != other.port_) return false;
  const addrinfo* a = &record_;
  const addrinfo* b = &other.record_;
  for (; a != nullptr && b != nullptr; a = a->ai_next, b = b->ai_next) {
    if (!SameHost(*a, *b)) return false;
  }
  return a == b;
}
