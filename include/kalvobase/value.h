// Structured data: Kalvo_Key, Kalvo_Value and the ordered table Kalvo_KValueTable, with
// one binary form for all three.
//
//   Kalvo_KValueTable sample;
//   sample.Set("host", "gate-7");
//   sample.Insert("load")->Set(0.25);
//   sample.InsertTable("eth0")->Set("received", 1024L);
//   Kalvo_String form;
//   sample.Dump(&form);  // bytes to send or to store
//   Kalvo_KValueTable copy;
//   copy.Import(form.c_str(), static_cast<int>(form.length()));
//   Kalvo_KValueTable* eth0 = copy.GetTable("eth0");  // null if the form holds no such table
//   Kalvo_Value* received = eth0 != nullptr ? eth0->GetValue("received") : nullptr;
//   if (received != nullptr) std::printf("%ld\n", received->GetLong());  // 1024
//
// Keys, values and tables own what they hold; pointers that they hand out stay theirs. An
// object belongs to one thread at a time, its const operations included: a table has one
// cursor, and a reference makes two values share their content.
//
// Nothing here fails: what a kind cannot do leaves the value as it was, what cannot be
// read is 0 or null. Only memory that runs out throws std::bad_alloc.
//
// The binary form. `Dump` appends it to a string and returns the bytes added. If a table
// has more than 65,535 entries, or the string cannot take the form, nothing is added and
// the result is 0. `Import` rebuilds an object from at most `n` bytes at `p` and returns
// the bytes taken. A form that is cut short gives what was there and takes all `n` bytes,
// so the length of a form travels outside it. Any bytes are safe to import, nested to any
// depth; of null bytes 0 are taken, and of a negative `n` that many, as a 32-bit number. Numbers
// travel most significant byte first, as long as the string's order flag is not 0.

#ifndef KALVOBASE_VALUE_H_
#define KALVOBASE_VALUE_H_

#include "kalvobase/queue.h"
#include "kalvobase/text.h"
#include "kalvobase/types.h"

class Kalvo_KVPair;
class Kalvo_KValueTable;
class MP_Key;
class MP_KValueTable;
class MP_TableEntry;
class MP_Value;

// --- Keys -----------------------------------------------------------------------------

// The numbers stand in the binary form. A key that was imported can have any other number
// as its type; it counts as a text of its own type.
enum Kalvo_KeyType : int { Kalvo_KEY_NONE = 0, Kalvo_KEY_NUMBER = 1, Kalvo_KEY_STRING = 2 };

// A text or an unsigned 32-bit number. A number may carry a text as its label, which
// takes no part in comparisons. Texts have at most 65,535 bytes; what is longer is cut.
class KALVO_API Kalvo_Key {
 public:
  // Empty: type 0, number 0, no text, case flag 1.
  Kalvo_Key();

  // Copies number, type, case flag, and the text up to its first zero byte.
  Kalvo_Key(Kalvo_Key& other);
  Kalvo_Key& operator=(const Kalvo_Key& other);

  virtual ~Kalvo_Key();

  // Back to the state of a new key.
  void Clear();

  // Makes it a text key: at most `n` bytes of `s`, up to its terminator; `n` below 1 means
  // the whole text. A null `s` changes nothing. The number stays.
  void Set(const char* s, int n);

  // Makes it a number key with the text `label`; null for none.
  void Set(unsigned long v, const char* label);

  // As Set(s, 0) and Set(v, 0).
  Kalvo_Key& operator=(const char* s);
  Kalvo_Key& operator=(unsigned long v);

  // Not 0, as at first: case matters. 0: A to Z count as a to z.
  void SetCaseFlag(int flag);

  Kalvo_KeyType GetType();

  // The text, also the label of a number key, good until the key is next changed. Null for an
  // empty key.
  const char* GetSKey();

  // The number, 0 to 0xFFFFFFFF, whatever the type. The second form returns the text as
  // GetSKey does, and leaves `v` alone when that is null.
  unsigned long GetUKey();
  const char* GetUKey(unsigned long& v);

  // The number shifted right by 4 bits, or the hash of all bytes of the text, as
  // Kalvo_HashKey, or with case flag 0 as Kalvo_HashKeyNocase, gives it.
  unsigned long Hash();

  unsigned long Dump(Kalvo_String* out);
  unsigned long Import(const char* p, int n);

 private:
  friend class Kalvo_KVPair;
  friend class MP_Key;
  friend class MP_TableEntry;
  explicit Kalvo_Key(MP_Key& held) : impl_(&held) {}

  MP_Key* impl_;
};

// 1 if `k` is a text key with the text `s`, by its own case flag; else 0.
KALVO_API int operator==(Kalvo_Key& k, const char* s);
KALVO_API int operator!=(Kalvo_Key& k, const char* s);

// 1 if types and numbers, or types and texts, are equal. Case is ignored as soon as one of
// the two keys ignores it.
KALVO_API int operator==(Kalvo_Key& a, Kalvo_Key& b);
KALVO_API int operator!=(Kalvo_Key& a, Kalvo_Key& b);

// k.Hash() of a copy: a text counts up to its first zero byte.
KALVO_API unsigned long Kalvo_HashKey(Kalvo_Key k);

// --- Values ---------------------------------------------------------------------------

// The kinds of values. The numbers stand in the binary form. A value that was imported can
// have any other number as its kind; it holds nothing.
enum Kalvo_VALUE_TYPE : int {
  Kalvo_VT_NONE = -1,
  Kalvo_VT_CHAR = 0,
  Kalvo_VT_UCHAR = 1,
  Kalvo_VT_SHORT = 2,
  Kalvo_VT_USHORT = 3,
  Kalvo_VT_INT = 4,
  Kalvo_VT_UINT = 5,
  Kalvo_VT_LONG = 6,
  Kalvo_VT_ULONG = 7,
  Kalvo_VT_FLOAT = 8,
  Kalvo_VT_DOUBLE = 9,
  Kalvo_VT_BYTE_REF = 10,
  Kalvo_VT_CHAR_ARRAY = 12,
  Kalvo_VT_STRING = 13,
  Kalvo_VT_UCHAR_ARRAY = 14,
  Kalvo_VT_SHORT_ARRAY = 15,
  Kalvo_VT_USHORT_ARRAY = 16,
  Kalvo_VT_INT_ARRAY = 17,
  Kalvo_VT_UINT_ARRAY = 18,
  Kalvo_VT_LONG_ARRAY = 19,
  Kalvo_VT_ULONG_ARRAY = 20,
  Kalvo_VT_FLOAT_ARRAY = 21,
  Kalvo_VT_DOUBLE_ARRAY = 22,
  Kalvo_VT_STRING_ARRAY = 24,
  Kalvo_VT_TABLE = 25,
  Kalvo_VT_PTR = 26,
  Kalvo_VT_REF = 27
};

// A number, a text, an array, a table, a pointer, or a reference to another value.
//
// Numbers, texts and number arrays are bytes in a string, the payload: raw numbers of the
// host, 1, 2, 4 or 8 bytes an element, with no count. An array's count is its length
// divided by the size of an element. Kinds and payload are two things: a number to which
// more numbers are appended keeps its kind, its getters see the first element, and the
// array getters see all of them.
class KALVO_API Kalvo_Value {
 public:
  // Empty.
  Kalvo_Value();

  // A deep copy, tables included. A reference to a byte is copied as the char that it
  // refers to, any other reference as one without a target. The source may be a part of
  // this value.
  Kalvo_Value(const Kalvo_Value& other);
  Kalvo_Value& operator=(const Kalvo_Value& other);

  virtual ~Kalvo_Value();

  // Back to an empty value.
  void Reset();

  // Resets, then makes the value one of kind `t` without content: kinds 0 to 9, 12 to 22,
  // 24 and 25. Any other kind leaves it empty.
  void Init(Kalvo_VALUE_TYPE t);

  Kalvo_VALUE_TYPE GetValueType();

  // --- Setting ------------------------------------------------------------------------

  // Store a value and its kind. On a reference to a byte the two char forms store their
  // byte there and the other numbers and SetPtr do nothing; anything else replaces the
  // reference. A `long` is stored with its low 32 bits.
  void Set(char v);
  void Set(unsigned char v);
  void Set(short v);
  void Set(unsigned short v);
  void Set(int v);
  void Set(unsigned int v);
  void Set(long v);
  void Set(unsigned long v);
  void Set(float v);
  void Set(double v);

  // `n` bytes, zero bytes included; a negative `n` means the length of the text. A null
  // `p` gives an empty text.
  void Set(const char* p, int n);
  void Set(const unsigned char* p, int n);

  // `n` elements; none if `n` is below 1 or `p` is null.
  void Set(const short* p, int n);
  void Set(const unsigned short* p, int n);
  void Set(const int* p, int n);
  void Set(const unsigned int* p, int n);
  void Set(const long* p, int n);
  void Set(const unsigned long* p, int n);
  void Set(const float* p, int n);
  void Set(const double* p, int n);

  // Copies. A value that is an array or a table already keeps that object.
  void Set(const Kalvo_String& s);
  void Set(const Kalvo_StringArray& a);
  void Set(const Kalvo_KValueTable& t);

  // Stores the pointer itself. It is not dumped.
  void SetPtr(const void* p);

  // --- Appending ----------------------------------------------------------------------

  // On an empty value all of these are Set. Otherwise numbers append their bytes to a
  // payload of numbers of their width: the short forms to kinds 2 and 3, int to 4, 5 and
  // 7, long to 4 to 7, float to 8, double to 9. Other kinds stay as they are.
  void Append(short v);
  void Append(unsigned short v);
  void Append(int v);
  void Append(unsigned int v);
  void Append(long v);
  void Append(unsigned long v);
  void Append(float v);
  void Append(double v);

  // A string array gets a new element, any other payload the bytes; the kind stays. Tables
  // and references stay as they are.
  void Append(const char* p, int n);
  void Append(const unsigned char* p, int n);

  // A string array gets a new element; a table is dropped for an empty text; then the bytes
  // go to the payload, and the value is a text.
  void Append(const Kalvo_String& s);

  // A string array gets the elements. A text becomes a string array with the old text in
  // front. Other kinds stay as they are.
  void Append(const Kalvo_StringArray& a);

  // --- Reading numbers ----------------------------------------------------------------

  // Kinds that cannot be read give 0, references to values among them. Numbers of 8 and 16
  // bits are widened with their sign, also the unsigned kinds: 0xFF of an unsigned char is
  // -1, or 0xFFFFFFFF from GetULong. The integer getters do not convert a float or double;
  // they give the first bytes of its bit pattern. A reference to a byte reads as a char.
  char GetChar();
  unsigned char GetUChar();
  short GetShort();
  unsigned short GetUShort();
  int GetInt();
  unsigned int GetUInt();
  long GetLong();
  unsigned long GetULong();

  // Convert any number kind, the integers as signed ones. 0 for a pointer.
  float GetFloat();
  double GetDouble();

  // The stored pointer; of any other kind what GetULong gives.
  void* GetPtr();

  // --- Reading texts and arrays -------------------------------------------------------

  // The payload itself, of a number its raw bytes; the first element of a string array.
  // Null for an empty value, a table, a reference, and an empty string array.
  Kalvo_String* GetString();

  // Null for any other kind.
  Kalvo_StringArray* GetStringArray();
  Kalvo_KValueTable* GetValueTable();

  // A raw view of the payload, whatever its kind, and in `*n`, if `n` is not null, the
  // number of whole elements. Null, with `*n` as it was, if there is not one, and for
  // string arrays, tables and references. Good until the value is next changed.
  char* GetByteArray(unsigned long* n);
  unsigned char* GetUCharArray(unsigned long* n);
  short* GetShortArray(unsigned long* n);
  unsigned short* GetUShortArray(unsigned long* n);
  int* GetIntArray(unsigned long* n);
  unsigned int* GetUIntArray(unsigned long* n);
  Kalvo_Long* GetLongArray(unsigned long* n);
  Kalvo_ULong* GetULongArray(unsigned long* n);
  float* GetFloatArray(unsigned long* n);
  double* GetDoubleArray(unsigned long* n);

  // Appends the value as text to `out`, which is emptied first if `append` is 0: a char as
  // a character, an integer in decimal, a float or double as "%f", a text as it stands;
  // other kinds nothing. Returns out->c_str(), and "" for a null `out`.
  const char* Format(Kalvo_String* out, int append);

  // --- References ---------------------------------------------------------------------

  // Refers to `target` (`index` below 0), to what `target` refers to, to the byte at
  // `index` of a text, which is filled up with zero bytes to reach it, or to the value at
  // `index` of a table, which is filled up with keyless entries to reach it. Any other
  // target leaves this value empty. A target that goes with what this value
  // held counts as none. A reference must not outlive its target, and one to a byte no growth of
  // its text.
  void SetRef(const Kalvo_Value* target, int index);

  // The char* or Kalvo_Value* that a reference refers to; null for other kinds.
  void* GetRef();

  // --- Computing ----------------------------------------------------------------------

  // These change this value and return it, whether or not anything changed.
  //
  // Two numbers: the larger kind code gives the type of the operation and the kind of the
  // result, so the order of promotion is that of the codes 0 to 9. Results wrap at their
  // width; integer division truncates toward 0, and a divisor that reads as 0 changes
  // nothing. An empty value counts as 0 on either side. A reference to a byte computes on
  // that byte, with `o` as GetInt reads it. The smallest number divided by -1 stays. Add also
  // appends: to a text the text form of `o`, to a number array numbers of its width, to a string
  // array texts; a table takes over another one's entries in place of its own.
  Kalvo_Value* Add(const Kalvo_Value* o);
  Kalvo_Value* Minus(const Kalvo_Value* o);
  Kalvo_Value* Times(const Kalvo_Value* o);
  Kalvo_Value* Divied(const Kalvo_Value* o);

  // On integers and on references to a byte, at their width; other kinds stay as they are.
  // The count of a shift is taken modulo 32. A shift to the right fills up with zeros,
  // for a reference to a byte with its sign.
  Kalvo_Value* ShiftL(unsigned long n);
  Kalvo_Value* ShiftR(unsigned long n);
  Kalvo_Value* BitAnd(unsigned long m);
  Kalvo_Value* BitOr(unsigned long m);
  Kalvo_Value* BitXor(unsigned long m);
  Kalvo_Value* BitNot();
  Kalvo_Value* PlusPlus();
  Kalvo_Value* MinusMinus();

  // Below 0, 0 or above 0 as this value is less than, equal to or greater than `o`. For
  // two integers that is their 32-bit difference, or -1 or 1 where the signs decide; floats
  // within 1e-8 of each other are equal; texts compare up to their first zero byte. Or -3:
  // `o` is empty; -2: this value is empty; -4: the two kinds cannot be compared; -5: this
  // kind cannot be compared, or a text with a number. The codes lie among the differences.
  int Copmare(const Kalvo_Value* o);

  unsigned long Dump(Kalvo_String* out);
  unsigned long Import(const char* p, int n);

 private:
  friend class Kalvo_KVPair;
  friend class MP_TableEntry;
  friend class MP_Value;
  explicit Kalvo_Value(MP_Value& held) : impl_(&held) {}

  MP_Value* impl_;
};

// --- Tables ---------------------------------------------------------------------------

// A key and a value.
class KALVO_API Kalvo_KVPair : public Kalvo_QueueObject {
 public:
  Kalvo_KVPair();
  ~Kalvo_KVPair() override;

  Kalvo_Key key;
  Kalvo_Value value;

 private:
  friend class MP_TableEntry;
  Kalvo_KVPair(MP_Key& heldKey, MP_Value& heldValue) : key(heldKey), value(heldValue) {}
};

// 1 if keys and values are equal. Values are equal if they have one kind and the same
// content, byte by byte; two tables if they hold equal pairs in the same order. Empty
// values, pointers and references are equal to nothing.
KALVO_API int operator==(Kalvo_KVPair& a, Kalvo_KVPair& b);
KALVO_API int operator!=(Kalvo_KVPair& a, Kalvo_KVPair& b);

// An ordered map from keys to values. Entries stay in the order in which they came and are
// found by key through a hash map of 97 buckets, which never changes its size.
//
// Wherever a key is taken there are three forms: a number, a text and a Kalvo_Key. A text
// gets the table's case flag, and a Kalvo_Key that is handed in gets it too; a number has
// none. A null text stands for the empty key, and a null Kalvo_Key* for a key that no entry
// has.
//
// Positions count from 0; where an entry is looked for, a negative one and one beyond the
// end mean the last entry. Access by position walks from the nearer end, or from the place
// where one was looked for last.
class KALVO_API Kalvo_KValueTable {
 public:
  // Empty, case flag 1.
  Kalvo_KValueTable();

  // A deep copy of the entries of `other`, in order, and of its case flag, which the keys of
  // all new entries get. Of entries with equal keys, keyless ones among them, the first
  // stays, with the last one's value. `other`, which is not touched, may be a part of this
  // table.
  Kalvo_KValueTable(const Kalvo_KValueTable& other);
  Kalvo_KValueTable& operator=(const Kalvo_KValueTable& other);

  virtual ~Kalvo_KValueTable();

  // Assignment that keeps the own case flag. The old entries go: this is no merge.
  Kalvo_KValueTable& Add(const Kalvo_KValueTable& other);

  // 0: texts that come in from now on ignore case. Entries that are there keep their keys.
  void SetCaseFlag(int flag);

  // Removes all entries; the case flag stays.
  void RemoveAll();

  // --- By key -------------------------------------------------------------------------

  // The value of the entry with that key, as it is; a new entry with an empty value at the
  // end if there is none.
  Kalvo_Value* Insert(unsigned long k);
  Kalvo_Value* Insert(const char* k);
  Kalvo_Value* Insert(Kalvo_Key& k);

  // The value, or null.
  Kalvo_Value* GetValue(unsigned long k);
  Kalvo_Value* GetValue(const char* k);
  Kalvo_Value* GetValue(Kalvo_Key* k);

  // Destroys the entry. If the cursor is there, it moves to the next one.
  void Remove(unsigned long k);
  void Remove(const char* k);
  void Remove(Kalvo_Key* k);

  // Insert, with a new empty table as the value, whatever it was.
  Kalvo_KValueTable* InsertTable(unsigned long k);
  Kalvo_KValueTable* InsertTable(const char* k);
  Kalvo_KValueTable* InsertTable(Kalvo_Key& k);

  // The table that the value is; null if there is no such entry or it is no table.
  Kalvo_KValueTable* GetTable(unsigned long k);
  Kalvo_KValueTable* GetTable(const char* k);
  Kalvo_KValueTable* GetTable(Kalvo_Key* k);

  // GetPtr of the value; null if there is none.
  void* GetPtr(unsigned long k);
  void* GetPtr(const char* k);
  void* GetPtr(Kalvo_Key* k);

  // GetByteArray of the value; null if there is none.
  char* GetByteArray(unsigned long k, unsigned long* n);
  char* GetByteArray(const char* k, unsigned long* n);
  char* GetByteArray(Kalvo_Key* k, unsigned long* n);

  // GetULong of the value; 0 if there is none.
  unsigned long GetBaseValue(unsigned long k);
  unsigned long GetBaseValue(const char* k);
  unsigned long GetBaseValue(Kalvo_Key* k);

  // Insert, then Set or SetPtr on the value, which is returned.
  Kalvo_Value* Set(unsigned long k, const char* s);
  Kalvo_Value* Set(const char* k, const char* s);
  Kalvo_Value* Set(unsigned long k, long v);
  Kalvo_Value* Set(const char* k, long v);
  Kalvo_Value* SetPtr(unsigned long k, void* p);
  Kalvo_Value* SetPtr(const char* k, void* p);

  // --- By position --------------------------------------------------------------------

  unsigned long GetCount();

  // Move the cursor to the entry at `i`; null only in an empty table.
  Kalvo_Value* GetAt(int i) const;
  Kalvo_Key* GetKeyAt(int i) const;

  // A new entry with an empty key before position `i`, or at the end if there is no such
  // position. It can be found by position only. Returns its value.
  Kalvo_Value* InsertAt(int i);

  // Destroys the entry at `i`. If the cursor is there, it moves to the next one.
  void RemoveAt(int i);

  // Gives the entry at `i` a new key. An entry that had this key stays, to be found by
  // position only. A null Kalvo_Key* changes nothing; a null text leaves the key, and gives it the
  // table's case flag.
  void ModifyKey(int i, Kalvo_Key* k);
  void ModifyKey(int i, const char* k);
  void ModifyKey(int i, unsigned long k);

  // --- Iteration ----------------------------------------------------------------------

  // Move the one cursor of the table to the first entry, or on to the next. `k` points to
  // the entry's key and the result is its value; both are null at the end. An entry may be
  // removed during an iteration; if it is the one at the cursor, GetNext steps over the
  // one behind it, since the cursor has moved there.
  Kalvo_Value* GetFirst(Kalvo_Key*& k) const;
  Kalvo_Value* GetNext(Kalvo_Key*& k) const;

  unsigned long Dump(Kalvo_String* out);

  // All entries of the form come in, also those with equal keys, of which the last one is
  // found. Keys keep the case flags of the form, the table its own: a table whose keys
  // ignore case needs SetCaseFlag(0) before its texts are found. Keys of one chain cost each
  // other time: 65,535 of them, which somebody can choose, take seconds.
  unsigned long Import(const char* p, int n);

 private:
  friend class MP_KValueTable;

  MP_KValueTable* impl_;
};

// 1 if the tables hold equal pairs in the same order, else 0. Cursors stay where they are.
KALVO_API int operator==(Kalvo_KValueTable& a, Kalvo_KValueTable& b);
KALVO_API int operator!=(Kalvo_KValueTable& a, Kalvo_KValueTable& b);

#endif  // KALVOBASE_VALUE_H_
