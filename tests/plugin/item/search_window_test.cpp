// The global method.
#include "standin/carbon/control.h"
#include "tests/plugin/item/item_fixture.h"

namespace {

class SearchWindow : public PluginTest {
 protected:
  void SetUp() override {
    start();
    standin::takeSearchWindow();
  }
  void TearDown() override {
    standin::setSearchWindowStatus(noErr);
    PluginTest::TearDown();
  }
};

TEST_F(SearchWindow, ShowsTheTextWithoutFlags) {
  EXPECT_EQ(0, host::callGlobal("ShotlightZNK", "harbour").integer());
  const auto window = standin::takeSearchWindow();
  EXPECT_EQ(1, window.shown);
  EXPECT_EQ("harbour", window.text);
  EXPECT_EQ(0u, window.flags);
}

TEST_F(SearchWindow, IsShownForANilOrUnconvertibleStringToo) {
  for (const host::Value& text : {host::Value::nullString(), unconvertible()}) {
    EXPECT_EQ(0, host::callGlobal("ShotlightZNK", text).integer()) << text.describe();
    const auto window = standin::takeSearchWindow();
    EXPECT_EQ(1, window.shown) << text.describe();
    EXPECT_EQ(std::nullopt, window.text) << text.describe();
  }
}

TEST_F(SearchWindow, AnswersThePlatformsStatusUnchanged) {
  for (const int32_t status : {-50, 1, -1, INT32_MAX, INT32_MIN}) {
    standin::setSearchWindowStatus(status);
    EXPECT_EQ(status, host::callGlobal("ShotlightZNK", "x").integer());
    EXPECT_EQ(status, host::callGlobal("ShotlightZNK", host::Value::nullString()).integer());
  }
}

TEST_F(SearchWindow, HasNoOtherName) {
  EXPECT_THROW(host::callGlobal("SpotlightZNK", "x"), host::CallError);
}

}  // namespace
