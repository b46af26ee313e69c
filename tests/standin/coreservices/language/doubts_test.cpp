#include "standin/coreservices/language/doubts.h"

#include <gtest/gtest.h>

#include "standin/coreservices/language/parser.h"
#include "tests/support/texts.h"

namespace standin::metadata {
namespace {

// What the query is doubted for: the comparison as it is written, and the start of the reason.
Texts doubtsOf(const std::string& query) {
  const std::u16string text(query.begin(), query.end());
  Texts told;
  for (const Doubt& doubt : doubtsOf(*std::get<ExpressionRef>(parseQuery(text)))) {
    const std::string reason = doubt.reason.empty() ? "no " + doubt.key : doubt.reason;
    told.push_back(query.substr(doubt.position, doubt.length) + ": " + reason.substr(0, reason.find(',')));
  }
  return told;
}

TEST(Doubts, AreOfKeysThatNoFileHas) {
  EXPECT_EQ(doubtsOf("kMDItemFSNam == x"), Texts{"kMDItemFSNam == x: no kMDItemFSNam"});
  EXPECT_EQ(doubtsOf("kmditemfsname > 5 && !(InRange(size, 1, 2)) || * == x"),
            (Texts{"kmditemfsname > 5: no kmditemfsname", "InRange(size, 1, 2): no size"}));
}

TEST(Doubts, AreOfValuesOfOtherTypes) {
  for (const std::string value : {"1k", "'1 MB'", "1*", "true", "''", "$time.now", "$time.iso(2011-03-05)"})
    EXPECT_EQ(doubtsOf("kMDItemFSSize == " + value), Texts{"kMDItemFSSize == " + value + ": is a number"});
  EXPECT_EQ(doubtsOf("kMDItemFSSize != 1k"), Texts{"kMDItemFSSize != 1k: is a number"});
  for (const std::string value : {"yesterday", "'5 March'", "2011-02-30", "'$time.tomorrow'"}) {
    EXPECT_EQ(doubtsOf("kMDItemDueDate == " + value), Texts{"kMDItemDueDate == " + value + ": is a date"});
    EXPECT_EQ(doubtsOf("kMDItemDownloadedDate == " + value).size(), 1u);
  }
  EXPECT_EQ(doubtsOf("kMDItemFSInvisible == yes"),
            Texts{"kMDItemFSInvisible == yes: is true or false; write == true or == false"});
  EXPECT_EQ(doubtsOf("kMDItemFSInvisible > 0").size(), 1u);
  for (const std::string key : {"kMDItemFSName", "kMDItemAuthors", "kMDItemTextContent"}) {
    EXPECT_EQ(doubtsOf(key + " >= 5"), Texts{key + " >= 5: is text"});
    EXPECT_EQ(doubtsOf("InRange(" + key + ", 1, 2)").size(), 1u);
  }
}

TEST(Doubts, AreNoneWhereValuesMayBeFound) {
  for (const char* const query :
       {"kMDItemFSSize == 1000", "kMDItemFSSize == '1000'", "kMDItemFSSize == *", "kMDItemFSSize != '*'",
        "InRange(kMDItemFSSize, 1, 2)", "kMDItemDueDate == $time.today",
        "kMDItemDueDate == '$time.iso(2011-03-05)'", "kMDItemDueDate == 2011-03-05", "kMDItemDueDate > 5",
        "kMDItemDownloadedDate == 2011-03-05", "kMDItemDueDate == *", "kMDItemFSInvisible == true",
        "kMDItemFSInvisible == 'False'", "kMDItemFSInvisible != 1", "kMDItemFSName == 5",
        "kMDItemFSName != true", "kMDItemAuthors == $time.today", "* == 5", "kMDItemTextContent == 2011"})
    EXPECT_EQ(doubtsOf(query), Texts{}) << query;
  for (const AttributeInfo& info : schema())
    EXPECT_EQ(doubtsOf(std::string(info.key) + " == *"), Texts{}) << info.key;
}

}  // namespace
}  // namespace standin::metadata
