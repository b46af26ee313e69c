// What the pictures in README.md show is so: the run is what the program prints, and the bars are as long as
// the figures say.
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

constexpr unsigned short kColumns = 84;  // of the terminal in the picture

std::string sources() {
  return fs::path(exampleLibrary()).parent_path().parent_path();
}

std::string contentOf(const std::string& file) {
  std::ifstream stream(sources() + '/' + file, std::ios::binary);
  EXPECT_TRUE(stream.is_open()) << file;
  return {std::istreambuf_iterator<char>(stream), {}};
}

// Every match of the expression in the text: its first group.
Texts allOf(const std::string& text, const char* expression) {
  const std::regex compiled(expression);
  Texts found;
  for (std::sregex_iterator match(text.begin(), text.end(), compiled), end; match != end; ++match)
    found.push_back((*match)[1]);
  return found;
}

std::string unescaped(std::string text) {
  for (const auto& [escape, character] :
       {std::pair("&lt;", "<"), {"&gt;", ">"}, {"&#x27;", "'"}, {"&amp;", "&"}})
    text = std::regex_replace(text, std::regex(escape), character);
  return text;
}

std::string withoutTimes(const std::string& output) {
  return std::regex_replace(output, std::regex("in [0-9]+\\.[0-9]{3} s"), "in TIME s");
}

// A row of the picture, with the colours as sequences for a terminal.
struct Row {
  bool isPrompt = false, isTyped = false;
  std::string text;
};

// In each part every character has its place.
Row rowOf(const std::string& element) {
  static const std::regex kPart("<tspan(?: class=\"([^\"]*)\")? x=\"([^\"]*)\">([^<]*)</tspan>");
  Row row;
  for (std::sregex_iterator part(element.begin(), element.end(), kPart), end; part != end; ++part) {
    const std::string kind = (*part)[1], text = unescaped((*part)[3]), places = (*part)[2];
    const auto isLead = [](char c) { return (c & 0xC0) != 0x80; };
    EXPECT_EQ(std::ranges::count_if(text, isLead), std::ranges::count(places, ' ') + 1) << text;
    row.isPrompt |= kind == "prompt";
    row.isTyped |= kind == "typed";
    if (kind == "prompt") continue;
    const bool isColored = kind.starts_with("sgr-");
    const std::string code = isColored ? std::regex_replace(kind.substr(4), std::regex("-"), ";") : "";
    row.text += isColored ? "\x1B[" + code + 'm' + text + "\x1B[0m" : text;
  }
  return row;
}

struct ShownRun {
  std::string command, output;
};

std::vector<ShownRun> runsIn(const std::string& picture) {
  std::vector<ShownRun> runs;
  for (const std::string& element : allOf(picture, "(<text y=\"[0-9]+\" xml:space=\"preserve\">.*</text>)")) {
    const Row row = rowOf(element);
    if (row.isPrompt) runs.emplace_back();
    if (runs.empty()) runs.emplace_back();
    (row.isTyped ? runs.back().command : runs.back().output) += row.text + '\n';
  }
  return runs;
}

class Pictures : public testing::Test {
 protected:
  // On a terminal like that of docs/pictures/draw.py.
  std::string outputOf(const std::string& command) const {
    EXPECT_TRUE(command.starts_with("./run ")) << command;
    const Result result =
        run({.arguments = {"-c", "'" + files.program + "'" + command.substr(5)},
             .folder = sources(),
             .output = Output::terminal,
             .program = "/bin/sh",
             .environment = {"TERM=xterm", "LS_COLORS=*.jpg=01;35:*.tif=01;35:*.heic=01;35:*.txt=00",
                             "XDG_CACHE_HOME=" + cache_.path(), "LC_ALL=C.UTF-8", "TZ=UTC"},
             .columns = kColumns});
    EXPECT_EQ(result.status, 0) << result;
    return result.output + result.errors;
  }

  const ScratchFolder cache_;
};

TEST_F(Pictures, ShowWhatTheProgramPrints) {
  const auto runs = runsIn(contentOf("docs/pictures/run.svg"));
  EXPECT_EQ(runs.size(), 3U);
  for (const ShownRun& shown : runs) {
    outputOf(shown.command);  // reads what is in files; a table that takes long comes in parts
    EXPECT_EQ(withoutTimes(shown.output), withoutTimes(outputOf(shown.command))) << shown.command;
  }
}

// The figures

struct Bar {
  std::string text, seconds;
};
struct Chart {
  std::string title;
  std::vector<Bar> bars;
};

std::string withCommas(std::string number) {
  for (size_t at = number.size(); at > 3;) number.insert(at -= 3, ",");
  return number;
}

Texts fieldsOf(const std::string& line) {
  return allOf(line + '\t', "([^\t]*)\t");
}

std::vector<Chart> charts() {
  std::vector<Chart> charts;
  for (const std::string& line : lines(contentOf("docs/pictures/speed.txt"))) {
    const Texts fields = fieldsOf(line);
    if (fields.size() == 4 && fields[0] == "chart")
      charts.push_back({withCommas(fields[3]) + " of " + withCommas(fields[2]) + ' ' + fields[1], {}});
    if (fields.size() == 3 && fields[0] == "bar") charts.back().bars.push_back({fields[1], fields[2]});
  }
  return charts;
}

// As people read it: less than a tenth has three digits behind the point, less than one two, and the rest
// one.
std::string shown(const std::string& seconds) {
  const double number = std::stod(seconds);
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", number < 0.1 ? 3 : number < 1 ? 2 : 1, number);
  return text;
}

TEST(PictureOfSpeed, HasTheFiguresThatWereMeasured) {
  const std::string picture = contentOf("docs/pictures/speed.svg");
  const Texts titles = allOf(picture, "<text class=\"title\"[^>]*>([^<]*)<");
  Texts texts;
  for (const std::string& text : allOf(picture, "<tspan x=\"[^\"]*\">([^<]*)<"))
    texts.push_back(unescaped(text));
  const Texts widths = allOf(picture, "<rect class=\"bar[a-z ]*\"[^>]* width=\"([0-9.]+)\"");
  Texts expectedTitles, expectedTexts;
  size_t index = 0;
  for (const Chart& chart : charts()) {
    expectedTitles.push_back(chart.title);
    double longest = 0, whole = 0;
    for (size_t i = 0; i < chart.bars.size(); ++i) {
      longest = std::max(longest, std::stod(chart.bars[i].seconds));
      ASSERT_LT(index + i, widths.size());
      whole = std::max(whole, std::stod(widths[index + i]));
    }
    EXPECT_GT(whole, 100);
    for (const Bar& bar : chart.bars) {
      expectedTexts.insert(expectedTexts.end(), {bar.text, shown(bar.seconds) + " s"});
      EXPECT_NEAR(std::stod(widths[index++]) / whole, std::stod(bar.seconds) / longest, 0.0001) << bar.text;
    }
  }
  EXPECT_EQ(titles.size(), 2U);
  EXPECT_EQ(titles, expectedTitles);
  EXPECT_EQ(texts, expectedTexts);
  EXPECT_EQ(widths.size(), index);
}

TEST(PictureOfSpeed, IsTheSameInWords) {
  const std::string text = allOf(contentOf("docs/pictures/speed.svg"), "<desc[^>]*>([^<]*)</desc>").at(0);
  for (const Chart& chart : charts()) {
    std::string words = chart.title;
    for (const Bar& bar : chart.bars) {
      const bool isAgain = bar.text.starts_with("the same");
      words += ", " + (isAgain ? "again" : bar.text.substr(0, bar.text.find(' '))) + ' ' + shown(bar.seconds);
    }
    EXPECT_PRED_FORMAT2(testing::IsSubstring, words, text);
  }
}

// For people who can't see them, and for viewers that run nothing.
TEST(PicturesOfReadme, AreToldInWords) {
  const std::string readme = contentOf("README.md");
  EXPECT_TRUE(readme.find("![") < readme.find("\n## "));
  for (const char* name : {"run", "speed"}) {
    const std::string path = std::string("docs/pictures/") + name + ".svg";
    const std::string picture = contentOf(path);
    const Texts described = allOf(picture, "<desc id=\"description\">([^<]*)</desc>");
    ASSERT_EQ(described.size(), 1U) << path;
    EXPECT_NE(readme.find("\n![" + unescaped(described[0]) + "](" + path + ")\n"), std::string::npos) << path;
    EXPECT_EQ(allOf(picture, "(<title id=\"title\">[^<]+</title>)").size(), 1U) << path;
    EXPECT_TRUE(allOf(picture, "(<script|<image|<a |href|url\\(|@import|on[a-z]+=)").empty()) << path;
    EXPECT_NE(picture.find("@media (prefers-color-scheme: dark)"), std::string::npos) << path;
  }
}

}  // namespace
