// Strings against std::string, the C library, fmt and GLib.

#include <fmt/format.h>
#include <glib.h>

#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

#include "duel.h"
#include "kalvobase/kalvobase.h"

namespace {

constexpr int kAppendedBytes = 16 << 20;
constexpr int kBase64Bytes = 1 << 20;

struct Line {
  const char* name = "eth0";
  int count = 1234;
  double time = 12.345;
  unsigned int mask = 0xBEEF;
};

std::string RandomBytes(int n) {
  std::string bytes;
  unsigned int state = 1;
  for (int i = 0; i < n; ++i) {
    state = state * 1664525u + 1013904223u;
    bytes.push_back(static_cast<char>(state >> 24));
  }
  return bytes;
}

void AppendBytes() {
  const std::string work = "append 1 byte at a time to 16 MiB";
  duel::Ours(work, [](benchmark::State& state) {
    for (auto _ : state) {
      Kalvo_String s;
      for (int i = 0; i < kAppendedBytes; ++i) s.addch(static_cast<char>(i), 1);
      benchmark::DoNotOptimize(s.c_str());
    }
  });
  duel::Peer(work, "std::string::push_back", 1.0, [](benchmark::State& state) {
    for (auto _ : state) {
      std::string s;
      for (int i = 0; i < kAppendedBytes; ++i) s.push_back(static_cast<char>(i));
      benchmark::DoNotOptimize(s.c_str());
    }
  });
}

void AppendBlocks() {
  const std::string work = "append 64 bytes at a time to 16 MiB";
  static const std::string block(64, 'x');
  duel::Ours(work, [](benchmark::State& state) {
    for (auto _ : state) {
      Kalvo_String s;
      for (int i = 0; i < kAppendedBytes / 64; ++i) s.memcat(block.data(), 64);
      benchmark::DoNotOptimize(s.c_str());
    }
  });
  duel::Peer(work, "std::string::append", 1.0, [](benchmark::State& state) {
    for (auto _ : state) {
      std::string s;
      for (int i = 0; i < kAppendedBytes / 64; ++i) s.append(block.data(), 64);
      benchmark::DoNotOptimize(s.c_str());
    }
  });
}

void FormatLine() {
  const std::string work = "format \"%s: %d items, %.2f ms, 0x%08x\"";
  duel::Ours(work, [](benchmark::State& state) {
    Line line;
    Kalvo_String s;
    for (auto _ : state) {
      benchmark::DoNotOptimize(line);
      s.sprintf("%s: %d items, %.2f ms, 0x%08x", line.name, line.count, line.time, line.mask);
      benchmark::DoNotOptimize(s.c_str());
    }
  });
  duel::Peer(work, "snprintf + std::string::append", 1.5, [](benchmark::State& state) {
    Line line;
    std::string s;
    for (auto _ : state) {
      benchmark::DoNotOptimize(line);
      char buffer[256];
      const int n = std::snprintf(buffer, sizeof(buffer), "%s: %d items, %.2f ms, 0x%08x",
                                  line.name, line.count, line.time, line.mask);
      s.clear();
      s.append(buffer, static_cast<std::size_t>(n));
      benchmark::DoNotOptimize(s.c_str());
    }
  });
  duel::Peer(work, "fmt::format_to", 0.7, [](benchmark::State& state) {
    Line line;
    std::string s;
    for (auto _ : state) {
      benchmark::DoNotOptimize(line);
      s.clear();
      fmt::format_to(std::back_inserter(s), "{}: {} items, {:.2f} ms, 0x{:08x}", line.name,
                     line.count, line.time, line.mask);
      benchmark::DoNotOptimize(s.c_str());
    }
  });
}

void Base64() {
  static const std::string bytes = RandomBytes(kBase64Bytes);
  const std::string encode = "Base64 encode 1 MiB";
  duel::Ours(encode, [](benchmark::State& state) {
    for (auto _ : state) {
      Kalvo_String s;
      benchmark::DoNotOptimize(s.Base64Encode(bytes.data(), kBase64Bytes));
    }
  });
  duel::Peer(encode, "g_base64_encode", 1.0, [](benchmark::State& state) {
    for (auto _ : state) {
      gchar* text = g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), kBase64Bytes);
      benchmark::DoNotOptimize(text);
      g_free(text);
    }
  });

  static Kalvo_String encoded;
  encoded.Reset();
  encoded.Base64Encode(bytes.data(), kBase64Bytes);
  const std::string decode = "Base64 decode 1 MiB";
  duel::Ours(decode, [](benchmark::State& state) {
    for (auto _ : state) {
      Kalvo_String s;
      benchmark::DoNotOptimize(s.Base64Decode(encoded.c_str()));
    }
  });
  duel::Peer(decode, "g_base64_decode", 1.0, [](benchmark::State& state) {
    for (auto _ : state) {
      gsize size = 0;
      guchar* decoded = g_base64_decode(encoded.c_str(), &size);
      benchmark::DoNotOptimize(decoded);
      g_free(decoded);
    }
  });
}

[[maybe_unused]] const bool registered =
    (AppendBytes(), AppendBlocks(), FormatLine(), Base64(), true);

}  // namespace
