// Entries for a store, each told by its number, and a way into the database past the store.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>

#include "standin/coreservices/store/database.h"

namespace standin::metadata {

inline ContentKey sampleKey(uint64_t number) {
  return {{uint64_t{8} << 32 | 1, number, 1000 + number, 1'300'000'000'123'456'789 + number,
           1'400'000'000'987'654'321 + number},
          0,
          77};
}

inline std::string randomBytes(size_t size, uint32_t seed) {
  std::mt19937 random(seed);
  std::string bytes;
  while (bytes.size() < size) bytes += static_cast<char>(random());
  return bytes;
}

// Of some bytes to some pages; made once.
inline const std::string& sampleBytes(uint64_t number) {
  static std::map<uint64_t, std::string> made;
  std::string& bytes = made[number];
  if (bytes.empty()) bytes = randomBytes(number * number * 37 % 9001, static_cast<uint32_t>(number));
  return bytes;
}

inline ContentRow sampleRow(uint64_t number) {
  return {sampleKey(number), sampleBytes(number)};
}

// Another program's connection.
class Sql {
 public:
  explicit Sql(const std::string& path) {
    sqlite3* connection = nullptr;
    const int code = sqlite3_open(path.c_str(), &connection);
    connection_.reset(connection);
    if (code != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(connection));
  }
  // Answers the number in the last row's first column; 0 without rows.
  int64_t run(const std::string& sql) {
    int64_t number = 0;
    const auto take = [](void* target, int, char** values, char**) {
      *static_cast<int64_t*>(target) = values[0] ? std::strtoll(values[0], nullptr, 10) : 0;
      return 0;
    };
    char* message = nullptr;
    if (sqlite3_exec(connection_.get(), sql.c_str(), take, &number, &message) != SQLITE_OK) {
      const std::string text = message ? message : "";
      sqlite3_free(message);
      throw std::runtime_error(sql + ": " + text);
    }
    return number;
  }

 private:
  struct Close {
    void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
  };
  std::unique_ptr<sqlite3, Close> connection_;
};

}  // namespace standin::metadata
