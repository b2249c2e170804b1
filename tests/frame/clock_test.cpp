// The millisecond clock and the program's own path.

#include "platform/clock.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "kalvobase/process.h"
#include "kalvobase/text.h"

namespace {

TEST(Clock, CountsAcrossTheWrap) {
  platform::shift_tick_count_for_test(0);
  const std::uint32_t toTheWrap = 0xFFFFFFFFu - platform::tick_count() - 5;
  platform::shift_tick_count_for_test(toTheWrap);
  const unsigned long before = Kalvo_THREAD_GetTickCount();
  Kalvo_Thread_Sleep(30);
  const unsigned long after = Kalvo_THREAD_GetTickCount();
  platform::shift_tick_count_for_test(0);
  EXPECT_GT(before, 0xFFFFFF00ul);
  EXPECT_LT(after, before);
  EXPECT_LE(after, 0xFFFFFFFFul);
  EXPECT_GE(static_cast<std::uint32_t>(after - before), 30u);
}

TEST(Process, OwnPath) {
  char link[4096];
  const ssize_t n = readlink("/proc/self/exe", link, sizeof(link));
  ASSERT_GT(n, 0);
  const std::string path(link, static_cast<std::size_t>(n));
  const std::size_t slash = path.rfind('/');
  Kalvo_String s("old");
  EXPECT_EQ(Kalvo_GetExeFullName(&s), path);
  EXPECT_EQ(s == path.c_str(), 1);
  EXPECT_EQ(Kalvo_GetExePath(&s), path.substr(0, slash));
  EXPECT_EQ(Kalvo_GetExeBaseName(&s), path.substr(slash + 1));
  EXPECT_STREQ(Kalvo_GetExeFullName(nullptr), "");
}

}  // namespace
