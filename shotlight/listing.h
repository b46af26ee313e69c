// Results as they are printed: each when it comes, as far as the layout allows.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "shotlight/find_options.h"
#include "standin/host/host.h"

namespace shotlight {

// What it prints may fail: every function throws CommandError when standard output takes no more.
class Listing {
 public:
  virtual ~Listing() = default;
  // The values of one result, one for each key, and the colour of its names (color.h).
  virtual void add(const std::vector<standin::host::Value>& values, const std::string& color) = 0;
  // The next result may take a while: shows what can be shown of those before it.
  virtual void pause() = 0;
  // There are no more.
  virtual void finish() = 0;
};

// Rows are a table on a terminal, and lines elsewhere. What ends in zero is printed as it is.
std::unique_ptr<Listing> newListing(Layout layout, const std::vector<std::string>& keys);

// What stands above a column of that attribute.
std::string titleOf(const std::string& key);

}  // namespace shotlight
