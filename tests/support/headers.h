// support/: what the tests of several programs share: folders and files of their own, owners of Core
// Foundation objects, the gate's log and ledger, the process around them. It includes the gate and Core
// Foundation's public headers, and nothing of the tests.
//
// Here: what nearly every test includes, compiled once for all of them. A test includes for itself what it
// uses all the same: with -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON this file is left out.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>
