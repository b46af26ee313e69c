// Exceptions between this process and a dylib's functions: the process's C++ run time, the dylib's frames.
#include <new>
#include <stdexcept>

#include "tests/macho/toolbox.h"
#include "tests/support/sanitizers.h"

namespace {

using toolbox::function;

const char kSource[] = R"(
#include <new>
extern "C" void note(int);
struct Guard { int number; ~Guard() { note(number); } };

// Enough live values to need the saved registers, and a frame of a size known at run time only.
static int deep(int level, void (*callback)(int), int argument) {
  Guard guard{level};
  if (level == 0) { callback(argument); return 0; }
  volatile char* room = static_cast<volatile char*>(__builtin_alloca(16 + argument % 64));
  room[0] = static_cast<char>(level);
  const int below = deep(level - 1, callback, argument);
  return below + room[0];
}

EXPORT int pass(int levels, void (*callback)(int), int argument) { return deep(levels, callback, argument); }

EXPORT int catching(int levels, void (*callback)(int), int argument) {
  try {
    return deep(levels, callback, argument);
  } catch (const std::bad_alloc&) {
    return -argument;
  }
}
)";
const std::vector<std::string> kImports = {"_note",
                                           "__Unwind_Resume",
                                           "__ZSt9terminatev",
                                           "__ZTISt9bad_alloc",
                                           "___cxa_begin_catch",
                                           "___cxa_end_catch",
                                           "___gxx_personality_v0"};

typedef int Entry(int levels, void (*callback)(int), int argument);

std::vector<int> notes;

void note(int number) {
  notes.push_back(number);
}

struct Foreign {
  int value;
};
struct Derived : std::bad_alloc {};

void returns(int) {}
void throwsBadAlloc(int) {
  throw std::bad_alloc();
}
void throwsDerived(int) {
  throw Derived();
}
void throwsForeign(int value) {
  throw Foreign{value};
}
void throwsRuntimeError(int) {
  throw std::runtime_error("passing through");
}

class Exceptions : public toolbox::Workshop {
 protected:
  void SetUp() override {
    macho::LoadOptions options;
    options.lookup = [](const std::string& name) {
      return name == "note" ? reinterpret_cast<void*>(&note) : nullptr;
    };
    image_.emplace(macho::load(build(kSource, kImports, {"_pass", "_catching"}), options));
    pass_ = function<Entry>(*image_, "_pass");
    catching_ = function<Entry>(*image_, "_catching");
    notes.clear();
  }

  std::optional<macho::Image> image_;
  Entry* pass_ = nullptr;
  Entry* catching_ = nullptr;
};

TEST_F(Exceptions, WithoutOneTheFunctionsReturn) {
  EXPECT_EQ(6, pass_(3, returns, 5));
  EXPECT_EQ((std::vector<int>{0, 1, 2, 3}), notes);
}

TEST_F(Exceptions, PassThroughAndRunTheCleanUpsInOrder) {
  try {
    pass_(4, throwsForeign, 17);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const Foreign& foreign) {
    EXPECT_EQ(17, foreign.value);
  }
  EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4}), notes);
}

TEST_F(Exceptions, AreCaughtByTypeInTheDylib) {
  EXPECT_EQ(-21, catching_(3, throwsBadAlloc, 21));
  EXPECT_EQ((std::vector<int>{0, 1, 2, 3}), notes);
}

TEST_F(Exceptions, OfADerivedClassAreCaughtToo) {
  EXPECT_EQ(-22, catching_(0, throwsDerived, 22));
}

void throwsByNew(int) {
  volatile size_t tooMuch = static_cast<size_t>(-1) - 4096;
  ::operator delete(::operator new(tooMuch));
}

TEST_F(Exceptions, OfOperatorNewAreCaught) {
  if (underAddressSanitizer()) GTEST_SKIP() << "the sanitizer ends the process instead";
  EXPECT_EQ(-23, catching_(1, throwsByNew, 23));
}

TEST_F(Exceptions, OfOtherTypesPassTheCatchClause) {
  EXPECT_THROW(catching_(2, throwsRuntimeError, 1), std::runtime_error);
  EXPECT_EQ((std::vector<int>{0, 1, 2}), notes);
  EXPECT_THROW(catching_(2, throwsForeign, 1), Foreign);
}

TEST_F(Exceptions, MayBeThrownTenThousandTimes) {
  int passed = 0, caught = 0;
  for (int i = 1; i <= 10000; ++i) {
    notes.clear();
    try {
      if (i % 2)
        pass_(i % 5, throwsForeign, i);
      else
        caught += catching_(i % 5, throwsBadAlloc, i) == -i;
    } catch (const Foreign& foreign) {
      passed += foreign.value == i;
    }
    ASSERT_EQ(static_cast<size_t>(i % 5 + 1), notes.size());
  }
  EXPECT_EQ(5000, passed);
  EXPECT_EQ(5000, caught);
}

TEST_F(Exceptions, PassThroughImagesThatWereLoadedAfterOthersWentAway) {
  for (int i = 0; i < 20; ++i) {
    image_.reset();
    SetUp();
    EXPECT_EQ(-i, catching_(2, throwsBadAlloc, i));
    EXPECT_THROW(pass_(2, throwsForeign, i), Foreign);
  }
}

}  // namespace
