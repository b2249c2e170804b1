#include "files/path.h"

#include <cstring>
#include <string_view>
#include <vector>

#include "kalvobase/text.h"
#include "platform/file.h"

namespace path {
namespace {

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool IsShare(const char* path) { return path[0] == '\\' && path[1] == '\\'; }

// Takes the next component off the front of a path.
std::string_view TakeComponent(std::string_view* path) {
  std::size_t length = 0;
  while (length < path->size() && !IsSeparator((*path)[length])) ++length;
  const std::string_view component = path->substr(0, length);
  path->remove_prefix(length < path->size() ? length + 1 : length);
  return component;
}

// Joins the components of a path anew; `root` stands for a separator at its beginning.
std::string Resolve(std::string_view path, const std::string& root, char separator) {
  std::string result;
  std::vector<std::size_t> starts;  // of the components in the result
  if (IsSeparator(path.front())) {
    starts.push_back(0);
    result = root;
  }
  while (!path.empty()) {
    const std::string_view component = TakeComponent(&path);
    if (component.empty() || component == ".") continue;
    if (component == "..") {
      if (starts.size() < 2) continue;  // there is nothing above the first
      result.resize(starts.back());
      starts.pop_back();
      continue;
    }
    starts.push_back(result.size());
    result += component;
    result += separator;
  }
  if (starts.size() > 1) result.pop_back();
  return result;
}

}  // namespace

bool HasDrive(const char* path) { return IsLetter(path[0]) && path[1] == ':'; }

std::string Normalise(const char* path) {
  if (path == nullptr || *path == '\0') return std::string();
  if (HasDrive(path)) return Resolve(path, "\\", '\\');
  if (IsShare(path)) return Resolve(path, "\\\\", '\\');
  const std::string root(1, platform::kPathSeparator);
  if (platform::path_is_absolute(path)) return Resolve(path, root, platform::kPathSeparator);
  const std::string current = platform::current_directory();
  return Resolve(current.empty() ? path : current + root + path, root, platform::kPathSeparator);
}

// A path with a drive goes behind what stands in `out` already.
const char* StoreNormalised(const char* path, Kalvo_String* out) {
  if (path == nullptr || *path == '\0') return out->c_str();
  const std::string result =
      HasDrive(path) ? Resolve(std::string(out->c_str()) + path, "\\", '\\') : Normalise(path);
  return out->strcpy(result.c_str())->c_str();
}

void MakeParents(const char* path) {
  const std::string whole = platform::system_path(path);
  std::size_t i = 0;
  if (path != nullptr && IsShare(path)) i = whole.find('$');
  for (; i < whole.size() && i <= platform::kPathLimit; ++i) {
    if (!IsSeparator(whole[i]) || i == 0) continue;
    const std::string parent = whole.substr(0, i);
    if (!platform::file_exists(parent)) platform::directory_make(parent);
  }
}

void MakeDirectory(const char* path) {
  const std::string whole = platform::system_path(path);
  platform::FileStatus status;
  if (platform::file_status(whole, &status) && status.directory) return;
  MakeParents(path);
  platform::directory_make(whole);
}

int SafeOpen(const char* path, int flags, int permissions) {
  if ((flags & platform::kOpenCreate) != 0) MakeParents(path);
  return platform::file_open(platform::system_path(path), flags, permissions);
}

}  // namespace path
