// Memory that processes of one user share under a name.
//
// Each object is a small file in a directory of the user's own. Whoever has it open holds
// a shared lock on the file, which the kernel drops with the process, however it ends. So
// a file on which nobody holds a lock is litter: whoever opens its name next starts afresh,
// and whoever makes a new object removes all litter. Making, opening and closing run under
// one lock of the directory. Inside a process a name is mapped once, at one address; again if its
// file was removed from outside. Processes that share the directory but count their threads in
// different namespaces of the kernel have different objects.

#ifndef KALVOBASE_SRC_PLATFORM_POSIX_NAMED_OBJECT_H_
#define KALVOBASE_SRC_PLATFORM_POSIX_NAMED_OBJECT_H_

#include <cstddef>
#include <cstdint>

namespace platform {

struct NamedObject;

// The kinds share their names: a name in use for one kind is refused for the other.
enum class NamedKind : std::uint32_t { kMutex = 1, kSemaphore = 2 };

// Opens the object, or makes it from zeros and calls `initialise` on its memory before
// anybody else sees it. Null if the name is in use for another kind or the system refuses;
// null also if `initialise` gives false.
NamedObject* named_open(const char* name, NamedKind kind, std::size_t size,
                        bool (*initialise)(void* memory, const void* context), const void* context);

// The object's memory, aligned for any type.
void* named_memory(NamedObject* object);

// Gives one open back. If it is the last one of this process, `isUnused` is asked whether the
// memory may go; no thread can open the object meanwhile. False, with nothing done, if it may not.
bool named_close(NamedObject* object, bool (*isUnused)(void* context), void* context);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_POSIX_NAMED_OBJECT_H_
