#include "journal.h"

#include <iconv.h>

#include <string>

namespace {

Journal* current = nullptr;

// The library's Chinese texts come in GBK.
std::string Utf8(std::string gbk) {
  std::string utf8(gbk.size() * 3, '\0');  // as long as it can get
  char* in = &gbk[0];
  char* out = &utf8[0];
  std::size_t inLeft = gbk.size();
  std::size_t outLeft = utf8.size();
  const iconv_t converter = iconv_open("UTF-8", "GBK");
  if (converter == reinterpret_cast<iconv_t>(-1)) return gbk;
  iconv(converter, &in, &inLeft, &out, &outLeft);
  iconv_close(converter);
  utf8.resize(utf8.size() - outLeft);
  return utf8;
}

}  // namespace

Journal::Journal(const char* directory, const char* name, int level) : log_(1) {
  Kalvo_String path;
  Kalvo_FileItem::GetRealPathName(directory, path);
  log_.SetMainDir(path.c_str());
  log_.Init(name, level);
  current = this;
  SetKalvo_KernelDebugLogFunction(OnLine);
}

Journal::~Journal() {
  ResetKalvo_KernelDebugLogFunction();
  current = nullptr;
}

void Journal::Trace(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  OnLine(level, format, args);
  va_end(args);
}

void Journal::OnLine(int level, const char* format, va_list args) {
  if (current == nullptr) return;
  Kalvo_String line;
  line.vsprintf(format, args);
  current->log_.Trace(level, "%s", Utf8(line.c_str()).c_str());
}
