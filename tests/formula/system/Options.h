// Run options of the system tests: parameters only, or initial outputs only.
#pragma once

#include <utility>
#include <vector>

#include "Harness.h"

namespace zet::test {

inline SRunOptions Params(std::vector<CZetObject> params) {
  SRunOptions o;
  o.params = std::move(params);
  return o;
}

inline SRunOptions Outputs(std::vector<CZetObject> outputs) {
  SRunOptions o;
  o.outputs = std::move(outputs);
  return o;
}

}  // namespace zet::test
