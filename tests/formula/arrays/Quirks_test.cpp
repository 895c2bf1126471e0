// The deliberate differences between the five array families, one named test each.
// Hosts' programs depend on every one of them, so each row says which families
// behave which way; an "equal" difference (two reads that agree on every value a
// host can give) is pinned too, so a change of either read shows here.
#include <cmath>
#include <functional>
#include <limits>

#include "ArrayTypes.h"

namespace zet::test {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

CRun RunKept(const std::string& ident, const std::vector<CZetObject>& in) {
  SRunOptions opt;
  opt.outputs = {V("kept")};
  return Exec(ident, in, opt);
}

// Runs `op` for each family on its own [a, b, c] and hands the run to `check`.
// `check` gets the family's letter, the run and its output's element count (-1 when
// the output is not an array of the family's kind).
template <class... T, class F>
void ForEachFamily(const std::string& op, F make,
                   const std::function<void(char, const CRun&, long)>& check) {
  (
      [&] {
        SCOPED_TRACE(std::string(1, T::kLetter) + " " + op);
        const CRun r = RunKept(T::Ident(op), make(T{}));
        check(T::kLetter, r, T::Count(r.Out(0)));
      }(),
      ...);
}
#define ZET_FAMILIES NumberT, BooleanT, StringT, PointT, LineT

TEST(ArrayQuirks, GetRangeAcceptsIndexAtTheEndForNumbersOnly) {
  ForEachFamily<ZET_FAMILIES>(
      "GetRange",
      [](auto t) {
        return std::vector{decltype(t)::Arr(decltype(t)::Abc()), V(3.0), V(1.0)};
      },
      [](char letter, const CRun& r, long n) {
        EXPECT_EQ(r.status, letter == 'N' ? 0 : 3);
        EXPECT_EQ(n, 0);  // emptied first in either case
      });
}

// The loose checks: values an operation does not test go on to the vector's
// Insert and Erase, which treat them as a growable array would (see
// TZetVector). Each returns 0 with the output written; none fails.

TEST(ArrayQuirks, EraseRangeWithANegativeStartErasesFromTheFirstElement) {
  // Points compare the start as unsigned and reject it themselves (3, output
  // kept).
  ForEachFamily<ZET_FAMILIES>(
      "EraseRange",
      [](auto t) {
        return std::vector{decltype(t)::Arr(decltype(t)::Abc()), V(-5.0), V(1.0)};
      },
      [](char letter, const CRun& r, long n) {
        if (letter == 'P') {
          EXPECT_EQ(r.status, 3);
          EXPECT_STREQ(r.Out(0).AsText(), "kept");
        } else {
          EXPECT_EQ(r.status, 0);
          EXPECT_EQ(n, 1);  // elements 0 and 1 erased
        }
      });
  const CRun r = Exec(NumberT::Ident("EraseRange"), {NumArr({1, 2, 3}), V(-2147483648.0), V(0.0)});
  EXPECT_EQ(r.status, 0);
  EXPECT_TRUE(r.Out(0) == NumArr({2, 3}));
}

TEST(ArrayQuirks, InsertPastTheEndAppends) {
  for (double idx : {4.0, 2147483647.0}) {
    SCOPED_TRACE(idx);
    ForEachFamily<ZET_FAMILIES>(
        "Insert",
        [idx](auto t) {
          using T = decltype(t);
          return std::vector{T::Arr(T::Abc()), V(idx), T::Val(T::X()), T::Val(T::Y())};
        },
        [](char, const CRun& r, long n) {
          EXPECT_EQ(r.status, 0);
          EXPECT_EQ(n, 5);
        });
  }
  const CRun r = Exec(NumberT::Ident("Insert"), {NumArr({1, 2}), V(9.0), V(7.0), V(8.0)});
  EXPECT_TRUE(r.Out(0) == NumArr({1, 2, 7, 8}));
}

TEST(ArrayQuirks, PointInsertWithANegativeIndexInsertsAtTheFront) {
  // The point Insert makes no index test; the other four reject a negative idx
  // (3).
  for (double idx : {-1.0, -2147483648.0}) {
    SCOPED_TRACE(idx);
    ForEachFamily<ZET_FAMILIES>(
        "Insert",
        [idx](auto t) {
          using T = decltype(t);
          return std::vector{T::Arr(T::Abc()), V(idx), T::Val(T::X())};
        },
        [](char letter, const CRun& r, long n) {
          if (letter == 'P') {
            EXPECT_EQ(r.status, 0);
            EXPECT_EQ(n, 4);
          } else {
            EXPECT_EQ(r.status, 3);
            EXPECT_STREQ(r.Out(0).AsText(), "kept");
          }
        });
  }
  const CRun r = Exec(PointT::Ident("Insert"), {PtArr({{1, 1}}), V(-1.0), V(CZetPoint(9, 9))});
  EXPECT_TRUE(r.Out(0) == PtArr({{9, 9}, {1, 1}}));
}

TEST(ArrayQuirks, InsertRepWithANegativeCountInsertsNothing) {
  for (double count : {-1.0, -2147483648.0}) {
    SCOPED_TRACE(count);
    ForEachFamily<ZET_FAMILIES>(
        "InsertRep",
        [count](auto t) {
          using T = decltype(t);
          return std::vector{T::Arr(T::Abc()), V(1.0), V(count), T::Val(T::X())};
        },
        [](char, const CRun& r, long n) {
          EXPECT_EQ(r.status, 0);
          EXPECT_EQ(n, 3);
        });
  }
}

TEST(ArrayQuirks, CreateRepWithANegativeCountCreatesAnEmptyArray) {
  for (double count : {-1.0, -2147483648.0}) {
    SCOPED_TRACE(count);
    ForEachFamily<ZET_FAMILIES>(
        "CreateRep",
        [count](auto t) {
          using T = decltype(t);
          return std::vector{V(count), T::Val(T::X())};
        },
        [](char, const CRun& r, long n) {
          EXPECT_EQ(r.status, 0);
          EXPECT_EQ(n, 0);
        });
  }
}

TEST(ArrayQuirks, EraseRangeStartTruncatesTowardZero) {
  // -0.5 truncates to 0 and is a valid start for every family.
  ForEachFamily<ZET_FAMILIES>(
      "EraseRange",
      [](auto t) {
        return std::vector{decltype(t)::Arr(decltype(t)::Abc()), V(-0.5), V(1.0)};
      },
      [](char, const CRun& r, long n) {
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(n, 1);
      });
}

TEST(ArrayQuirks, PointAppendRepReadsItsCountAsUnsigned) {
  // -2 appends nothing for four families; for points it is 2^32 - 2 copies, refused at
  // the vector's cap (status 3, output untouched) instead of exhausting the memory.
  for (double count : {-2.0, -0.9 - 1.0, -2147483648.0}) {
    SCOPED_TRACE(count);
    ForEachFamily<ZET_FAMILIES>(
        "AppendRep",
        [count](auto t) {
          using T = decltype(t);
          return std::vector{T::Arr(T::Abc()), V(count), T::Val(T::X())};
        },
        [](char letter, const CRun& r, long n) {
          if (letter == 'P') {
            EXPECT_EQ(r.status, 3);
            EXPECT_STREQ(r.Out(0).AsText(), "kept");
          } else {
            EXPECT_EQ(r.status, 0);
            EXPECT_EQ(n, 3);
          }
        });
  }
  // -0.5 truncates to 0: nothing appended, for points too.
  const CRun r = RunKept(PointT::Ident("AppendRep"),
                         {PointT::Arr(PointT::Abc()), V(-0.5), V(CZetPoint(1, 1))});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(PointT::Count(r.Out(0)), 3);
}

TEST(ArrayQuirks, SetAtIndexReadsAgreeOnEveryValueKind) {
  // Numbers, Booleans and strings take SetAt's index through the value's own integer
  // conversion, points and lines truncate the number; the two agree on every kind.
  CZetObject asInt;
  asInt = 1;
  const struct {
    const char* what;
    CZetObject idx;
    int want;  // the element set, -1: status 3
  } cases[] = {
      {"1.9", V(1.9), 1},
      {"-0.9", V(-0.9), 0},
      {"int 1", asInt, 1},
      {"true", V(true), 1},
      {"\"2.7\"", V("2.7"), 2},
      {"\"x\"", V("x"), 0},
      {"point", V(CZetPoint(2, 2)), 0},
      {"NaN", V(kNaN), -1},
      {"\"-1\"", V("-1"), -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ForEachFamily<ZET_FAMILIES>(
        "SetAt",
        [&](auto t) {
          using T = decltype(t);
          return std::vector{T::Arr(T::Abc()), c.idx, T::Val(T::X())};
        },
        [&](char, const CRun& r, long n) {
          EXPECT_EQ(r.status, c.want < 0 ? 3 : 0);
          EXPECT_EQ(n, c.want < 0 ? -1 : 3);
        });
  }
  // Which element: checked on one family of each read.
  const CRun n = Exec(NumberT::Ident("SetAt"), {NumArr({1, 2, 3}), V("2.7"), V(9.0)});
  EXPECT_TRUE(n.Out(0) == NumArr({1, 2, 9}));
  const CRun p =
      Exec(PointT::Ident("SetAt"), {PtArr({{1, 1}, {2, 2}}), V(true), V(CZetPoint(9, 9))});
  EXPECT_TRUE(p.Out(0) == PtArr({{1, 1}, {9, 9}}));
}

TEST(ArrayQuirks, LineGetRangeCallsItsArrayFirst) {
  for (const char* ident :
       {"_Zet_Array_CNArrGetRange_", "_Zet_Array_CBArrGetRange_", "_Zet_Array_CSArrGetRange_",
        "_Zet_Array_CPArrGetRange_", "_Zet_Array_CLArrGetRange_"}) {
    SCOPED_TRACE(ident);
    const SInstrInfo& info = InfoOf(ident);
    EXPECT_STREQ(info.inputs.at(0).name,
                 std::string(ident).find("CLArr") != std::string::npos ? "first" : "array");
  }
}

TEST(ArrayQuirks, DiffEqualityIsTheElementsOwn) {
  // A NaN equals nothing, itself included, so it is always kept; -0 equals 0; strings
  // compare whole, past an embedded zero byte. Short and long second arrays alike.
  std::vector<double> longSecond(40, 5.0);
  longSecond.push_back(kNaN);
  longSecond.push_back(0.0);
  CZetObject longArr(ZET_OBJ_NUMBER_ARRAY);
  longArr.Ref<CZetNumberVector>().Std() = longSecond;
  for (const CZetObject& second : {NumArr({kNaN, 0.0}), longArr}) {
    const CRun r = Exec("_Zet_Array_CNArrDiff_", {NumArr({kNaN, -0.0, 1.0, 0.0}), second});
    const std::vector<double>& got = r.Out(0).Get<CZetNumberVector>()->Std();
    ASSERT_EQ(got.size(), 2u);
    EXPECT_TRUE(std::isnan(got[0]));
    EXPECT_EQ(got[1], 1.0);
  }
  const CRun s = Exec("_Zet_Array_CSArrDiff_",
                      {StringT::Arr({std::string("a\0b", 3), std::string("a\0c", 3), "a"}),
                       StringT::Arr({std::string("a\0b", 3)})});
  EXPECT_EQ(StringT::Elements(s.Out(0)), (std::vector<CZetString>{std::string("a\0c", 3), "a"}));
  const CRun p = Exec("_Zet_Array_CPArrDiff_",
                      {PtArr({{kNaN, 1}, {1, -0.0}, {1, 1}}), PtArr({{kNaN, 1}, {1, 0}})});
  EXPECT_EQ(PointT::Elements(p.Out(0)).size(), 2u);  // the NaN point and (1, 1)
  const CRun l = Exec("_Zet_Array_CLArrDiff_", {LnArr({{0.5, 1}, {0.5, 2}}), LnArr({{0.5, 2}})});
  EXPECT_TRUE(l.Out(0) == LnArr({{0.5, 1}}));
}

TEST(ArrayQuirks, BooleanArraysHaveNoDiff) {
  EXPECT_LT(Module().Find("_Zet_Array_CBArrDiff_"), 0);
  for (const char* ident : {"_Zet_Array_CNArrDiff_", "_Zet_Array_CSArrDiff_",
                            "_Zet_Array_CPArrDiff_", "_Zet_Array_CLArrDiff_"})
    EXPECT_GE(Module().Find(ident), 0) << ident;
}

}  // namespace
}  // namespace zet::test
