// The order of results by attributes.
//
// The first attribute is the primary key. Text compares by the rules of the language, with numbers in it by
// their value ("file 9" before "file 10"); a missing value comes before all others. Files that are equal in
// every key keep their order.
#pragma once

#include <cstdint>
#include <vector>

#include "query_expression.h"
#include "result_store.h"

namespace standin::metadata {

struct SortKey {
  AttributeKey attribute;
  bool reversed = false;
};

// For every place in the wanted order, the index of the result that belongs there.
std::vector<uint32_t> sortedOrder(const ResultStore& results, const std::vector<SortKey>& keys);

}  // namespace standin::metadata
