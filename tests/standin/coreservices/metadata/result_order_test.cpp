// The order of results against a plain vector of them.
#include "standin/coreservices/metadata/result_order.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace standin::metadata;
using Files = std::vector<ResultStore::File>;

// Files are sorted by their number without its last digit, so that some are equal.
bool before(ResultStore::File left, ResultStore::File right) {
  return left / 10 < right / 10;
}

void expectSame(const ResultOrder& order, const Files& model) {
  ASSERT_EQ(order.size(), model.size());
  ASSERT_EQ(order.files(), model);
  for (size_t i = 0; i < model.size(); ++i) {
    ASSERT_EQ(order.at(i), model[i]) << i;
    ASSERT_EQ(order.indexOf(model[i]), i) << i;
  }
}

void insert(Files& model, ResultStore::File file) {
  model.insert(std::upper_bound(model.begin(), model.end(), file, before), file);
}

Files numbers(size_t count) {
  Files files(count);
  std::iota(files.begin(), files.end(), 0u);
  return files;
}

TEST(ResultOrder, IsEmptyAtFirst) {
  const ResultOrder order;
  expectSame(order, {});
}

TEST(ResultOrder, HasOneFileAndThenNone) {
  ResultOrder order;
  order.insert(7, before);
  expectSame(order, {7});
  order.remove(7);
  expectSame(order, {});
  order.append(3);
  expectSame(order, {3});
}

TEST(ResultOrder, KeepsTheOrderInWhichFilesAreAppended) {
  for (const size_t count : {1, 511, 512, 513, 1024, 1025, 5000}) {
    ResultOrder order;
    Files model = numbers(count);
    std::reverse(model.begin(), model.end());
    for (const ResultStore::File file : model) order.append(file);
    expectSame(order, model);
  }
}

TEST(ResultOrder, PutsAFileBehindThoseThatAreEqualToIt) {
  ResultOrder order;
  for (const ResultStore::File file : {10, 30, 31, 50}) order.append(file);
  order.insert(39, before);
  order.insert(0, before);
  order.insert(59, before);
  expectSame(order, {0, 10, 30, 31, 39, 50, 59});
}

TEST(ResultOrder, TakesAnotherOrderAtOnce) {
  ResultOrder order;
  for (const ResultStore::File file : numbers(2000)) order.append(file);
  Files other = numbers(1500);
  std::shuffle(other.begin(), other.end(), std::mt19937(1));
  order.assign(other);
  expectSame(order, other);
  order.assign({});
  expectSame(order, {});
}

TEST(ResultOrder, LosesWholePiecesFromEitherEnd) {
  for (const bool fromTheFront : {true, false}) {
    ResultOrder order;
    Files model = numbers(3000);
    order.assign(model);
    while (!model.empty()) {
      const auto leaving = fromTheFront ? model.begin() : model.end() - 1;
      order.remove(*leaving);
      model.erase(leaving);
      if (model.size() % 250 == 0) expectSame(order, model);
    }
    insert(model, 5);
    order.insert(5, before);
    expectSame(order, model);
  }
}

TEST(ResultOrder, IsThatOfAPlainVectorWhateverComesAndGoes) {
  std::mt19937 random(20);
  for (const size_t most : {3, 600, 4000}) {
    ResultOrder order;
    Files model, absent = numbers(most);
    for (size_t step = 0; step < 6 * most; ++step) {
      // Grows, then shrinks to nothing, then grows again.
      const bool grows = step / (2 * most) != 1;
      const bool adds = absent.empty() ? false : model.empty() || random() % 10 < (grows ? 8 : 1);
      Files& from = adds ? absent : model;
      const auto chosen = from.begin() + static_cast<ptrdiff_t>(random() % from.size());
      const ResultStore::File file = *chosen;
      from.erase(chosen);
      if (adds) {
        insert(model, file);
        order.insert(file, before);
      } else {
        absent.push_back(file);
        order.remove(file);
      }
      if (step % (most / 3) == 0) expectSame(order, model);
    }
    expectSame(order, model);
  }
}

}  // namespace
