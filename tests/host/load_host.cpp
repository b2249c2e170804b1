// A host that is not linked with the library and loads and unloads it by hand, again and
// again, alone and with a plugin that leaves everything running. Nothing may stay behind.

#include <dirent.h>
#include <dlfcn.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

int Entries(const char* directory) {
  int count = 0;
  DIR* listing = opendir(directory);
  while (readdir(listing) != nullptr) ++count;
  closedir(listing);
  return count;
}

int Lines(const char* file) {
  int count = 0;
  std::FILE* stream = std::fopen(file, "r");
  for (int c; (c = std::getc(stream)) != EOF;) count += c == '\n' ? 1 : 0;
  std::fclose(stream);
  return count;
}

[[noreturn]] void Fail(const char* what) {
  std::printf("%s\n", what);
  std::exit(1);
}

template <class Function>
Function Find(void* library, const char* name) {
  void* const symbol = dlsym(library, name);
  if (symbol == nullptr) Fail(name);
  return reinterpret_cast<Function>(symbol);
}

void Load(const char* library) {
  void* const loaded = dlopen(library, RTLD_NOW);
  if (loaded == nullptr) Fail(dlerror());
  if (Find<unsigned long (*)()>(loaded, "Kalvo_THREAD_GetTickCount")() > 0xFFFFFFFFul) {
    Fail("no tick count");
  }
  dlclose(loaded);
  if (dlopen(library, RTLD_NOW | RTLD_NOLOAD) != nullptr) Fail("it stays loaded");
}

void LoadPlugin(const char* plugin, const char* library, const char* directory, bool handlers) {
  void* const loaded = dlopen(plugin, RTLD_NOW);
  if (loaded == nullptr) Fail(dlerror());
  Find<void (*)(const char*)>(loaded, "StartEverything")(directory);
  if (handlers && !Find<bool (*)()>(loaded, "StartHandlers")()) Fail("handlers do not work");
  dlclose(loaded);
  if (dlopen(library, RTLD_NOW | RTLD_NOLOAD) != nullptr) Fail("it stays loaded");
}

struct Holdings {
  int threads;
  int descriptors;
  int mappings;
  std::size_t bytes;
};

Holdings Held() {
  return {Entries("/proc/self/task"), Entries("/proc/self/fd"), Lines("/proc/self/maps"),
          mallinfo2().uordblks};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) Fail("usage: load_host LIBRARY PLUGIN TIMES [sanitized]");
  const int times = std::atoi(argv[3]);
  // What the allocator keeps for later would look like memory that stays behind; its caches for
  // each thread are turned off from outside.
  mallopt(M_ARENA_MAX, 1);
  mallopt(M_MXFAST, 0);
  char directory[] = "/tmp/kalvobase_test.XXXXXX";
  if (mkdtemp(directory) == nullptr) Fail("no directory");
  // What the first rounds leave in the system's own caches does not count.
  constexpr int kFirst = 20;
  Holdings before = {};
  for (int i = 0; i < times + kFirst; ++i) {
    if (i == kFirst) before = Held();
    // Handlers take their time to connect.
    i % 2 == 0 ? Load(argv[1]) : LoadPlugin(argv[2], argv[1], directory, i % 10 == 1);
  }
  const Holdings now = Held();
  std::printf("threads %d %d, descriptors %d %d, mappings %d %d, bytes %zu %zu\n", before.threads,
              now.threads, before.descriptors, now.descriptors, before.mappings, now.mappings,
              before.bytes, now.bytes);
  if (now.threads != before.threads) Fail("threads stay behind");
  if (now.descriptors != before.descriptors) Fail("descriptors stay open");
  // A sanitizer keeps things of its own.
  const bool exact = argc < 5;
  if (exact && now.mappings > before.mappings + 4) Fail("mappings stay behind");
  if (exact && now.bytes > before.bytes + 256) Fail("memory stays behind");
  return std::system((std::string("rm -r ") + directory).c_str()) == 0 ? 0 : 1;
}
