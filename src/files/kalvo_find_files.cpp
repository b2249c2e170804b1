#include "files/mp_find_files.h"

Kalvo_FindFiles::Kalvo_FindFiles() : impl_(new MP_FindFiles) {}
Kalvo_FindFiles::Kalvo_FindFiles(const Kalvo_FindFiles& other) = default;
Kalvo_FindFiles& Kalvo_FindFiles::operator=(const Kalvo_FindFiles& other) = default;
Kalvo_FindFiles::~Kalvo_FindFiles() { delete impl_; }

unsigned long Kalvo_FindFiles::Find(const char* path) { return impl_->Find(path); }
Kalvo_FileItem* Kalvo_FindFiles::FindFirst() { return impl_->First(); }
Kalvo_FileItem* Kalvo_FindFiles::FindTail() { return impl_->Tail(); }
Kalvo_FileItem* Kalvo_FindFiles::FindNext() { return impl_->Next(); }
Kalvo_FileItem* Kalvo_FindFiles::FindPrev() { return impl_->Previous(); }
unsigned long Kalvo_FindFiles::GetResultCount() { return impl_->Count(); }
void Kalvo_FindFiles::FindFree() { impl_->Free(); }
void Kalvo_FindFiles::QSortByName() { impl_->Sort(MP_FindFiles::SortKey::kName); }
void Kalvo_FindFiles::QSortBysize() { impl_->Sort(MP_FindFiles::SortKey::kSize); }
void Kalvo_FindFiles::QSortByModifyTime() { impl_->Sort(MP_FindFiles::SortKey::kModified); }
void Kalvo_FindFiles::QSortByCreateTime() { impl_->Sort(MP_FindFiles::SortKey::kCreated); }
