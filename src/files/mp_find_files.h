// MP_FindFiles: what is behind a Kalvo_FindFiles.

#ifndef KALVOBASE_SRC_FILES_MP_FIND_FILES_H_
#define KALVOBASE_SRC_FILES_MP_FIND_FILES_H_

#include <string>

#include "kalvobase/file.h"
#include "kalvobase/queue.h"

class MP_FindFiles {
 public:
  enum class SortKey { kNone, kSize, kModified, kCreated, kName };

  unsigned long Find(const char* path);
  Kalvo_FileItem* First() { return MoveTo(results_.PeekHead(0)); }
  Kalvo_FileItem* Tail() { return MoveTo(results_.PeekTail(0)); }
  Kalvo_FileItem* Next();
  Kalvo_FileItem* Previous();
  unsigned long Count() { return results_.GetItemCount(); }
  void Free();
  void Sort(SortKey key);

 private:
  Kalvo_FileItem* MoveTo(Kalvo_QueueObject* result);

  Kalvo_Queue results_{0, 0};
  Kalvo_QueueObject* cursor_ = nullptr;
  SortKey sortKey_ = SortKey::kNone;
};

#endif  // KALVOBASE_SRC_FILES_MP_FIND_FILES_H_
