// A block of bytes with a terminator behind it. Up to 15 bytes lie in the object itself,
// which takes 16.

#ifndef KALVOBASE_SRC_VALUES_SMALL_BYTES_H_
#define KALVOBASE_SRC_VALUES_SMALL_BYTES_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

class SmallBytes {
 public:
  static constexpr std::size_t kRoom = 15;  // for bytes in the object itself

  SmallBytes() { SetInside(0); }
  explicit SmallBytes(std::string_view bytes) : SmallBytes() { Fill(bytes); }
  SmallBytes(const SmallBytes&) = delete;
  SmallBytes& operator=(const SmallBytes&) = delete;
  ~SmallBytes() { Free(); }

  std::string_view view() const {
    if (IsInside()) return {raw_, kRoom - static_cast<std::size_t>(raw_[kRoom])};
    const Block block = Outside();
    return {block.data, block.size};
  }
  const char* data() const { return IsInside() ? raw_ : Outside().data; }

  // Lets go of the bytes for `n` others, fewer than 2^32, which the caller puts there.
  char* Renew(std::size_t n) {
    Free();
    if (n <= kRoom) return SetInside(n);
    const Block block = {New(n), static_cast<std::uint32_t>(n)};
    std::memcpy(raw_, &block, sizeof(block));
    raw_[kRoom] = kOutside;
    return block.data;
  }

  // The bytes may be a part of this block.
  void Assign(std::string_view bytes) {
    if (bytes.size() <= kRoom && IsInside()) {
      if (!bytes.empty()) std::memmove(raw_, bytes.data(), bytes.size());
      SetInside(bytes.size());
    } else {
      SmallBytes fresh(bytes);
      Swap(fresh);
    }
  }

  void Swap(SmallBytes& other) {
    char mine[sizeof(raw_)];
    std::memcpy(mine, raw_, sizeof(raw_));
    std::memcpy(raw_, other.raw_, sizeof(raw_));
    std::memcpy(other.raw_, mine, sizeof(raw_));
  }

 private:
  static constexpr char kOutside = 127;

  struct Block {
    char* data;
    std::uint32_t size;
  };

  // The last byte tells where the bytes are. Of those inside it is the room that is left,
  // and so their terminator when there is none.
  bool IsInside() const { return raw_[kRoom] != kOutside; }

  Block Outside() const {
    Block block;
    std::memcpy(&block, raw_, sizeof(block));
    return block;
  }

  char* SetInside(std::size_t n) {
    raw_[kRoom] = static_cast<char>(kRoom - n);
    raw_[n] = '\0';
    return raw_;
  }

  static char* New(std::size_t n) {
    char* data = new char[n + 1];
    data[n] = '\0';
    return data;
  }

  void Free() {
    if (!IsInside()) delete[] Outside().data;
    SetInside(0);
  }

  void Fill(std::string_view bytes) {
    char* place = Renew(bytes.size());
    if (!bytes.empty()) std::memcpy(place, bytes.data(), bytes.size());
  }

  alignas(char*) char raw_[kRoom + 1];
};

#endif  // KALVOBASE_SRC_VALUES_SMALL_BYTES_H_
