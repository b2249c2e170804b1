// The two ends of the binary form: where its numbers and bytes are written and read.

#ifndef KALVOBASE_SRC_VALUES_BINARY_FORM_H_
#define KALVOBASE_SRC_VALUES_BINARY_FORM_H_

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/byte_order.h"
#include "text/mp_string.h"

// Appends to a string, by the string's order flag. After a write for which there was no
// room all further ones do nothing.
class FormWriter {
 public:
  explicit FormWriter(MP_String* out)
      : out_(out),
        start_(out->Length()),
        turned_((out->orderFlag() != 0) == platform::kLeastSignificantFirst) {}

  // The place for the next `n` bytes, which the caller fills with the functions below; null
  // if there is none. The block of the string may have moved.
  char* Room(std::uint64_t n) {
    char* place = !failed_ && n <= INT_MAX ? out_->Extend(static_cast<int>(n)) : nullptr;
    if (place == nullptr) failed_ = true;
    return place;
  }

  // These store at `place` and return the place behind. Numbers are those of the host.
  static char* Byte(char* place, std::int32_t lowest8Bits) {
    *place = static_cast<char>(lowest8Bits);
    return place + 1;
  }

  static char* Bytes(char* place, std::string_view bytes) {
    if (!bytes.empty()) std::memcpy(place, bytes.data(), bytes.size());
    return place + bytes.size();
  }

  char* Numbers(char* place, const char* numbers, std::size_t count, std::size_t width) const {
    platform::copy_numbers(place, numbers, count, width, turned_);
    return place + count * width;
  }

  template <class T>
  char* Number(char* place, T value) const {
    char bytes[sizeof(T)];
    std::memcpy(bytes, &value, sizeof(T));
    return Numbers(place, bytes, 1, sizeof(T));
  }

  // For what cannot be told in the form.
  void Fail() { failed_ = true; }
  bool failed() const { return failed_; }

  // The bytes appended; none, and the string as it was, if something failed.
  unsigned long Finish() {
    if (failed_) out_->Truncate(start_);
    return static_cast<unsigned long>(out_->Length() - start_);
  }

 private:
  MP_String* out_;
  int start_;
  bool turned_;
  bool failed_ = false;
};

// Reads from a block of bytes. A form that is cut short uses up all of them.
class FormReader {
 public:
  FormReader(const char* p, int n) : next_(p), end_(p != nullptr && n > 0 ? p + n : p) {}

  bool AtEnd() const { return next_ == end_; }

  // True if `n` bytes are there. If not, what is left is used up.
  bool Need(std::uint64_t n) {
    if (n <= static_cast<std::uint64_t>(end_ - next_)) return true;
    next_ = end_;
    return false;
  }

  // What these read must be there.
  std::int32_t Byte() { return static_cast<signed char>(*next_++); }

  std::string_view Bytes(std::size_t n) {
    const std::string_view bytes(next_, n);
    next_ += n;
    return bytes;
  }

  // Numbers as the host has them.
  void Numbers(char* to, std::size_t count, std::size_t width) {
    platform::copy_numbers(to, Bytes(count * width).data(), count, width,
                           platform::kLeastSignificantFirst);
  }

  template <class T>
  T Number() {
    T value;
    char bytes[sizeof(T)];
    Numbers(bytes, 1, sizeof(T));
    std::memcpy(&value, bytes, sizeof(T));
    return value;
  }

  // A length or count in 32 bits. False, with all used up, if it is cut short or beyond
  // what any form can have.
  bool Count(std::uint32_t* count) {
    if (!Need(4)) return false;
    *count = Number<std::uint32_t>();
    if (*count <= INT32_MAX) return true;
    next_ = end_;
    return false;
  }

  const char* position() const { return next_; }

 private:
  const char* next_;
  const char* end_;
};

// What an import returns: the bytes that `read` took of the `n` at `p`. Of a count that is
// no count all is taken too.
template <class Read>
unsigned long ImportForm(const char* p, int n, Read read) {
  FormReader in(p, n);
  read(&in);
  return n < 0 ? static_cast<std::uint32_t>(n) : static_cast<unsigned long>(in.position() - p);
}

// What a dump returns: the bytes that `write` appended to `out`.
template <class Write>
unsigned long DumpForm(Kalvo_String* out, Write write) {
  if (out == nullptr) return 0;
  FormWriter writer(&MP_String::Of(*out));
  write(&writer);
  return writer.Finish();
}

#endif  // KALVOBASE_SRC_VALUES_BINARY_FORM_H_
