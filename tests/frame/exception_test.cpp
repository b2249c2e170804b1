// Exceptions.

#include "kalvobase/exception.h"

#include <gtest/gtest.h>

namespace {

TEST(Exception, Making) {
  const Kalvo_Exception none;
  EXPECT_EQ(none.getErrLevel() + none.getErrCode(), 0);
  EXPECT_STREQ(none.getMessage(), "");
  EXPECT_STREQ(Kalvo_Exception("%d%%", 5).getMessage(), "5%");
  const Kalvo_Exception coded(7, "50% of %s");
  EXPECT_EQ(coded.getErrCode(), 7);
  EXPECT_STREQ(coded.getMessage(), "50% of %s");
  Kalvo_Exception levelled(3, 7, "old");
  levelled.FormatMsg("%s", "new");
  EXPECT_EQ(levelled.getErrLevel(), 3);
  levelled.FormatMsg(4, 8, "[%s]", levelled.getMessage());
  EXPECT_EQ(levelled.getErrLevel(), 4);
  EXPECT_EQ(levelled.getErrCode(), 8);
  EXPECT_STREQ(levelled.getMessage(), "[new]");
  levelled.setErrCode(-1);
  levelled.setErrLevel(-2);
  EXPECT_EQ(levelled.getErrCode() + levelled.getErrLevel(), -3);
}

TEST(Exception, CopyingMovesAndAssigningCopies) {
  Kalvo_Exception a(1, 2, "text");
  Kalvo_Exception b(a);
  EXPECT_STREQ(b.getMessage(), "text");
  EXPECT_EQ(b.getErrLevel() + b.getErrCode(), 3);
  // The emptied source is harmless, and can be filled again.
  EXPECT_STREQ(a.getMessage(), "");
  EXPECT_EQ(a.getErrCode(), 0);
  a.setErrCode(5);
  a.FormatMsg("%d", 5);
  b = a;
  EXPECT_STREQ(b.getMessage(), "text");
  Kalvo_Exception c(a);
  EXPECT_STREQ(c.getMessage(), "");
  a = b;
  b.FormatMsg("other");
  EXPECT_STREQ(a.getMessage(), "text");
  Kalvo_Exception& same = a;
  a = same;
  EXPECT_STREQ(a.getMessage(), "text");
}

TEST(Exception, ThrownByValue) {
  try {
    try {
      Kalvo_Exception error(1, 2, "thrown");
      throw error;
    } catch (Kalvo_Exception& error) {
      error.setErrCode(9);
      throw;
    }
  } catch (const Kalvo_Exception& caught) {
    const Kalvo_Exception error(caught);  // as a handler by value does
    EXPECT_EQ(error.getErrCode(), 9);
    EXPECT_STREQ(error.getMessage(), "thrown");
  }
}

}  // namespace
