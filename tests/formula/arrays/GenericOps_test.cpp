// The operations the five array families share, run by one typed suite over every
// element type: tables of cases on the array [a, b, c], where a case either gives an
// array or fails with status 3 and the output left as it was. Every output starts as
// a text, so an untouched output and an output of another kind are both exercised.
// The families' deliberate differences have one named test each (Quirks_test.cpp).
#include <cmath>
#include <limits>
#include <optional>

#include "ArrayTypes.h"

namespace zet::test {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double k2Pow31 = 2147483648.0;

template <class T>
class ArrayOps : public testing::Test {
 protected:
  using Item = typename T::Item;
  using Items = std::vector<Item>;
  struct SCase {
    const char* what;
    std::vector<CZetObject> in;
    std::optional<std::vector<Item>> want;  // none: status 3, output untouched
  };

  static CRun Run(const std::string& op, const std::vector<CZetObject>& in) {
    SRunOptions opt;
    opt.outputs = {V("kept")};
    return Exec(T::Ident(op), in, opt);
  }
  static void Check(const std::string& op, const std::vector<SCase>& cases) {
    for (const SCase& c : cases) {
      SCOPED_TRACE(op + ": " + c.what);
      const CRun r = Run(op, c.in);
      EXPECT_TRUE(r.reports.empty());
      if (!c.want) {
        EXPECT_EQ(r.status, 3);
        EXPECT_STREQ(r.Out(0).AsText(), "kept");
      } else {
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(T::Elements(r.Out(0)), *c.want);
      }
    }
  }
  Item a = T::Abc()[0], b = T::Abc()[1], c = T::Abc()[2], x = T::X(), y = T::Y();
  Item d = Item{};  // the default element
  CZetObject abc = T::Arr(T::Abc()), empty = T::Arr({});
  CZetObject vx = T::Val(T::X()), vy = T::Val(T::Y());
};
TYPED_TEST_SUITE(ArrayOps, AllArrayTypes);

TYPED_TEST(ArrayOps, GetAtReadsInPlace) {
  using T = TypeParam;
  const struct {
    CZetObject arr;
    double idx;
    std::optional<typename T::Item> want;
  } cases[] = {
      {this->abc, 0, this->a}, {this->abc, 1.9, this->b}, {this->abc, -0.9, this->a},
      {this->abc, 2, this->c}, {this->abc, 3, {}},        {this->abc, -1, {}},
      {this->abc, kNaN, {}},   {this->abc, k2Pow31, {}},  {this->abc, -k2Pow31 - 1, {}},
      {this->empty, 0, {}},    {V(5.0), 0, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.idx);
    const CRun r = this->Run("GetAt", {c.arr, V(c.idx)});
    EXPECT_EQ(r.status, c.want ? 0 : 3);
    EXPECT_TRUE(r.Out(0) == (c.want ? T::Val(*c.want) : V("kept")));
    EXPECT_TRUE(r.inputs[0] == c.arr);  // an input of another kind is not retyped
  }
}

TYPED_TEST(ArrayOps, SetAtEraseAndEraseRange) {
  using Items = std::vector<typename TypeParam::Item>;
  const auto& [a, b, c, x] = std::tie(this->a, this->b, this->c, this->x);
  this->Check("SetAt", {{"1", {this->abc, V(1.0), this->vx}, Items{a, x, c}},
                        {"2.7", {this->abc, V(2.7), this->vx}, Items{a, b, x}},
                        {"the end", {this->abc, V(3.0), this->vx}, {}},
                        {"-1", {this->abc, V(-1.0), this->vx}, {}},
                        {"empty", {this->empty, V(0.0), this->vx}, {}}});
  this->Check("Erase", {{"0", {this->abc, V(0.0)}, Items{b, c}},
                        {"2", {this->abc, V(2.0)}, Items{a, b}},
                        {"the end", {this->abc, V(3.0)}, {}},
                        {"NaN", {this->abc, V(kNaN)}, {}},
                        {"empty", {this->empty, V(0.0)}, {}}});
  this->Check("EraseRange", {{"0..1", {this->abc, V(0.0), V(1.0)}, Items{c}},
                             {"1..1", {this->abc, V(1.0), V(1.0)}, Items{a, c}},
                             {"all", {this->abc, V(0.0), V(2.9)}, Items{}},
                             {"reversed", {this->abc, V(2.0), V(1.0)}, {}},
                             {"end past the end", {this->abc, V(0.0), V(3.0)}, {}},
                             {"start past the end", {this->abc, V(3.0), V(3.0)}, {}},
                             {"negative end", {this->abc, V(0.0), V(-1.0)}, {}},
                             {"empty", {this->empty, V(0.0), V(0.0)}, {}}});
}

TYPED_TEST(ArrayOps, SizeResizeAndCreate) {
  using Items = std::vector<typename TypeParam::Item>;
  for (const auto& [arr, size] : {std::pair{this->abc, 3.0}, {this->empty, 0.0}, {V(5.0), 0.0}}) {
    const CRun r = this->Run("Size", {arr});
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.Out(0) == V(size)) << size;
  }
  const auto& [a, b, c, d] = std::tie(this->a, this->b, this->c, this->d);
  this->Check("Resize", {{"longer", {this->abc, V(5.0)}, Items{a, b, c, d, d}},
                         {"shorter", {this->abc, V(1.9)}, Items{a}},
                         {"0", {this->abc, V(0.0)}, Items{}},
                         {"-1", {this->abc, V(-1.0)}, {}},
                         {"beyond the cap", {this->abc, V(1e9)}, {}}});
  this->Check("Create", {{"2", {V(2.0)}, Items{d, d}},
                         {"0", {V(0.0)}, Items{}},
                         {"-1", {V(-1.0)}, {}},
                         {"NaN", {V(kNaN)}, {}},
                         {"beyond the cap", {V(2147483647.0)}, {}}});
}

TYPED_TEST(ArrayOps, InsertAndInsertRep) {
  using Items = std::vector<typename TypeParam::Item>;
  const auto& [a, b, c, x, y] = std::tie(this->a, this->b, this->c, this->x, this->y);
  const CZetObject &abc = this->abc, &vx = this->vx, &vy = this->vy;
  this->Check("Insert", {{"two at 1", {abc, V(1.0), vx, vy}, Items{a, x, y, b, c}},
                         {"at 0", {abc, V(0.0), vx}, Items{x, a, b, c}},
                         {"at the end", {abc, V(3.0), vx}, Items{a, b, c, x}},
                         {"past the end", {abc, V(4.0), vx}, Items{a, b, c, x}},
                         {"no values", {abc, V(2.0)}, Items{a, b, c}},
                         {"into empty", {this->empty, V(0.0), vx}, Items{x}}});
  this->Check("InsertRep", {{"2 at 1", {abc, V(1.0), V(2.0), vx}, Items{a, x, x, b, c}},
                            {"0 at 0", {abc, V(0.0), V(0.0), vx}, Items{a, b, c}},
                            {"at the end", {abc, V(3.0), V(1.0), vx}, {}},
                            {"into empty", {this->empty, V(0.0), V(1.0), vx}, {}},
                            {"-1 copies", {abc, V(0.0), V(-1.0), vx}, Items{a, b, c}},
                            // 2^31 truncates to -2^31: a negative count, nothing inserted
                            {"2^31 copies", {abc, V(0.0), V(k2Pow31), vx}, Items{a, b, c}}});
}

TYPED_TEST(ArrayOps, AppendAndCreateFromValues) {
  using Items = std::vector<typename TypeParam::Item>;
  const auto& [a, b, c, x, y] = std::tie(this->a, this->b, this->c, this->x, this->y);
  const CZetObject &abc = this->abc, &vx = this->vx, &vy = this->vy;
  this->Check("Append", {{"two", {abc, vx, vy}, Items{a, b, c, x, y}},
                         {"none", {abc}, Items{a, b, c}},
                         {"to empty", {this->empty, vy}, Items{y}}});
  this->Check("AppendRep", {{"2", {abc, V(2.0), vx}, Items{a, b, c, x, x}},
                            {"0", {abc, V(0.0), vx}, Items{a, b, c}},
                            {"beyond the cap", {abc, V(2147483647.0), vx}, {}}});
  this->Check("CreateInf", {{"three", {vx, vy, vx}, Items{x, y, x}}, {"none", {}, Items{}}});
  this->Check("CreateRep", {{"2", {V(2.0), vy}, Items{y, y}},
                            {"0", {V(0.0), vy}, Items{}},
                            {"-1", {V(-1.0), vy}, Items{}},
                            {"NaN", {V(kNaN), vy}, Items{}}});
}

TYPED_TEST(ArrayOps, ConcatenateAndGetRange) {
  using Items = std::vector<typename TypeParam::Item>;
  using T = TypeParam;
  const auto& [a, b, c] = std::tie(this->a, this->b, this->c);
  this->Check("ConcatArr", {{"two", {T::Arr({a, b}), T::Arr({c, a})}, Items{a, b, c, a}},
                            {"empty first", {this->empty, this->abc}, Items{a, b, c}},
                            {"both empty", {this->empty, this->empty}, Items{}}});
  // GetRange empties its output first, so a rejection leaves it empty.
  const struct {
    double index, count;
    std::optional<std::vector<typename T::Item>> want;
  } cases[] = {{1, 5, Items{b, c}}, {0, 2.9, Items{a, b}}, {2, 0, Items{}},
               {-1, 1, {}},         {0, -1, {}},           {4, 1, {}},
               {kNaN, 1, {}}};
  for (const auto& cs : cases) {
    SCOPED_TRACE(testing::Message() << "GetRange " << cs.index << ", " << cs.count);
    const CRun r = this->Run("GetRange", {this->abc, V(cs.index), V(cs.count)});
    EXPECT_EQ(r.status, cs.want ? 0 : 3);
    EXPECT_EQ(T::Elements(r.Out(0)), cs.want.value_or(std::vector<typename T::Item>{}));
  }
}

// Counts beyond the vector's cap end in status 3 at once, with nothing
// allocated and the output untouched; so do the negative sizes that Resize and
// Create test.
TYPED_TEST(ArrayOps, SizesBeyondTheCapFailCleanly) {
  const CZetObject &abc = this->abc, &vx = this->vx;
  const double huge[] = {1e9, k2Pow31 - 1, -1.0, -k2Pow31};
  for (double n : huge) {
    SCOPED_TRACE(n);
    using SCase = std::pair<const char*, std::vector<CZetObject>>;
    std::vector<SCase> ops = {{"Resize", {abc, V(n)}}, {"Create", {V(n)}}};
    if (n > 0) {  // negative counts insert nothing (see ArrayQuirks)
      ops.push_back({"InsertRep", {abc, V(1.0), V(n), vx}});
      ops.push_back({"CreateRep", {V(n), vx}});
    }
    for (const auto& [op, in] : ops) {
      SCOPED_TRACE(op);
      const CRun r = this->Run(op, in);
      EXPECT_EQ(r.status, 3);
      EXPECT_STREQ(r.Out(0).AsText(), "kept");
    }
  }
}

template <class T>
class ArrayDiff : public ArrayOps<T> {};
TYPED_TEST_SUITE(ArrayDiff, ArrayTypesWithDiff);

TYPED_TEST(ArrayDiff, KeepsOrderAndRepetitions) {
  using Items = std::vector<typename TypeParam::Item>;
  using T = TypeParam;
  const auto& [a, b, c, x] = std::tie(this->a, this->b, this->c, this->x);
  this->Check("Diff", {{"one removed", {T::Arr({a, b, b, c, b}), T::Arr({b})}, Items{a, c}},
                       {"empty second", {this->abc, this->empty}, Items{a, b, c}},
                       {"all removed", {this->abc, T::Arr({c, x, b, a})}, Items{}},
                       {"empty first", {this->empty, this->abc}, Items{}}});
  // A long second array is searched another way; the result must not change.
  std::vector<typename T::Item> first, second;
  for (int i = 0; i < 200; ++i) {
    first.push_back(T::Abc()[i % 3]);
    if (i % 7 == 0) first.push_back(x);
    second.push_back(i % 2 ? b : c);
  }
  std::vector<typename T::Item> want;
  for (const auto& e : first)
    if (!(e == b) && !(e == c)) want.push_back(e);
  this->Check("Diff", {{"long second", {T::Arr(first), T::Arr(second)}, want}});
}

}  // namespace
}  // namespace zet::test
