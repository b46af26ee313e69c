// How a host's service is found, kept and done without.
#include "host/services.h"

#include <cstring>
#include <map>

#include "tests/plugin/objects/fixture.h"

namespace {

// A host of a few services that counts who asks for what.
std::map<std::string, void*> offered;
std::map<std::string, int> asked;
void* resolveOffered(const char* name) {
  ++asked[name];
  const auto found = offered.find(name);
  return found == offered.end() ? nullptr : found->second;
}

int32_t seven() {
  return 7;
}

class Services : public testing::Test {
 protected:
  void SetUp() override {
    gResolver = resolveOffered;
    offered.clear();
    asked.clear();
  }
  void offer(const char* name, int32_t (*service)()) { offered[name] = reinterpret_cast<void*>(service); }
};

Entry<int32_t()> number{"Number", first<number>()};
Entry<bool()> truth{"Truth", first<truth>()};
Entry<double()> real{"Real", first<real>()};
Entry<REALobject()> object{"Object", first<object>()};
Entry<void()> procedure{"Procedure", first<procedure>()};

TEST_F(Services, AMissingServiceYieldsItsNeutralValue) {
  EXPECT_EQ(0, number());
  EXPECT_FALSE(truth());
  EXPECT_EQ(0.0, real());
  EXPECT_EQ(nullptr, object());
  procedure();
}

Entry<int32_t()> foundAtOnce{"Seven", first<foundAtOnce>()};

TEST_F(Services, AFoundServiceIsAskedForOnce) {
  offer("Seven", seven);
  EXPECT_EQ(7, foundAtOnce());
  EXPECT_EQ(7, foundAtOnce());
  EXPECT_EQ(1, asked["Seven"]);
}

Entry<int32_t()> foundLater{"Seven", first<foundLater>()};

TEST_F(Services, AMissingServiceIsAskedForAgainAndUsedOnceItIsThere) {
  EXPECT_EQ(0, foundLater());
  EXPECT_EQ(0, foundLater());
  EXPECT_EQ(nullptr, foundLater.function());
  EXPECT_EQ(3, asked["Seven"]);
  offer("Seven", seven);
  EXPECT_EQ(7, foundLater());
  EXPECT_EQ(seven, foundLater.function());
  EXPECT_EQ(4, asked["Seven"]);
}

CFStringRef noCFString(REALstring, bool) {
  return nullptr;
}
void* noProcedure(REALobject) {
  return nullptr;
}

TEST_F(Services, ThatShareANameKeepCellsOfTheirOwn) {
  offered["REALGetStringCFString"] = reinterpret_cast<void*>(noCFString);
  offered["RuntimeArrayDirectGetInsertProc"] = reinterpret_cast<void*>(noProcedure);
  offered["RuntimeArrayDirectGetGetProc"] = reinterpret_cast<void*>(noProcedure);
  uint32_t record[4] = {};
  const auto array = reinterpret_cast<REALobject>(record);
  for (int use = 0; use < 2; ++use) {  // each asks at its first use, and not again
    REALCopyStringCFString(nullptr, false);
    REALGetStringCFString(nullptr, false);
    REALInsertArrayValueString(array, 0, nullptr);
    REALInsertArrayValueObject(array, 0, nullptr);
    REALGetArrayValueInt64(array, 0);
    REALGetArrayValueInt32(array, 0);
    REALGetArrayValueUInt8(array, 0);
    REALGetArrayValueSingle(array, 0);
    REALGetArrayValueDouble(array, 0);
    REALGetArrayValueString(array, 0);
    REALGetArrayValueObject(array, 0);
    EXPECT_EQ(2, asked["REALGetStringCFString"]);
    EXPECT_EQ(2, asked["RuntimeArrayDirectGetInsertProc"]);
    EXPECT_EQ(7, asked["RuntimeArrayDirectGetGetProc"]);
  }
}

int32_t writtenIndex = -1;
REALobject writtenValue = nullptr;
void writeElement(REALobject, REALobject value, int32_t index) {
  writtenValue = value;
  writtenIndex = index;
}
void* writeProcedure(REALobject) {
  return reinterpret_cast<void*>(writeElement);
}

TEST_F(Services, AnArraysWriteProcedureTakesTheValueBeforeTheIndex) {
  offered["RuntimeArrayDirectGetSetProc"] = reinterpret_cast<void*>(writeProcedure);
  uint32_t record[4] = {};
  const auto value = reinterpret_cast<REALobject>(&record[1]);
  REALSetArrayValueObject(reinterpret_cast<REALobject>(record), value, 7);
  EXPECT_EQ(value, writtenValue);
  EXPECT_EQ(7, writtenIndex);
}

void* loaded(REALobject null, const char* declaration) {
  EXPECT_EQ(nullptr, null);
  ++asked[declaration];
  return strcmp(declaration, "Seven() as integer") == 0 ? reinterpret_cast<void*>(seven) : nullptr;
}

HostFunction<int32_t()> function{"Seven() as integer", first<function>()};

TEST_F(Services, AFunctionOfTheHostLanguageIsLoadedByItsDeclarationOnce) {
  offered["REALLoadGlobalMethod"] = reinterpret_cast<void*>(loaded);
  EXPECT_EQ(7, function());
  EXPECT_EQ(7, function());
  EXPECT_EQ(1, asked["Seven() as integer"]);
}

int givenOut = 0;
void insertNumber(REALobject, int32_t, REALobject) {}
void (*insertProcedure(REALobject))(REALobject, int32_t, REALobject) {
  ++givenOut;
  return givenOut == 2 ? nullptr : insertNumber;
}

TEST_F(Services, AnArraysProcedureIsFetchedForEveryElementAndMayBeNull) {
  offered["RuntimeArrayDirectGetInsertProc"] = reinterpret_cast<void*>(insertProcedure);
  uint32_t record[4] = {};
  for (int i = 0; i < 3; ++i) REALInsertArrayValueObject(reinterpret_cast<REALobject>(record), i, nullptr);
  EXPECT_EQ(3, givenOut);
  EXPECT_EQ(1, asked["RuntimeArrayDirectGetInsertProc"]);
}

TEST_F(Services, AnArrayServiceThatIsMissingYieldsTheNeutralElement) {
  uint32_t record[4] = {};
  const auto array = reinterpret_cast<REALobject>(record);
  EXPECT_EQ(0, REALGetArrayValueInt32(array, 0));
  EXPECT_EQ(0, REALGetArrayValueInt64(array, 0));
  EXPECT_EQ(0, REALGetArrayValueUInt8(array, 0));
  EXPECT_EQ(0.0f, REALGetArrayValueSingle(array, 0));
  EXPECT_EQ(0.0, REALGetArrayValueDouble(array, 0));
  EXPECT_EQ(nullptr, REALGetArrayValueString(array, 0));
  EXPECT_EQ(nullptr, REALGetArrayValueObject(array, 0));
  REALSetArrayValueObject(array, nullptr, 0);
  EXPECT_EQ(8, asked["RuntimeArrayDirectGetGetProc"] + asked["RuntimeArrayDirectGetSetProc"]);
}

TEST_F(Services, ANullArrayHasNoElementsAndTakesNoneWithoutACall) {
  EXPECT_EQ(0, REALGetArrayValueInt32(nullptr, 0));
  EXPECT_EQ(0, REALGetArrayValueInt64(nullptr, 0));
  EXPECT_EQ(0, REALGetArrayValueUInt8(nullptr, 0));
  EXPECT_EQ(0.0f, REALGetArrayValueSingle(nullptr, 0));
  EXPECT_EQ(0.0, REALGetArrayValueDouble(nullptr, 0));
  EXPECT_EQ(nullptr, REALGetArrayValueString(nullptr, 0));
  EXPECT_EQ(nullptr, REALGetArrayValueObject(nullptr, 0));
  REALSetArrayValueObject(nullptr, nullptr, 0);
  REALInsertArrayValueString(nullptr, 0, nullptr);
  REALInsertArrayValueObject(nullptr, 0, nullptr);
  EXPECT_TRUE(asked.empty());
}

}  // namespace
