#include "text/mp_string_array.h"

#include <algorithm>
#include <utility>

#include "text/text_bytes.h"

namespace {

constexpr int kTail = -1;

}  // namespace

MP_StringArray::MP_StringArray() : queue_(new Kalvo_Queue(0, 0)) {}

int MP_StringArray::GetSize() const { return static_cast<int>(queue_->GetItemCount()); }

MP_StringArrayItem* MP_StringArray::ItemAt(int i) const {
  return static_cast<MP_StringArrayItem*>(queue_->PeekItemAt(i, 0));
}

MP_StringArrayItem* MP_StringArray::First() const { return ItemAt(0); }

Kalvo_String* MP_StringArray::GetAt(int i) const {
  MP_StringArrayItem* item = ItemAt(i);
  return item != nullptr ? &item->text : nullptr;
}

Kalvo_String* MP_StringArray::Insert(int i, MP_StringArrayItem* item) {
  if (queue_->InsertItemAt(item, i) != nullptr) return &item->text;
  delete item;
  return nullptr;
}

int MP_StringArray::PlaceFor(int i) const { return i >= 0 && i < GetSize() ? i : GetSize(); }

Kalvo_String* MP_StringArray::InsertText(int i, const char* s, int n) {
  MP_StringArrayItem* item = new MP_StringArrayItem;
  item->text.strncpy(s, n);
  return Insert(i, item);
}

Kalvo_String* MP_StringArray::InsertString(int i, const Kalvo_String& s) {
  MP_StringArrayItem* item = new MP_StringArrayItem;
  item->text = s;
  return Insert(i, item);
}

// Each copy goes in front of the one before, so the first one ends up as the last.
Kalvo_String* MP_StringArray::InsertCopies(int i, const char* s, int n) {
  i = PlaceFor(i);
  Kalvo_String* first = n < 1 ? nullptr : InsertText(i, s, -1);
  for (int made = 1; made < n; ++made) InsertText(i, s, -1);
  return first;
}

Kalvo_String* MP_StringArray::InsertCopies(int i, const Kalvo_String& s, int n) {
  i = PlaceFor(i);
  Kalvo_String* first = n < 1 ? nullptr : InsertString(i, s);
  for (int made = 1; made < n; ++made) InsertString(i, s);
  return first;
}

// The array may be inserted into itself, so the copies are complete before the first of
// them goes in.
Kalvo_String* MP_StringArray::InsertArray(int i, const MP_StringArray& other) {
  MP_StringArray copies;
  copies.Append(other);
  Kalvo_String* first = copies.GetAt(0);
  Kalvo_QueueObject* place = PlaceFor(i) < GetSize() ? ItemAt(i) : nullptr;
  while (Kalvo_QueueObject* item = copies.queue_->RemoveItemAtHead(0)) {
    const bool done = place != nullptr ? place->AddItemBefore(item) != nullptr
                                       : queue_->AddItemAtTail(item) != nullptr;
    if (!done) delete item;
  }
  return first;
}

int MP_StringArray::Append(const MP_StringArray& other) {
  MP_StringArrayItem* item = other.First();
  for (int left = other.GetSize(); left > 0; --left, item = item->NextItem()) {
    InsertText(kTail, item->text.c_str(), -1);
  }
  return GetSize();
}

void MP_StringArray::Copy(const MP_StringArray& other) {
  if (this == &other) return;
  RemoveAll();
  Append(other);
}

void MP_StringArray::RemoveAt(int i, int n) {
  if (i < 0 || i >= GetSize()) return;
  n = std::min(n, GetSize() - i);
  MP_StringArrayItem* item = ItemAt(i);
  for (; n > 0; --n) {
    MP_StringArrayItem* next = item->NextItem();
    delete item;
    item = next;
  }
}

void MP_StringArray::RemoveTail() { delete queue_->RemoveItemAtTail(0); }

void MP_StringArray::RemoveAll() { queue_->RemoveAll(); }

bool MP_StringArray::Equals(const MP_StringArray& other) const {
  if (GetSize() != other.GetSize()) return false;
  MP_StringArrayItem* a = First();
  MP_StringArrayItem* b = other.First();
  for (; a != nullptr; a = a->NextItem(), b = b->NextItem()) {
    if (a->text != b->text) return false;
  }
  return true;
}

int MP_StringArray::SplitText(const char* text, char separator, bool merge) {
  return Split(text, text::Length(text), separator, merge, false);
}

int MP_StringArray::SplitString(Kalvo_String* text, char separator, bool merge) {
  if (text == nullptr) return Split(nullptr, 0, separator, merge, false);
  return Split(text->c_str(), static_cast<int>(text->length()), separator, merge, true);
}

// The text may be one of the elements, so those go after the split.
int MP_StringArray::Split(const char* text, int length, char separator, bool merge,
                          bool keepEmptyTail) {
  MP_StringArray tokens;
  int start = 0;
  for (int i = 0; i < length;) {
    if (text[i] != separator) {
      ++i;
      continue;
    }
    tokens.InsertText(kTail, text + start, i - start);
    ++i;
    while (merge && i < length && text[i] == separator) ++i;
    start = i;
  }
  if (start < length || keepEmptyTail) tokens.InsertText(kTail, text + start, length - start);
  std::swap(queue_, tokens.queue_);
  return GetSize();
}
