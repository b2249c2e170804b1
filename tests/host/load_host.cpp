// A host that is not linked with the library and loads and unloads it by hand, again and
// again. Nothing of it may stay behind.

#include <dirent.h>
#include <dlfcn.h>

#include <cstdio>

namespace {

int OpenDescriptors() {
  int count = 0;
  DIR* listing = opendir("/proc/self/fd");
  while (readdir(listing) != nullptr) ++count;
  closedir(listing);
  return count;
}

int Fail(const char* what) {
  std::printf("%s\n", what);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return Fail("usage: load_host LIBRARY");
  const int before = OpenDescriptors();
  for (int i = 0; i < 20; ++i) {
    void* library = dlopen(argv[1], RTLD_NOW);
    if (library == nullptr) return Fail(dlerror());
    using TickCount = unsigned long (*)();
    const TickCount tickCount =
        reinterpret_cast<TickCount>(dlsym(library, "Kalvo_THREAD_GetTickCount"));
    if (tickCount == nullptr || tickCount() > 0xFFFFFFFFul) return Fail("no tick count");
    dlclose(library);
    if (dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) != nullptr) return Fail("it stays loaded");
  }
  if (OpenDescriptors() != before) return Fail("descriptors stay open");
  return 0;
}
