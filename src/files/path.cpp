#include "files/path.h"

#include <string_view>
#include <vector>

#include "kalvobase/text.h"
#include "platform/file.h"
#include "platform/kept_error.h"

namespace path {
namespace {

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool IsShare(const char* path) { return path[0] == '\\' && path[1] == '\\'; }

bool IsSystemSeparator(char c) { return c == platform::kPathSeparator; }

// Takes the next component off the front of a path.
template <class IsEnd>
std::string_view TakeComponent(std::string_view* path, IsEnd isEnd) {
  std::size_t length = 0;
  while (length < path->size() && !isEnd((*path)[length])) ++length;
  const std::string_view component = path->substr(0, length);
  path->remove_prefix(length < path->size() ? length + 1 : length);
  return component;
}

// Puts components together. Above the first there is nothing, unless the path is relative.
class Joint {
 public:
  Joint(char separator, bool relative) : separator_(separator), relative_(relative) {}

  // What stands for the separator at the beginning of an absolute path.
  void AddRoot(const std::string& root) {
    starts_.push_back(0);
    result_ = root;
  }

  template <class IsEnd>
  void Add(std::string_view path, IsEnd isEnd) {
    while (!path.empty()) {
      const std::string_view component = TakeComponent(&path, isEnd);
      if (component.empty() || component == ".") continue;
      if (component != "..") {
        Push(component);
      } else if (starts_.size() > above_ + (relative_ ? 0 : 1)) {
        result_.resize(starts_.back());
        starts_.pop_back();
      } else if (relative_) {
        Push(component);
        ++above_;
      }
    }
  }

  // Only a root keeps its separator.
  std::string Finish() {
    if (starts_.size() > 1 || (relative_ && !starts_.empty())) result_.pop_back();
    return result_;
  }

 private:
  void Push(std::string_view component) {
    starts_.push_back(result_.size());
    result_ += component;
    result_ += separator_;
  }

  const char separator_;
  const bool relative_;
  std::string result_;
  std::vector<std::size_t> starts_;  // of the components
  std::size_t above_ = 0;            // how many of the first are ".."
};

std::string NormaliseForeign(std::string_view path, const char* root) {
  Joint joint('\\', false);
  if (IsSeparator(path.front())) joint.AddRoot(root);
  joint.Add(path, IsSeparator);
  return joint.Finish();
}

// The system takes no separator at the end of what may be a link.
Path Foreign(const std::string& text) {
  std::string system = platform::system_path(text.c_str());
  while (system.size() > 1 && IsSeparator(system.back())) system.pop_back();
  return {text, system};
}

}  // namespace

bool HasDrive(const char* path) { return IsLetter(path[0]) && path[1] == ':'; }

Path Normalise(const char* path) {
  if (path == nullptr || *path == '\0') return {};
  if (HasDrive(path)) return Foreign(NormaliseForeign(path, "\\"));
  if (IsShare(path)) return Foreign(NormaliseForeign(path, "\\\\"));
  const bool absolute = platform::path_is_absolute(path);
  const std::string current = absolute ? std::string() : platform::current_directory();
  Joint joint(platform::kPathSeparator, !absolute && current.empty());
  if (absolute || !current.empty()) joint.AddRoot(std::string(1, platform::kPathSeparator));
  joint.Add(current, IsSystemSeparator);  // a name may hold the other separator
  joint.Add(path, IsSeparator);
  const std::string result = joint.Finish();
  return {result, result};
}

// A path with a drive goes behind what stands in `out` already.
const char* StoreNormalised(const char* path, Kalvo_String* out) {
  if (path == nullptr || *path == '\0') return out->c_str();
  const std::string result = HasDrive(path)
                                 ? NormaliseForeign(std::string(out->c_str()) + path, "\\")
                                 : Normalise(path).text;
  return out->strcpy(result.c_str())->c_str();
}

std::string LastComponent(const std::string& system) {
  return system.substr(system.rfind(platform::kPathSeparator) + 1);
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
  platform::KeptError error;
  const std::string system = platform::system_path(path);
  const int descriptor = platform::file_open(system, flags, permissions);
  error.Note();
  return descriptor;
}

}  // namespace path
