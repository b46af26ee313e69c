#include "standin/coreservices/files/text_content.h"

#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "standin/coreservices/language/parser.h"
#include "standin/coreservices/search/search.h"
#include "tests/standin/coreservices/metadata/fixture.h"
#include "tests/support/sanitizers.h"
#include "tests/support/texts.h"

namespace standin::metadata {
namespace {

using namespace std::string_literals;

// Counts how often files in a folder are opened.
class Opened {
 public:
  explicit Opened(const std::string& folder) : events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    ::inotify_add_watch(events_, folder.c_str(), IN_OPEN | IN_CLOSE);  // equal events in a row count as one
  }
  ~Opened() { ::close(events_); }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;

  std::vector<std::string> names() const {
    std::vector<std::string> names;
    alignas(inotify_event) char buffer[16384];
    for (ssize_t size = 0; (size = ::read(events_, buffer, sizeof buffer)) > 0;) {
      for (ssize_t at = 0; at < size;) {
        const auto* const event = reinterpret_cast<const inotify_event*>(buffer + at);
        if (event->len > 0 && (event->mask & IN_OPEN)) names.emplace_back(event->name);
        at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
      }
    }
    return names;
  }

 private:
  const int events_;
};

class TextContentQuery : public testing::Test {
 protected:
  std::vector<std::string> find(std::u16string_view query) {
    ResultStore results;
    Search search({std::get<ExpressionRef>(parseQuery(query)), {scratch.path()}, {}}, results);
    while (search.step()) {
    }
    std::vector<std::string> paths;
    for (ResultStore::File file = 0; file < results.fileLimit(); ++file) paths.push_back(results.path(file));
    return scratch.within(paths);
  }

  ScratchFolder scratch;
};

TEST_F(TextContentQuery, MatchesWordsOfTheText) {
  scratch.file("a.txt", "I love Paris in spring.\n");
  scratch.file("b.txt", "paris-france");
  scratch.file("c.txt", "A comParison of Comparisons");
  EXPECT_EQ(find(u"kMDItemTextContent == \"Paris\""), Texts{"a.txt"});
  EXPECT_EQ(find(u"kMDItemTextContent == Paris"), Texts{"a.txt"});
  EXPECT_EQ(find(u"kMDItemTextContent == \"paris\"c"), (Texts{"a.txt", "b.txt"}));
  EXPECT_EQ(find(u"kMDItemTextContent == \"paris\"cdw"), (Texts{"a.txt", "b.txt"}));
  EXPECT_EQ(find(u"kMDItemTextContent ==[cd] \"omparison\""), Texts{});
}

TEST_F(TextContentQuery, MatchesPartsOfWordsWithWildcards) {
  scratch.file("a.txt", "Comparison of maps");
  EXPECT_EQ(find(u"kMDItemTextContent == \"*paris*\""), Texts{"a.txt"});
  EXPECT_EQ(find(u"kMDItemTextContent == \"Compar*\""), Texts{"a.txt"});
  EXPECT_EQ(find(u"kMDItemTextContent == \"*ison\""), Texts{"a.txt"});
  EXPECT_EQ(find(u"kMDItemTextContent == \"m?ps\""), Texts{"a.txt"});
  EXPECT_EQ(find(u"kMDItemTextContent == \"paris*\""), Texts{});
  EXPECT_EQ(find(u"kMDItemTextContent == \"*compar\""), Texts{});
}

TEST_F(TextContentQuery, MatchesPhrasesAcrossLines) {
  scratch.file("a.txt", "from New\r\n\t York to Rome");
  EXPECT_EQ(find(u"kMDItemTextContent == \"New York\""), Texts{"a.txt"});
  EXPECT_EQ(find(u"kMDItemTextContent == \"New  \tYork\""), Texts{"a.txt"});
  EXPECT_EQ(find(u"kMDItemTextContent == \"NewYork\""), Texts{});
  EXPECT_EQ(find(u"kMDItemTextContent == \"New Yor\""), Texts{});
}

TEST_F(TextContentQuery, IgnoresCaseAndDiacriticsWhenAsked) {
  scratch.file("a.txt",
               "L'\xC3\x89"
               "cole est ferm\xC3\xA9"
               "e; STRASSE");
  EXPECT_EQ(find(u"kMDItemTextContent == \"ecole\"cd"), Texts{"a.txt"});
  EXPECT_EQ(find(u"kMDItemTextContent == \"fermee\"d"), Texts{"a.txt"});
  EXPECT_EQ(find(u"kMDItemTextContent == \"straße\"c"), Texts{"a.txt"});
  EXPECT_EQ(find(u"kMDItemTextContent == \"ecole\"c"), Texts{});
}

TEST_F(TextContentQuery, FindsFilesWithoutAWordByUnequal) {
  scratch.file("has.txt", "one word");
  scratch.file("lacks.txt", "other");
  scratch.file("binary", "word\0"s);
  scratch.folder("folder");
  EXPECT_EQ(find(u"kMDItemTextContent != \"word\""), (Texts{"binary", "folder", "lacks.txt"}));
  EXPECT_EQ(find(u"kMDItemTextContent == *"), (Texts{"has.txt", "lacks.txt"}));
}

TEST_F(TextContentQuery, ComparesWithNumbersAsWrittenAndWithNoOrder) {
  scratch.file("a.txt", "in 2011 or so");
  EXPECT_EQ(find(u"kMDItemTextContent == 2011"), Texts{"a.txt"});
  EXPECT_EQ(find(u"kMDItemTextContent >= 0"), Texts{});
  EXPECT_EQ(find(u"InRange(kMDItemTextContent, 0, 9999)"), Texts{});
}

TEST_F(TextContentQuery, ReadsPlainTextAndUnknownTypesByWhatFilesHold) {
  scratch.file("ascii.jpg", "word");  // a picture has no text, whatever is in it
  scratch.file("unknown.type", "word");
  scratch.file("mark", "\xEF\xBB\xBFword");
  scratch.file("little", "\xFF\xFEw\0o\0r\0d\0"s);
  scratch.file("big", "\xFE\xFF\0w\0o\0r\0d"s);
  scratch.file("latin1.txt", "word caf\xE9 ");
  scratch.file("cut.txt", "word caf\xC3");
  scratch.file("nul.txt", "word\0"s);
  scratch.file("nul later.txt", std::string(5000, ' ') + "word\0"s);
  scratch.file("odd", "\xFF\xFEw\0o\0r\0d\0!"s);
  scratch.file("unpaired", "\xFF\xFEw\0o\0r\0d\0 \0\0\xD8"s);
  scratch.file("utf32", "\xFF\xFE\0\0w\0\0\0"s);
  scratch.file("empty.txt");
  EXPECT_EQ(find(u"kMDItemTextContent == word"), (Texts{"big", "little", "mark", "unknown.type"}));
  EXPECT_EQ(find(u"kMDItemTextContent == *"), (Texts{"big", "empty.txt", "little", "mark", "unknown.type"}));
}

TEST(TextOfBytes, ReadsCharactersBeyondTheBasicPlane) {
  EXPECT_EQ(textOfBytes("\xFF\xFE\x3C\xD8\x4E\xDF"s), "\xF0\x9F\x8D\x8E");
  EXPECT_EQ(textOfBytes("\xFE\xFF\xD8\x3C\xDF\x4E"s), "\xF0\x9F\x8D\x8E");
  EXPECT_EQ(textOfBytes("\xFE\xFF\xDF\x4E\xD8\x3C"s), std::nullopt);
  EXPECT_EQ(textOfBytes("a \xC2\xA0\xE2\x80\xA8\r\nb"), "a b");
}

TEST_F(TextContentQuery, OpensNoFileUnlessItIsAskedForTheText) {
  scratch.file("a.txt", "one two");
  scratch.file("b.txt", "one");
  const Opened opened(scratch.path());
  find(u"kMDItemFSName == \"a.txt\" && * == \"a*\" && kMDItemFSSize > 0");
  EXPECT_EQ(opened.names(), Texts{});
  find(u"kMDItemFSName == \"a*\" && kMDItemTextContent == one");
  EXPECT_EQ(opened.names(), Texts{"a.txt"});
  find(u"kMDItemTextContent == none || kMDItemTextContent == two || kMDItemTextContent == \"*x*\"");
  EXPECT_EQ(sorted(opened.names()), sorted({"a.txt", "b.txt"}));
}

TEST_F(TextContentQuery, OpensNoFileThatItsNameOrSizeExcludes) {
  scratch.file("a.txt", "one two");
  scratch.file("b", "one");
  const Opened opened(scratch.path());
  find(u"kMDItemTextContent == one && kMDItemFSName == \"a*\"");
  EXPECT_EQ(opened.names(), Texts{"a.txt"});
  find(u"kMDItemTextContent == one && kMDItemFSSize > 100");
  find(u"kMDItemContentType == \"public.data\" && kMDItemFSSize > 100");
  find(u"(kMDItemTextContent == one || kMDItemFSName == c) && !(kMDItemKind == x || kMDItemFSSize < 100)");
  EXPECT_EQ(find(u"kMDItemTextContent == one || kMDItemFSSize > 0"), (Texts{"a.txt", "b"}));
  EXPECT_EQ(opened.names(), Texts{});
}

TEST_F(TextContentQuery, NeverOpensAnythingButRegularFiles) {
  scratch.file("text.txt", "word");
  scratch.link("link", scratch.at("text.txt"));
  scratch.link("device", "/dev/zero");
  scratch.folder("folder");
  ASSERT_EQ(::mkfifo(scratch.at("pipe").c_str(), 0600), 0);
  ASSERT_EQ(::mknod(scratch.at("socket").c_str(), S_IFSOCK | 0600, 0), 0);
  const Opened opened(scratch.path());
  EXPECT_EQ(find(u"kMDItemTextContent == *"), Texts{"text.txt"});
  EXPECT_EQ(sorted(opened.names()), sorted({"folder", "text.txt"}));  // the walk itself opens folders
}

TEST_F(TextContentQuery, ReadsFilesUpToTheLargestTextAndNoLarger) {
  const std::string word = " end";
  std::string text(kLargestText - word.size(), 'x');
  text += word;
  scratch.file("largest.txt", text);
  scratch.file("larger.txt", "end " + text);
  scratch.file("sparse");
  std::filesystem::resize_file(scratch.at("sparse"), uintmax_t{1} << 40);
  EXPECT_EQ(find(u"kMDItemTextContent == end"), Texts{"largest.txt"});
}

TEST_F(TextContentQuery, TakesLittleMoreMemoryThanTheFileIsLarge) {
  if (underAddressSanitizer()) GTEST_SKIP() << "the sanitizer keeps what is freed";
  constexpr std::string_view kWords = "\xC3\x89\x63ole e\xCC\x81 ";
  std::string text;
  text.reserve(kLargestText);
  while (text.size() + kWords.size() <= kLargestText) text += kWords;
  scratch.file("large.txt", text);
  const auto mostMemory = [] {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<size_t>(usage.ru_maxrss) * 1024;
  };
  // A child's most memory starts with what is in use, whatever tests before this one used.
  const auto search = [&] {
    const size_t before = mostMemory();
    const bool found = !find(u"kMDItemTextContent == \"none\"").empty();
    std::_Exit(!found && mostMemory() - before < 3 * kLargestText ? 0 : 1);
  };
  EXPECT_EXIT(search(), testing::ExitedWithCode(0), "");
}

// Long texts are read in pieces; no piece's end may show.
TEST_F(TextContentQuery, FindsWordsWhereverTheyLieInALongText) {
  const auto finds = [](std::u16string_view query, const std::string& text) {
    const auto parsed = parseQuery(query);
    return std::get<ExpressionRef>(parsed)->comparison.value.text.matches(text);
  };
  constexpr size_t kPiece = 65536;
  for (size_t before = kPiece - 12; before < kPiece + 4; ++before) {
    const std::string filler(before, 'x');
    EXPECT_TRUE(finds(u"k == \"caf\u00e9 noir\"w", filler + " cafe\xCC\x81 noir.")) << before;
    EXPECT_TRUE(finds(u"k == \"CAFE NOIR\"cdw", filler + " cafe\xCC\x81 noir.")) << before;
    EXPECT_FALSE(finds(u"k == \"cafe\"w", filler + " cafe\xCC\x81 noir.")) << before;
    EXPECT_FALSE(finds(u"k == \"noir\"w", filler + "noir.")) << before;
    EXPECT_TRUE(finds(u"k == \"Noir\"w", filler + "Noir.")) << before;
    EXPECT_TRUE(finds(u"k == \"*noir\"", filler + "noir")) << before;
    EXPECT_TRUE(finds(u"k == \"*\u6771\u4eac?\"", filler + "\xE6\x9D\xB1\xE4\xBA\xAC\xF0\x9F\x8D\x8E"))
        << before;
  }
}

using TextContentOfResults = MetadataTest;

TEST_F(TextContentOfResults, CanBeQueriedAndIsNeverReturned) {
  scratch.file("a.txt", "a word");
  const auto query = makeQuery("kMDItemTextContent == \"word\"cdw");
  ASSERT_TRUE(MDQueryExecute(query.get(), kMDQuerySynchronous));
  ASSERT_EQ(MDQueryGetResultCount(query.get()), 1);
  EXPECT_FALSE(Owned(MDItemCopyAttribute(resultAt(query, 0), kMDItemTextContent)));
}

}  // namespace
}  // namespace standin::metadata
