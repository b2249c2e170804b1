// Any bytes can be imported, and what they gave comes back from its own form.

#include <kalvobase/kalvobase.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "not so: %s\n", what);
  std::abort();
}

bool SameBytes(const Kalvo_String& a, const Kalvo_String& b) {
  return a.length() == b.length() && std::memcmp(a.c_str(), b.c_str(), a.length()) == 0;
}

// Import, Dump and Import again of whatever can do that.
template <class T>
void RoundTrip(const char* bytes, int n) {
  T first, second;
  Require(first.Import(bytes, n) <= static_cast<unsigned long>(n),
          "no more is taken than there is");
  Kalvo_String form, again;
  Require(first.Dump(&form) == form.length(), "Dump tells what it added");
  Require(second.Import(form.c_str(), static_cast<int>(form.length())) == form.length(),
          "a whole form is taken whole");
  second.Dump(&again);
  Require(SameBytes(form, again), "the second form is the first one");
}

// All that a host may do with a value, whatever it is.
void Use(Kalvo_Value* value, Kalvo_Value* other) {
  Kalvo_String text;
  unsigned long n = 0;
  value->Format(&text, 1);
  value->GetChar();
  value->GetDouble();
  value->GetPtr();
  value->GetRef();
  value->GetIntArray(&n);
  value->Copmare(other);
  Kalvo_Value result(*value);
  result.Add(other)->Minus(other)->Times(other)->Divied(other)->PlusPlus()->ShiftR(3);
  result.Append(5);
  result.Append("text", -1);
  result.SetRef(value, 2);
  result.Add(other)->Divied(other)->BitNot();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const char* bytes = reinterpret_cast<const char*>(data);
  const int n = static_cast<int>(size);
  RoundTrip<Kalvo_Key>(bytes, n);
  RoundTrip<Kalvo_Value>(bytes, n);
  RoundTrip<Kalvo_KValueTable>(bytes, n);

  Kalvo_KValueTable table, same;
  table.Import(bytes, n);
  same.Import(bytes, n);
  Require((table == same) == (table == table), "equal bytes give equal tables");
  Kalvo_KValueTable copy(table);
  Kalvo_Key* key = nullptr;
  Kalvo_Value last;
  for (Kalvo_Value* value = table.GetFirst(key); value != nullptr; value = table.GetNext(key)) {
    Use(value, &last);
    last = *value;
    copy.Remove(key);
  }
  table.SetCaseFlag(0);
  for (int i = 0; table.GetCount() > 0; ++i) {
    const unsigned long count = table.GetCount();
    table.Remove(table.GetKeyAt(i));
    if (table.GetCount() == count) table.RemoveAt(i);  // not found under its key
  }
  return 0;
}
