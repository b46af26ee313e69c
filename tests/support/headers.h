// What nearly every test includes, compiled once for all of them. A test includes for itself what it uses all
// the same: with -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON this file is left out.
#pragma once

#include <gmock/gmock.h>
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
