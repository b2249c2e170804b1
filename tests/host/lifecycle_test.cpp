// Coming up and going down by hand, and hosts that outlive main.

#include <gtest/gtest.h>
#include <kalvobase/kalvobase.h>
#include <unistd.h>

namespace {

// Dies after main, when other static objects are gone already; the library is still there.
struct LateHost {
  ~LateHost() {
    Kalvo_String s;
    s.sprintf("%d", 1);
    Kalvo_Queue queue(1, 1);
    if (!(s == "1")) _exit(7);
  }
} lateHost;

TEST(Lifecycle, ASecondInitAndFiniAreHarmless) {
  klbase_init();
  klbase_fini();
  klbase_fini();
  Kalvo_String s("alive");
  EXPECT_EQ(s.length(), 5u);
  klbase_init();
}

}  // namespace
