#include "standin/host/language/declarations.h"

#include <gtest/gtest.h>

namespace standin::host {
namespace {

TEST(Declarations, AMethodHasParametersWithTypesAndAResult) {
  const Declaration parsed =
      parseMethod("SetSearchScope(paths() as folderitem, flags as UInt32) as variant()");
  EXPECT_EQ(parsed.name, "SetSearchScope");
  ASSERT_EQ(parsed.parameters.size(), 2u);
  EXPECT_EQ(parsed.parameters[0].name, "paths");
  EXPECT_EQ(describe(parsed.parameters[0].type), "folderitem()");
  EXPECT_EQ(describe(parsed.parameters[1].type), "UInt32");
  EXPECT_EQ(describe(parsed.result), "Variant()");
}

TEST(Declarations, AMethodMayHaveNeitherParametersNorResult) {
  EXPECT_EQ(parseMethod("Stop").result.kind, TypeKind::none);
  EXPECT_TRUE(parseMethod("Finish()").parameters.empty());
  EXPECT_EQ(describe(parseMethod("kMDItemTitle as string").result), "String");
}

TEST(Declarations, DefaultValuesKeepTheirKind) {
  const Declaration parsed = parseMethod(
      "All(a as integer = -1, b as string = \"x \"\"y\"\"\", c as boolean=true, d as double = 2.5, "
      "e as color = &hFF8000, f as Thing = nil)");
  ASSERT_EQ(parsed.parameters.size(), 6u);
  EXPECT_EQ(std::get<int64_t>(*parsed.parameters[0].preset), -1);
  EXPECT_EQ(std::get<std::string>(*parsed.parameters[1].preset), "x \"y\"");
  EXPECT_EQ(std::get<bool>(*parsed.parameters[2].preset), true);
  EXPECT_EQ(std::get<double>(*parsed.parameters[3].preset), 2.5);
  EXPECT_EQ(std::get<int64_t>(*parsed.parameters[4].preset), 0xFF8000);
  EXPECT_TRUE(std::holds_alternative<std::monostate>(*parsed.parameters[5].preset));
}

TEST(Declarations, AnAssignedValueIsMarked) {
  const Declaration parsed = parseMethod("Value(key As Variant, Assigns _value As Variant)");
  EXPECT_FALSE(parsed.parameters[0].assigns);
  EXPECT_TRUE(parsed.parameters[1].assigns);
  EXPECT_EQ(parsed.parameters[1].name, "_value");
}

TEST(Declarations, ConstantsHaveValues) {
  EXPECT_EQ(std::get<int64_t>(parseConstant("kMDQuerySynchronous=1").value), 1);
  EXPECT_EQ(std::get<std::string>(parseConstant("kScope=\"kScope\"").value), "kScope");
  EXPECT_EQ(parseConstant("kScope As String = \"kScope\"").type.kind, TypeKind::string);
}

TEST(Declarations, SignaturesAreComparedWithoutNamesOfParametersAndLetterCase) {
  const Declaration one = parseMethod("Key(index As Integer) As Variant");
  EXPECT_TRUE(sameSignature(one, parseMethod("key(i as int32) as variant")));
  EXPECT_FALSE(sameSignature(one, parseMethod("Key(index As Int64) As Variant")));
  EXPECT_FALSE(sameSignature(one, parseMethod("Key(index() As Integer) As Variant")));
  EXPECT_FALSE(sameSignature(one, parseMethod("Key(index As Integer)")));
}

class BadDeclaration : public testing::TestWithParam<const char*> {};

TEST_P(BadDeclaration, IsRefused) {
  EXPECT_THROW(parseMethod(GetParam()), DeclarationError);
}

INSTANTIATE_TEST_SUITE_P(, BadDeclaration,
                         testing::Values("", "1st()", "Name(", "Name(x)", "Name(x as)", "Name(x as string",
                                         "Name(x as string,)", "Name() as", "Name() as string(",
                                         "Name() string", "Name(x as string y as string)",
                                         "Name(x as integer = )", "Name(x as integer = \"5\")",
                                         "Name(x as string = \"open)", "Name(x as integer = 1, y as integer)",
                                         "Name(x() as string())", "Name as string, as string",
                                         "Name(x as integer = true)"));

class BadConstant : public testing::TestWithParam<const char*> {};

TEST_P(BadConstant, IsRefused) {
  EXPECT_THROW(parseConstant(GetParam()), DeclarationError);
}

INSTANTIATE_TEST_SUITE_P(, BadConstant,
                         testing::Values("kOne", "kOne=", "=1", "kOne=one", "kOne=1 2", "kOne=\"1"));

TEST(Declarations, AnErrorQuotesTheTextAndTellsThePlace) {
  try {
    parseMethod("Name(x string)");
    FAIL();
  } catch (const DeclarationError& error) {
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "\"Name(x string)\"", error.what());
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "at character 8", error.what());
  }
}

}  // namespace
}  // namespace standin::host
