// Test harness for instructions: the real plug-in, loaded once per test binary
// through the reference host, and a run helper.
//
//   CRun r = Exec("Divide", {1.0, 0.0});           // by display name or identifier
//   EXPECT_EQ(r.status, 3);
//   EXPECT_EQ(r.Report(0).text, "Division by zero");
//   CRun s = Exec("_Zet_Numeric_AddNumbers_", {1.0, 2.0, 3.0});  // variadic: the count is the list size
//   EXPECT_EQ(s.Out(0).AsDouble(), 6.0);
//
// Values are CZetObjects built with V(...): V(1.5), V(true), V("text"),
// V(CZetPoint(1, 2)), V(std::string("a\0b", 3)), or NumArr({1, 2}), StrArr, BoolArr,
// PtArr and LnArr for arrays.
#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <exception>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "zet/ZetHost.h"

namespace zet::test {

// The plug-in module of this test binary (loaded on first use, InitAll done).
host::CZetPluginModule& Module();

template <class T>
CZetObject V(const T& v) {
  CZetObject o;
  o = v;
  return o;
}
inline CZetObject V(const char* s) {
  CZetObject o;
  o = s;
  return o;
}
inline CZetObject Untyped() { return CZetObject(); }
CZetObject NumArr(std::initializer_list<double> v);
CZetObject StrArr(std::initializer_list<const char*> v);
CZetObject BoolArr(std::initializer_list<bool> v);
CZetObject PtArr(std::initializer_list<CZetPoint> v);  // PtArr({{1, 2}, {3, 4}})
CZetObject LnArr(std::initializer_list<CZetLine> v);   // LnArr({{0.5, 10}}): angle first

// Every registry position (0-based), and a test name for one, for suites
// parameterised over the registry: "12_Zet_Numeric_RemainderNumbers_".
inline std::vector<int> AllIndexes() {
  std::vector<int> v;
  for (int i = 0; i < Module().Count(); ++i) v.push_back(i);
  return v;
}
inline std::string IndexName(const testing::TestParamInfo<int>& p) {
  std::string s = Module().At(p.param)->GetInfo()->ident;
  for (char& c : s)
    if (!isalnum(static_cast<unsigned char>(c))) c = '_';
  return std::to_string(p.param + 1) + s;
}

// True when `e` holds an exception of type E.
template <class E>
bool IsA(const std::exception_ptr& e) {
  if (!e) return false;
  try {
    std::rethrow_exception(e);
  } catch (const E&) {
    return true;
  } catch (...) {
  }
  return false;
}

struct CRun {
  int status = 0;
  bool threw = false;
  std::string exception;         // what() of what Execute threw
  std::exception_ptr thrown;     // the exception itself
  std::vector<CZetObject> outputs;
  std::vector<CZetObject> inputs;  // the given inputs as the run left them
  std::vector<host::SReport> reports;
  std::vector<host::SEvent> events;
  std::vector<host::SAnnotationRecord> annotations;

  const CZetObject& Out(int i) const { return outputs.at(static_cast<size_t>(i)); }
  const host::SReport& Report(int i) const { return reports.at(static_cast<size_t>(i)); }
  // True when Execute threw an exception of type E.
  template <class E>
  bool Threw() const {
    return IsA<E>(thrown);
  }
};

// Execute on `ctx`; what it throws goes to `thrown` (and its text to `what`).
int ExecuteCatching(IXInstrPlugin* instr, host::CZetExecContext& ctx, std::exception_ptr& thrown,
                    std::string* what = nullptr);

struct SRunOptions {
  std::vector<CZetObject> params;   // replaces parameters from index 0 on
  std::vector<CZetObject> outputs;  // initial output values (default untyped)
  int inputCount = -2;              // -2: declared count, or the list size when variadic
};

// Runs the instruction named `name` (identifier or display name) once on a fresh
// context. Inputs given replace the defaults from index 0; a variadic instruction
// gets exactly as many counted inputs as given.
CRun Exec(const std::string& name, std::vector<CZetObject> inputs, const SRunOptions& opt = {});

// The registry index of an instruction, failing the test when unknown.
int IndexOf(const std::string& name);
const SInstrInfo& InfoOf(const std::string& name);

}  // namespace zet::test
