#include <gtest/gtest.h>
#include <kalvobase/kalvobase.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace {

using Operation = Kalvo_Value* (Kalvo_Value::*)(const Kalvo_Value*);

template <class T>
void SetAs(Kalvo_Value* value, double number) {
  value->Set(static_cast<T>(static_cast<std::int64_t>(number)));
}

// By kind; an empty value for any other.
void SetKind(Kalvo_Value* value, int kind, double number) {
  constexpr void (*kSetters[])(Kalvo_Value*, double) = {
      SetAs<char>,  SetAs<unsigned char>, SetAs<short>, SetAs<unsigned short>,
      SetAs<int>,   SetAs<unsigned>,      SetAs<long>,  SetAs<unsigned long>,
      SetAs<float>, SetAs<double>};
  if (kind >= 0) kSetters[kind](value, number);
}

// What `number`, of a width and sign, becomes: wrapped as the numbers of a kind are.
double Wrapped(double number, int kind) {
  if (kind >= 8) return number;
  const int bits = kind < 2 ? 8 : kind < 4 ? 16 : 32;
  const double size = std::ldexp(1, bits);
  double wrapped = std::fmod(number, size);
  if (wrapped < 0) wrapped += size;
  return kind % 2 == 0 && wrapped >= size / 2 ? wrapped - size : wrapped;
}

// The number in a value, as its kind counts it.
double Number(Kalvo_Value* value) { return Wrapped(value->GetDouble(), value->GetValueType()); }

// All pairs of kinds against the rules in plain doubles.
TEST(Arithmetic, AllPairsOfNumberKinds) {
  const double numbers[] = {0, 1, 3, 5, 200, -1, -7, 300, -129};
  const Operation operations[] = {&Kalvo_Value::Add, &Kalvo_Value::Minus, &Kalvo_Value::Times,
                                  &Kalvo_Value::Divied};
  for (int a = -1; a <= 9; ++a) {
    for (int b = -1; b <= 9; ++b) {
      for (double x : numbers) {
        for (double y : numbers) {
          for (int op = 0; op < 4; ++op) {
            Kalvo_Value left, right;
            SetKind(&left, a, x);
            SetKind(&right, b, y);
            const int kind = std::max(a, b);
            // Both sides are widened with their sign, whatever their kinds, and then count
            // in the type of the result.
            const double signedL = left.GetDouble();
            const double signedR = right.GetDouble();
            const double l = Wrapped(signedL, kind);
            const double r = Wrapped(signedR, kind);
            double result = op == 0   ? signedL + signedR
                            : op == 1 ? signedL - signedR
                                      : signedL * signedR;
            bool changes = b != -1 || a != -1;
            if (op == 3) {
              changes = r != 0;
              result = changes ? l / r : 0;
              if (kind < 8) result = std::trunc(result);
            }
            if (a == -1 && b == -1) changes = false;
            const int oldKind = left.GetValueType();
            const double old = Number(&left);
            SCOPED_TRACE(testing::Message() << "kinds " << a << ", " << b << " operation " << op
                                            << " of " << x << " and " << y);
            EXPECT_EQ((left.*operations[op])(&right), &left);
            EXPECT_EQ(left.GetValueType(), changes ? kind : oldKind);
            const double expected = changes ? Wrapped(result, kind) : old;
            EXPECT_EQ(Number(&left),
                      changes && kind == 8 ? static_cast<float>(expected) : expected);
          }
        }
      }
    }
  }
}

TEST(Arithmetic, EdgesOfTheWidths) {
  Kalvo_Value a, b;
  a.Set(INT_MIN);
  b.Set(-1);
  EXPECT_EQ(a.Divied(&b)->GetInt(), INT_MIN);
  EXPECT_EQ(a.Minus(&b)->Minus(&b)->GetInt(), INT_MIN + 2);
  a.Set(INT_MAX);
  EXPECT_EQ(a.Times(&a)->GetInt(), 1);
  a.Set(static_cast<unsigned short>(0xFFFF));
  EXPECT_EQ(a.Times(&a)->GetUShort(), 1);
  a.Set(0xFFFFFFFEu);
  b.Set(2u);
  EXPECT_EQ(a.Divied(&b)->GetUInt(), 0x7FFFFFFFu);
  a.Set(1.0);
  b.Set(-0.0);
  EXPECT_EQ(a.Divied(&b)->GetDouble(), 1.0);
  EXPECT_EQ(a.Minus(&a)->GetDouble(), 0);
  EXPECT_EQ(a.Add(nullptr)->Minus(nullptr)->GetDouble(), 0);

  a.Set(5);
  a.Append(6);
  b.Set(1u);
  a.Add(&b);  // of one width: what was appended stays
  EXPECT_EQ(a.GetString()->length(), 8u);
  b.Set(1L);
  a.Add(&b);
  EXPECT_EQ(a.GetString()->length(), 4u);
  EXPECT_EQ(a.GetLong(), 7);
  a.Init(Kalvo_VT_INT);  // no bytes yet
  EXPECT_EQ(a.PlusPlus()->GetInt(), 1);
}

TEST(Arithmetic, OtherKinds) {
  Kalvo_Value a, b;
  Kalvo_String text;
  a.Set("a", -1);
  b.Set(5);
  a.Add(&b);
  b.Set(static_cast<char>(65));
  a.Add(&b)->Minus(&b)->Times(&b)->Divied(&b);
  EXPECT_STREQ(a.Format(&text, 0), "a5A");
  EXPECT_STREQ(a.Add(&a)->Format(&text, 0), "a5Aa5A");
  b.Reset();
  b.Minus(&a);
  EXPECT_EQ(b.GetValueType(), Kalvo_VT_NONE);
  EXPECT_STREQ(b.Add(&a)->Format(&text, 0), "a5Aa5A");
  b.Set(7);
  EXPECT_EQ(b.Add(&a)->Times(&a)->GetInt(), 7);

  // Arrays take the numbers and arrays of their own type, signed or unsigned.
  for (int array = 15; array <= 22; ++array) {
    for (int other = 0; other <= 22; ++other) {
      if (other == 10 || other == 11) continue;
      a.Init(static_cast<Kalvo_VALUE_TYPE>(array));
      b.Init(static_cast<Kalvo_VALUE_TYPE>(other));
      b.GetString()->memcpy("12345678", 8);
      a.Add(&b);
      const int scalar = array - 13;
      const int partner = scalar < 8 ? scalar ^ 1 : scalar;
      const bool fits = other == scalar || other == partner || other == array ||
                        (scalar < 8 && other == partner + 13);
      EXPECT_EQ(a.GetString()->length(), fits ? 8u : 0u) << array << " and " << other;
      if (fits) {
        EXPECT_EQ(a.Add(&a)->GetString()->length(), 16u);
      }
    }
  }

  a.Init(Kalvo_VT_STRING_ARRAY);
  b.Set("w", -1);
  a.Add(&b)->Add(&a);
  b.Set(1);
  EXPECT_EQ(a.Add(&b)->GetStringArray()->GetSize(), 2);
  a.Init(Kalvo_VT_TABLE);
  a.GetValueTable()->Set("old", 1L);
  b.Init(Kalvo_VT_TABLE);
  b.GetValueTable()->Set("new", 2L);
  a.Add(&b)->Add(&a);
  EXPECT_EQ(a.GetValueTable()->GetCount(), 1u);
  EXPECT_EQ(a.GetValueTable()->GetBaseValue("new"), 2u);
}

TEST(Arithmetic, OnAByteReference) {
  Kalvo_Value text, byte, o;
  text.Set("\x10", -1);
  byte.SetRef(&text, 0);
  const auto now = [&text] { return static_cast<signed char>(*text.GetByteArray(nullptr)); };
  o.Set(0x1F0);
  byte.Add(&o);
  EXPECT_EQ(now(), 0);
  o.Set(3);
  byte.Minus(&o);
  EXPECT_EQ(now(), -3);
  byte.Times(&o);
  EXPECT_EQ(now(), -9);
  o.Set(2);
  byte.Divied(&o);
  EXPECT_EQ(now(), -4);
  EXPECT_EQ(byte.ShiftR(1)->GetInt(), -2);
  EXPECT_EQ(byte.ShiftR(31)->GetInt(), -1);
  o.Set("text", -1);
  byte.Divied(&o)->Minus(&o)->Add(&o);
  EXPECT_EQ(now(), -1);
  byte.Times(&o);
  EXPECT_EQ(now(), 0);
  EXPECT_EQ(byte.BitNot()->BitAnd(0x17F)->GetInt(), 0x7F);
  EXPECT_EQ(byte.PlusPlus()->GetInt(), -128);
  EXPECT_EQ(byte.ShiftL(9)->GetInt(), 0);
  o.Set(1);
  o.Add(&byte);  // a byte reference on the other side changes nothing
  EXPECT_EQ(o.GetInt(), 1);
  EXPECT_EQ(o.Copmare(&byte), 1);
}

TEST(Arithmetic, Bits) {
  Kalvo_Value v;
  v.Set(-2);
  EXPECT_EQ(v.ShiftR(1)->GetInt(), 0x7FFFFFFF);
  v.Set(1);
  EXPECT_EQ(v.ShiftL(33)->GetInt(), 2);
  v.Set(static_cast<char>(1));
  EXPECT_EQ(v.ShiftL(8)->GetChar(), 0);
  v.Set(static_cast<short>(-1));
  EXPECT_EQ(v.ShiftR(4)->GetShort(), 0x0FFF);
  EXPECT_EQ(v.BitOr(0xFFFFF000u)->BitXor(1)->GetShort(), -2);
  EXPECT_EQ(v.GetValueType(), Kalvo_VT_SHORT);
  v.Set(0x1234);
  EXPECT_EQ(v.BitAnd(0xFF)->GetInt(), 0x34);
  v.Set(static_cast<unsigned char>(255));
  EXPECT_EQ(v.PlusPlus()->GetUChar(), 0);
  EXPECT_EQ(v.MinusMinus()->BitNot()->GetUChar(), 0);
  v.Set(INT_MAX);
  EXPECT_EQ(v.PlusPlus()->GetInt(), INT_MIN);
  v.Set(1.5);
  EXPECT_EQ(v.PlusPlus()->BitNot()->ShiftL(1)->GetDouble(), 1.5);
  v.Reset();
  EXPECT_EQ(v.PlusPlus()->GetValueType(), Kalvo_VT_NONE);
}

TEST(Arithmetic, Comparing) {
  using Make = std::function<void(Kalvo_Value&)>;
  static Kalvo_Value text;
  text.Set("\xFF", -1);
  const Make nothing = [](Kalvo_Value&) {};
  const auto number = [](auto n) -> Make { return [n](Kalvo_Value& v) { v.Set(n); }; };
  const auto words = [](const char* s) -> Make { return [s](Kalvo_Value& v) { v.Set(s, -1); }; };
  const Make byte = [](Kalvo_Value& v) { v.SetRef(&text, 0); };  // -1
  const Make table = [](Kalvo_Value& v) { v.Init(Kalvo_VT_TABLE); };
  const struct {
    Make a, b;
    int result;
  } cases[] = {
      {number(5), number(3), 2},
      {number(-1), number(1u), -1},
      {number(1u), number(-1), 1},
      {number(5), number(0xFFFFFFFFul), -1},
      {number(static_cast<unsigned char>(200)), number(1), 1},
      {number(2u), number(5ul), -3},
      {number(INT_MIN), number(1), INT_MAX},
      {number(1), number(1.5), -1},
      {number(0xFFFFFFFFu), number(0.0), -1},
      {number(1.0), number(1.000000001), 0},
      {number(1.0), number(1.1), -1},
      {number(2.0f), number(1u), 1},
      {number(-1.0), number(0xFFFFFFFFu), -1},
      {number(-1.5), byte, -1},
      {byte, number(2), -3},
      {byte, number(1u), -1},
      {byte, byte, 0},
      {number(1u), byte, -4},
      {number(1), words("a"), -4},
      {number(1.0), table, -4},
      {words("a"), words("b"), -1},
      {words("a"), number(1), -5},
      {words("a"), table, -5},
      {table, number(1), -5},
      {table, nothing, -3},
      {nothing, nothing, -3},
      {nothing, number(1), -2},
  };
  int i = 0;
  for (const auto& c : cases) {
    Kalvo_Value a, b;
    c.a(a);
    c.b(b);
    EXPECT_EQ(a.Copmare(&b), c.result) << "case " << i;
    ++i;
  }
  EXPECT_EQ(text.Copmare(nullptr), -3);
}

}  // namespace
