// The list of strings behind a Kalvo_StringArray, on a queue without lock and signal.

#ifndef KALVOBASE_SRC_TEXT_MP_STRING_ARRAY_H_
#define KALVOBASE_SRC_TEXT_MP_STRING_ARRAY_H_

#include <memory>

#include "kalvobase/queue.h"
#include "kalvobase/text.h"

class MP_StringArrayItem : public Kalvo_QueueObject {
 public:
  MP_StringArrayItem* NextItem() { return static_cast<MP_StringArrayItem*>(Next()); }

  Kalvo_String text;
};

class MP_StringArray {
 public:
  static MP_StringArray& Of(const Kalvo_StringArray& array) { return *array.impl_; }

  MP_StringArray();

  int GetSize() const;
  MP_StringArrayItem* First() const;
  Kalvo_String* GetAt(int i) const;
  Kalvo_String* InsertText(int i, const char* s, int n);
  Kalvo_String* InsertString(int i, const Kalvo_String& s);
  Kalvo_String* InsertCopies(int i, const char* s, int n);
  Kalvo_String* InsertCopies(int i, const Kalvo_String& s, int n);
  Kalvo_String* InsertArray(int i, const MP_StringArray& other);
  int Append(const MP_StringArray& other);
  void Copy(const MP_StringArray& other);
  void RemoveAt(int i, int n);
  void RemoveTail();
  void RemoveAll();
  bool Equals(const MP_StringArray& other) const;
  int SplitText(const char* text, char separator, bool merge);
  int SplitString(Kalvo_String* text, char separator, bool merge);

 private:
  MP_StringArrayItem* ItemAt(int i) const;
  int PlaceFor(int i) const;
  Kalvo_String* Insert(int i, MP_StringArrayItem* item);
  int Split(const char* text, int length, char separator, bool merge, bool keepEmptyTail);

  std::unique_ptr<Kalvo_Queue> queue_;
};

#endif  // KALVOBASE_SRC_TEXT_MP_STRING_ARRAY_H_
