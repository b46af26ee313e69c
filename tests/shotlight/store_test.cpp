// What is kept of the contents of files: what the command tells of it, and that nothing else tells that it is
// there.
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

const char kPhotos[] = "kMDItemPixelWidth > 0";

std::string bytesOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class Store : public testing::Test {
 protected:
  Result runWith(std::vector<std::string> arguments, const std::string& folder = "") {
    return run(
        {.arguments = std::move(arguments), .folder = folder, .environment = {"XDG_CACHE_HOME=" + cache}});
  }
  Result findPhotos(const std::vector<std::string>& options = {}) {
    std::vector<std::string> arguments = {"find", kPhotos, "--in", exampleLibrary()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return runWith(arguments);
  }
  // A line of the report.
  std::string told(const std::string& what) {
    const Result report = runWith({"store"});
    EXPECT_EQ(report.status, 0) << report;
    EXPECT_EQ(report.errors, "");
    for (const std::string& line : lines(report.output)) {
      if (line.starts_with(what)) return line.substr(7);
    }
    ADD_FAILURE() << "nothing is told of " << what;
    return "";
  }
  void expectComplaint(const Result& result, const std::string& start) {
    const Texts errors = lines(result.errors);
    ASSERT_EQ(errors.size(), 2u) << result;
    EXPECT_TRUE(startsWith(errors[0], "shotlight: the store of what is in files, " + database + start));
    EXPECT_TRUE(matches(errors[1], "[0-9]+ results in [0-9.]+ s"));
  }

  ScratchFolder scratch;
  std::string cache = scratch.at("cache");
  std::string folder = cache + "/shotlight";
  std::string database = folder + "/content.sqlite";
};

// The system would end a process that writes more than it may.
TEST_F(Store, CostsNoResultWhereFilesMayNotGrow) {
  for (const int blocks : {0, 8}) {
    Launch what{.arguments = {"-c", "ulimit -f " + std::to_string(blocks) + "; exec \"$@\"", "sh",
                              files.program, "find", kPhotos, "--count", "--in", exampleLibrary()},
                .program = "/bin/sh",
                .environment = {"XDG_CACHE_HOME=" + cache}};
    const Result result = run(what);
    EXPECT_EQ(result.status, 0) << result;
    EXPECT_EQ(result.output, findPhotos({"--count", "--no-store"}).output);
    EXPECT_EQ(lines(result.errors).size(), 2u) << result;
  }
}

TEST_F(Store, IsTold) {
  EXPECT_EQ(told("store"), database + " (nothing is kept yet)");
  EXPECT_EQ(told("size"), "0.0 MB, at the most 1000.0 MB");
  EXPECT_EQ(told("hits"), "0 of 0 (0 %)");
  EXPECT_FALSE(fs::exists(cache));
  const Result first = findPhotos();
  EXPECT_EQ(first.status, 0) << first;
  EXPECT_EQ(told("store"), database);
  const std::string files = told("files");
  EXPECT_GE(std::stoi(files), 15);
  EXPECT_EQ(told("hits"), "0 of " + files + " (0 %)");
  const Result second = findPhotos();
  EXPECT_EQ(second.output, first.output);
  EXPECT_EQ(lines(second.errors).size(), 1u);
  EXPECT_EQ(told("files"), files);
  EXPECT_EQ(told("hits"), files + " of " + std::to_string(2 * std::stoi(files)) + " (50 %)");
}

TEST_F(Store, IsUsedForAttributesToo) {
  const std::string song = exampleLibrary() + "/Music/Tide Tables/01 Low Water.mp3";
  const Result first = runWith({"attrs", song});
  EXPECT_EQ(told("files"), "1");
  const Result second = runWith({"attrs", song});
  EXPECT_EQ(second.output, first.output);
  EXPECT_NE(told("hits").find("1 of 2"), std::string::npos) << told("hits");
}

TEST_F(Store, IsLeftAloneOnRequest) {
  const Result with = findPhotos();
  fs::remove_all(cache);
  const Result without = findPhotos({"--no-store"});
  EXPECT_EQ(without.output, with.output);
  EXPECT_EQ(without.status, with.status);
  runWith({"attrs", exampleLibrary() + "/README", "--no-store"});
  EXPECT_FALSE(fs::exists(cache));
}

TEST_F(Store, IsNotMadeForWhatNeedsNoReading) {
  EXPECT_EQ(runWith({"find", "kMDItemFSName == \"*.txt\"", "--in", exampleLibrary()}).status, 0);
  EXPECT_EQ(runWith({"schema"}).status, 0);
  EXPECT_FALSE(fs::exists(cache));
}

TEST_F(Store, IsClearedAndNoErrorWhereThereIsNone) {
  for (int i = 0; i < 2; ++i) {
    const Result cleared = runWith({"store", "--clear"});
    EXPECT_EQ(cleared.status, 0) << cleared;
    EXPECT_EQ(cleared.output + cleared.errors, "");
    findPhotos();
    EXPECT_TRUE(fs::exists(database));
  }
  runWith({"store", "--clear"});
  EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(Store, IsCheckedEntryByEntry) {
  for (int i = 0; i < 2; ++i) {
    const Result check = runWith({"store", "--check"});
    EXPECT_EQ(check.status, 0) << check;
    EXPECT_EQ(check.output, "every entry is as it was written\n");
    findPhotos();
  }
  std::string bytes = bytesOf(database);
  const size_t album = bytes.find("Tide Tables");
  ASSERT_NE(album, std::string::npos);
  bytes[album] ^= 1;
  scratch.file("cache/shotlight/content.sqlite", bytes);
  const Result damaged = runWith({"store", "--check"});
  EXPECT_EQ(damaged.status, 2) << damaged;
  EXPECT_EQ(damaged.output, "damaged: 1 entry isn't as written\n");
  EXPECT_EQ(
      damaged.errors,
      "shotlight: the store is damaged; it is made anew when that is met, or by shotlight store --clear\n");
}

TEST_F(Store, ThatIsDamagedIsSaidOnceAndMadeAnew) {
  const Result expected = findPhotos();
  scratch.file("cache/shotlight/content.sqlite", "no database at all");
  const Result check = runWith({"store", "--check"});
  EXPECT_EQ(check.status, 2) << check;
  EXPECT_TRUE(startsWith(check.output, "damaged: file is not a database\n"));
  const Result report = runWith({"store"});
  EXPECT_EQ(report.status, 2);
  EXPECT_EQ(report.errors,
            "shotlight: the store " + folder +
                ": file is not a database; see that its folder is yours and writable, or take it "
                "away with shotlight store --clear\n");
  const Result met = findPhotos();
  EXPECT_EQ(met.output, expected.output);
  EXPECT_EQ(met.status, expected.status);
  expectComplaint(met, ", can't be used: file is not a database. It is made anew.");
  EXPECT_EQ(lines(findPhotos().errors).size(), 1u);
  EXPECT_EQ(runWith({"store", "--check"}).status, 0);
}

TEST_F(Store, ThatCannotBeMadeIsSaidOnce) {
  const Result expected = findPhotos();
  fs::remove_all(cache);
  scratch.file("cache", "no folder");
  const Result without = findPhotos();
  EXPECT_EQ(without.output, expected.output);
  expectComplaint(without,
                  ", can't be used: can't be made: Not a directory. Contents of files are read anew.");
  EXPECT_EQ(runWith({"store"}).status, 2);
}

// Neither the command nor a search opens what a link leads to.
TEST_F(Store, IsNotWhatALinkLeadsTo) {
  findPhotos();
  const std::string other = scratch.at("other.sqlite");
  fs::rename(database, other);
  std::string bytes = bytesOf(other);
  bytes[63] = 99;  // the number of the format
  scratch.file("other.sqlite", bytes);
  fs::create_symlink(other, database);
  for (const char* const option : {"--check", "--"})
    EXPECT_EQ(runWith({"store", option}).status, 2) << option;
  expectComplaint(findPhotos(), ", can't be used: is no file. Contents of files are read anew.");
  EXPECT_TRUE(bytesOf(other) == bytes);
}

TEST_F(Store, LiesInTheCacheFolderOrBelowTheHome) {
  const std::string home = scratch.folder("home");
  const auto folderWith = [&](const std::vector<std::string>& assignments) {
    std::vector<std::string> arguments = {"-u", "HOME", "-u", "XDG_CACHE_HOME"};
    arguments.insert(arguments.end(), assignments.begin(), assignments.end());
    arguments.insert(arguments.end(), {files.program, "store"});
    const Result result = run({.arguments = arguments, .folder = home, .program = "/usr/bin/env"});
    return result.status == 0 ? lines(result.output)[0] : result.errors;
  };
  const auto storeIn = [](const std::string& path) {
    return "store  " + path + "/shotlight/content.sqlite (nothing is kept yet)";
  };
  EXPECT_EQ(folderWith({"XDG_CACHE_HOME=" + cache, "HOME=" + home}), storeIn(cache));
  EXPECT_EQ(folderWith({"HOME=" + home}), storeIn(home + "/.cache"));
  EXPECT_EQ(folderWith({"XDG_CACHE_HOME=", "HOME=" + home}), storeIn(home + "/.cache"));
  EXPECT_EQ(folderWith({"XDG_CACHE_HOME=relative", "HOME=" + home}), storeIn(home + "/.cache"));
  const std::string none =
      "shotlight: there is no folder for the store; set HOME or XDG_CACHE_HOME to a path that starts with "
      "/\n";
  EXPECT_EQ(folderWith({}), none);
  EXPECT_EQ(folderWith({"XDG_CACHE_HOME=relative", "HOME=also/relative"}), none);
  const Result search = run({.arguments = {"-u", "HOME", "-u", "XDG_CACHE_HOME", files.program, "find",
                                           kPhotos, "--in", exampleLibrary(), "--count"},
                             .folder = home,
                             .program = "/usr/bin/env"});
  EXPECT_EQ(search.status, 0) << search;
  EXPECT_EQ(lines(search.errors).size(), 1u) << search;
  EXPECT_TRUE(fs::is_empty(home));
}

TEST_F(Store, TakesNoArgumentsAndOneOptionAtMost) {
  expectError(runWith({"store", "x"}), "'x': store takes no arguments; leave it out");
  expectError(runWith({"store", "--clear", "--check"}),
              "--clear and --check don't go together; leave one out");
  expectError(runWith({"store", "--size"}), "unknown option '--size'; see shotlight store --help");
}

TEST_F(Store, IsSharedBySearchesAtOnce) {
  const Launch launch{.arguments = {"find", kPhotos, "--in", exampleLibrary()},
                      .environment = {"XDG_CACHE_HOME=" + cache}};
  const Result expected = run({.arguments = {"find", kPhotos, "--in", exampleLibrary(), "--no-store"}});
  Running one(launch), other(launch);
  for (const Result& result : {one.finish(), other.finish()}) {
    EXPECT_EQ(result.output, expected.output);
    EXPECT_EQ(lines(result.errors).size(), 1u) << result;
  }
  EXPECT_EQ(runWith({"store", "--check"}).status, 0);
}

// Names of files that can't be read are printed as results are.
TEST_F(Store, ComplaintsHaveNoControlCharacters) {
  const std::string photo = scratch.file("tree/\x1B[31m\nnew line.jpg", "x");
  ASSERT_EQ(::chmod(photo.c_str(), 0), 0);
  const Result result =
      run({.arguments = {"find", kPhotos, "--in", scratch.at("tree")}, .unprivileged = true});
  EXPECT_EQ(result.status, 3) << result;
  ASSERT_EQ(lines(result.errors).size(), 2u) << result;
  EXPECT_TRUE(startsWith(lines(result.errors)[1],
                         "shotlight: " + scratch.at("tree") + "/\\x1B[31m\\nnew line.jpg: "));
}

}  // namespace
