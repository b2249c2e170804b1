#include "platform/posix/named_object.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <mutex>
#include <new>

namespace platform {
namespace {

constexpr std::uint32_t kMagic = 0x4B4C4F31;
constexpr std::size_t kFileNameLength = 32;

struct Header {
  std::uint32_t magic;
  NamedKind kind;
};
constexpr std::size_t kHeaderSize = 64;  // keeps the payload aligned for any type
static_assert(sizeof(Header) <= kHeaderSize, "the header has its place");

}  // namespace

struct NamedObject {
  NamedObject* next;
  char fileName[kFileNameLength + 1];
  NamedKind kind;
  int users;
  int file;
  char* mapping;
  std::size_t mappingSize;
};

namespace {

// All objects that this process has open, and the lock of that list. Neither has a
// destructor, so both serve hosts that close their objects late.
std::mutex list_lock;
NamedObject* list_head = nullptr;
std::uint32_t made_count = 0;

// The process numbers of this process count in this namespace of the kernel. Mutexes know their
// owners by thread numbers, so processes of two namespaces that share their files must not share
// their objects. 0 if the system does not tell.
std::uint64_t NumberSpace() {
  struct stat about;
  return stat("/proc/self/ns/pid", &about) == 0 ? about.st_ino : 0;
}

// Names may hold any bytes and any number of them, so files are named by a 128-bit hash.
void MakeFileName(const char* name, char (&out)[kFileNameLength + 1]) {
  std::uint64_t a = 0xCBF29CE484222325u;
  std::uint64_t b = 0x9E3779B97F4A7C15u ^ NumberSpace();
  for (const char* c = name; *c != '\0'; ++c) {
    a = (a ^ static_cast<unsigned char>(*c)) * 0x100000001B3u;
    b = (b + static_cast<unsigned char>(*c)) * 0xD6E8FEB86659FD93u;
    b ^= b >> 32;
  }
  std::snprintf(out, sizeof(out), "%016llx%016llx", static_cast<unsigned long long>(a),
                static_cast<unsigned long long>(b));
}

// The user's directory, or -1. Its owner and mode are checked, since the place above it is
// open to everybody.
int OpenDirectory() {
  for (const char* place : {"/dev/shm", "/tmp"}) {
    char path[64];
    std::snprintf(path, sizeof(path), "%s/kalvobase-%lu", place,
                  static_cast<unsigned long>(geteuid()));
    if (mkdir(path, 0700) != 0 && errno != EEXIST) continue;
    const int directory = open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (directory < 0) continue;
    struct stat about;
    if (fstat(directory, &about) == 0 && about.st_uid == geteuid() &&
        (about.st_mode & (S_IWGRP | S_IWOTH)) == 0) {
      return directory;
    }
    close(directory);
  }
  return -1;
}

bool LockFile(int file, int operation) {
  int result;
  do {
    result = flock(file, operation);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

// The directory with its lock held, from construction to destruction.
class LockedDirectory {
 public:
  LockedDirectory() : directory_(OpenDirectory()) {
    if (directory_ < 0) return;
    lock_ = openat(directory_, "lock", O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    held_ = lock_ >= 0 && LockFile(lock_, LOCK_EX);
  }
  LockedDirectory(const LockedDirectory&) = delete;
  LockedDirectory& operator=(const LockedDirectory&) = delete;
  ~LockedDirectory() {
    // Before closing: a child that another thread forked has the descriptor, too.
    if (held_) LockFile(lock_, LOCK_UN);
    if (lock_ >= 0) close(lock_);
    if (directory_ >= 0) close(directory_);
  }

  bool held() const { return held_; }

  int Open(const char* fileName, int flags) const {
    return openat(directory_, fileName, flags | O_RDWR | O_NOFOLLOW | O_CLOEXEC, 0600);
  }

  void Remove(const char* fileName) const { unlinkat(directory_, fileName, 0); }

  // Removes a file that nobody has open. Asked with a descriptor of its own, since a forked
  // child shares those of its parent, and their locks.
  void RemoveIfLitter(const char* fileName) const {
    const int file = Open(fileName, 0);
    if (file < 0) return;
    if (LockFile(file, LOCK_EX | LOCK_NB)) Remove(fileName);
    close(file);
  }

  // Removes the files whose last users were killed.
  void RemoveLitter() const {
    const int copy = openat(directory_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* listing = copy >= 0 ? fdopendir(copy) : nullptr;
    if (listing == nullptr) {
      if (copy >= 0) close(copy);
      return;
    }
    while (const dirent* entry = readdir(listing)) {
      if (std::strlen(entry->d_name) == kFileNameLength) RemoveIfLitter(entry->d_name);
    }
    closedir(listing);
  }

 private:
  int directory_;
  int lock_ = -1;
  bool held_ = false;
};

// False if somebody has removed the file. Other processes make a new one then.
bool HasName(int file) {
  struct stat about;
  return fstat(file, &about) == 0 && about.st_nlink > 0;
}

bool SizeIs(int file, std::size_t size) {
  struct stat about;
  return fstat(file, &about) == 0 && about.st_size == static_cast<off_t>(size);
}

// Gives the file its size with the memory behind it, so that no later store can fail.
bool MakeRoom(int file, std::size_t size) {
  return ftruncate(file, 0) == 0 && posix_fallocate(file, 0, static_cast<off_t>(size)) == 0;
}

char* Map(int file, std::size_t size) {
  void* mapping = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  return mapping == MAP_FAILED ? nullptr : static_cast<char*>(mapping);
}

// Fills `object` from the file of its name; false leaves nothing open.
bool OpenFile(const LockedDirectory& directory, NamedObject* object,
              bool (*initialise)(void*, const void*), const void* context) {
  const int file = directory.Open(object->fileName, O_CREAT);
  if (file < 0) return false;
  const bool fresh = LockFile(file, LOCK_EX | LOCK_NB);
  bool usable = fresh ? MakeRoom(file, object->mappingSize) : SizeIs(file, object->mappingSize);
  object->mapping = usable ? Map(file, object->mappingSize) : nullptr;
  usable = object->mapping != nullptr;
  if (usable) {
    Header* header = reinterpret_cast<Header*>(object->mapping);
    if (fresh) {
      usable = initialise(object->mapping + kHeaderSize, context);
      *header = Header{kMagic, object->kind};
    } else {
      usable = header->magic == kMagic && header->kind == object->kind;
    }
  }
  if (usable && LockFile(file, LOCK_SH)) {
    object->file = file;
    // Now and then is enough, and keeps the making of many objects cheap.
    if (fresh) {
      ++made_count;
      if ((made_count & (made_count - 1)) == 0) directory.RemoveLitter();
    }
    return true;
  }
  if (object->mapping != nullptr) munmap(object->mapping, object->mappingSize);
  if (fresh) directory.Remove(object->fileName);
  close(file);
  return false;
}

}  // namespace

NamedObject* named_open(const char* name, NamedKind kind, std::size_t size,
                        bool (*initialise)(void* memory, const void* context),
                        const void* context) {
  NamedObject wanted{};
  MakeFileName(name, wanted.fileName);
  wanted.kind = kind;
  wanted.users = 1;
  wanted.mappingSize = kHeaderSize + size;

  std::lock_guard<std::mutex> guard(list_lock);
  for (NamedObject* object = list_head; object != nullptr; object = object->next) {
    if (std::strcmp(object->fileName, wanted.fileName) != 0 || !HasName(object->file)) continue;
    if (object->kind != kind) return nullptr;
    ++object->users;
    return object;
  }
  NamedObject* object = new (std::nothrow) NamedObject(wanted);
  if (object == nullptr) return nullptr;
  const LockedDirectory directory;
  if (!directory.held() || !OpenFile(directory, object, initialise, context)) {
    delete object;
    return nullptr;
  }
  object->next = list_head;
  list_head = object;
  return object;
}

void* named_memory(NamedObject* object) { return object->mapping + kHeaderSize; }

bool named_close(NamedObject* object, bool (*isUnused)(void* context), void* context) {
  std::lock_guard<std::mutex> guard(list_lock);
  if (object->users == 1 && !isUnused(context)) return false;
  if (--object->users > 0) return true;
  NamedObject** link = &list_head;
  while (*link != object) link = &(*link)->next;
  *link = object->next;

  munmap(object->mapping, object->mappingSize);
  const LockedDirectory directory;
  close(object->file);
  if (directory.held()) directory.RemoveIfLitter(object->fileName);
  delete object;
  return true;
}

}  // namespace platform
