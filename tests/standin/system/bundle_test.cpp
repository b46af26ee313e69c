#include <CoreServices/CoreServices.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

#include "standin/system/control.h"
#include "tests/support/build_folder.h"
#include "tests/support/owned.h"
#include "tests/support/scratch_folder.h"

namespace {

class Bundle : public testing::Test {
 protected:
  Bundle() {
    scratch.folder("Sample.framework");
    scratch.link("Sample.framework/Sample", builtFile("lib/libbundle-sample.so"));
    scratch.folder("Empty.framework");
  }
  ~Bundle() override {
    standin::clearFailures();
    EXPECT_EQ(alive(), "");
  }

  Owned<CFBundleRef> make(const char* name) const {
    return Owned(CFBundleCreate(kCFAllocatorDefault, makeURL(scratch.at(name)).get()));
  }

  const ScratchFolder scratch;
};

TEST_F(Bundle, IsNullWhereNoFolderIs) {
  EXPECT_FALSE(make("None.framework"));
  EXPECT_FALSE(make("Sample.framework/Sample"));
  EXPECT_TRUE(make("Empty.framework"));
}

TEST_F(Bundle, LoadsTheExecutableOfItsOwnName) {
  const auto sample = make("Sample.framework");
  EXPECT_EQ(CFGetTypeID(sample.get()), CFBundleGetTypeID());
  EXPECT_TRUE(CFBundleLoadExecutable(sample.get()));
  EXPECT_TRUE(CFBundleLoadExecutable(sample.get()));
  EXPECT_FALSE(CFBundleLoadExecutable(make("Empty.framework").get()));
}

TEST_F(Bundle, FindsFunctionsAndDataByName) {
  const auto sample = make("Sample.framework");
  const auto function = reinterpret_cast<int (*)()>(
      CFBundleGetFunctionPointerForName(sample.get(), makeString("sampleFunction").get()));
  ASSERT_TRUE(function);
  EXPECT_EQ(function(), 42);
  const auto* const datum =
      static_cast<int*>(CFBundleGetDataPointerForName(sample.get(), makeString("sampleDatum").get()));
  ASSERT_TRUE(datum);
  EXPECT_EQ(*datum, 7);
  EXPECT_EQ(CFBundleGetFunctionPointerForName(sample.get(), makeString("missing").get()), nullptr);
  EXPECT_EQ(CFBundleGetFunctionPointerForName(make("Empty.framework").get(), makeString("main").get()),
            nullptr);
}

TEST_F(Bundle, LeavesItsFunctionsInPlaceWhenItIsReleased) {
  int (*function)() = nullptr;
  {
    const auto sample = make("Sample.framework");
    function = reinterpret_cast<int (*)()>(
        CFBundleGetFunctionPointerForName(sample.get(), makeString("sampleFunction").get()));
  }
  ASSERT_TRUE(function);
  EXPECT_EQ(function(), 42);
}

// The way that a program takes to functions that a system may lack.
TEST_F(Bundle, OfCoreServicesLeadsToTheLibraryThatIsLoaded) {
  FSRef frameworks;
  ASSERT_EQ(FSFindFolder(kOnAppropriateDisk, kFrameworksFolderType, true, &frameworks), noErr);
  const Owned folder(CFURLCreateFromFSRef(kCFAllocatorSystemDefault, &frameworks));
  ASSERT_TRUE(folder);
  const auto name = makeString("CoreServices.framework");
  const Owned url(
      CFURLCreateCopyAppendingPathComponent(kCFAllocatorSystemDefault, folder.get(), name.get(), false));
  const Owned bundle(CFBundleCreate(kCFAllocatorSystemDefault, url.get()));
  ASSERT_TRUE(bundle);
  ASSERT_TRUE(CFBundleLoadExecutable(bundle.get()));
  for (const char* wanted : {"MDQueryExecute", "MDQuerySetSortOrder", "MDQueryGetSortOptionFlagsForAttribute",
                             "MDQuerySetSortOptionFlagsForAttribute"}) {
    void* const found = CFBundleGetFunctionPointerForName(bundle.get(), makeString(wanted).get());
    EXPECT_NE(found, nullptr) << wanted;
    EXPECT_EQ(found, ::dlsym(RTLD_DEFAULT, wanted)) << wanted;
  }
  EXPECT_EQ(CFBundleGetFunctionPointerForName(bundle.get(), makeString("MDQueryNoSuchFunction").get()),
            nullptr);
}

TEST_F(Bundle, LacksTheNamesThatATestHides) {
  const auto sample = make("Sample.framework");
  const auto has = [&](const char* name) {
    return CFBundleGetFunctionPointerForName(sample.get(), makeString(name).get()) != nullptr;
  };
  standin::hideSymbols({"sampleFunction"});
  EXPECT_FALSE(has("sampleFunction"));
  EXPECT_TRUE(has("sampleDatum"));
  standin::hideSymbols({"sampleDatum", "sampleFunction"});
  EXPECT_FALSE(has("sampleFunction"));
  EXPECT_EQ(CFBundleGetDataPointerForName(sample.get(), makeString("sampleDatum").get()), nullptr);
  standin::hideSymbols({});
  EXPECT_TRUE(has("sampleFunction"));
  EXPECT_TRUE(has("sampleDatum"));
}

TEST_F(Bundle, AnswersNullOrFalseWhenACallIsMadeToFail) {
  const auto sample = make("Sample.framework");
  const auto url = makeURL(scratch.at("Sample.framework"));
  const auto name = makeString("sampleFunction");
  standin::failCall("CFBundleCreate", 1);
  EXPECT_EQ(CFBundleCreate(kCFAllocatorDefault, url.get()), nullptr);
  standin::failCall("CFBundleLoadExecutable", 1);
  EXPECT_FALSE(CFBundleLoadExecutable(sample.get()));
  standin::failCall("CFBundleGetFunctionPointerForName", 1);
  EXPECT_EQ(CFBundleGetFunctionPointerForName(sample.get(), name.get()), nullptr);
}

using BundleDeathTest = Bundle;

TEST_F(BundleDeathTest, EndsTheProcessForWrongArguments) {
  EXPECT_DEATH(CFBundleLoadExecutable(nullptr), "CFBundleLoadExecutable: the bundle is null");
  EXPECT_DEATH(CFBundleCreate(nullptr, nullptr), "CFBundleCreate: the URL is null");
  EXPECT_DEATH(CFBundleGetFunctionPointerForName(make("Empty.framework").get(), nullptr), "the name is null");
}

}  // namespace
