#include "trace.h"

#include <iconv.h>
#include <kalvobase/kalvobase.h>

#include <cstdarg>
#include <cstdio>
#include <string>

void TraceToTerminal(int, const char* format, ...) {
  Kalvo_String line;
  va_list args;
  va_start(args, format);
  line.vsprintf(format, args);
  va_end(args);

  std::string gbk(line.c_str(), line.length());
  std::string utf8(gbk.size() * 3, '\0');  // as long as it can get
  char* in = &gbk[0];
  char* out = &utf8[0];
  std::size_t inLeft = gbk.size();
  std::size_t outLeft = utf8.size();
  const iconv_t converter = iconv_open("UTF-8", "GBK");
  if (converter != reinterpret_cast<iconv_t>(-1)) {
    iconv(converter, &in, &inLeft, &out, &outLeft);
    iconv_close(converter);
  }
  utf8.resize(utf8.size() - outLeft);
  std::puts(utf8.c_str());
}
