// Searching and sorting by what content tells about itself: one attribute with several values by any of them.
#include <string>
#include <vector>

#include "tests/standin/coreservices/media/exiftool_command.h"
#include "tests/standin/coreservices/media/sample_files.h"
#include "tests/standin/coreservices/metadata/fixture.h"

namespace {

using Strings = std::vector<std::string>;

class MediaQuery : public MetadataTest {
 protected:
  Strings find(const char* text, Names sortingAttributes = {}) const {
    const auto query = makeQuery(text, {}, sortingAttributes);
    if (!query) return {"(no query)"};
    MDQueryExecute(query.get(), kMDQuerySynchronous);
    return results(query);
  }
};

TEST_F(MediaQuery, FindsFilesByWhatTheirContentSays) {
  scratch.file("notes.txt", "Ann");
  scratch.file("photo.jpg", sample::jpeg());
  scratch.file("other.jpg", sample::jpeg());
  writeTags(scratch.at("photo.jpg"), {"-XMP:Creator=Ann", "-XMP:Creator=Bob", "-EXIF:ISO=200",
                                      "-EXIF:DateTimeOriginal=2011:03:05 12:00:00",
                                      "-EXIF:OffsetTimeOriginal=+00:00", "-EXIF:Flash#=1"});
  EXPECT_EQ(find("kMDItemAuthors == \"Bob\""), Strings{"photo.jpg"});
  EXPECT_EQ(find("kMDItemAuthors == \"ann\"c"), Strings{"photo.jpg"});
  EXPECT_EQ(find("kMDItemAuthors == \"Carl\""), Strings{});
  EXPECT_EQ(find("kMDItemISOSpeed >= 200"), Strings{"photo.jpg"});
  EXPECT_EQ(find("kMDItemFlashOnOff == true"), Strings{"photo.jpg"});
  EXPECT_EQ(find("InRange(kMDItemContentCreationDate, 321019199, 321019201)"), Strings{"photo.jpg"});
  EXPECT_EQ(find("kMDItemContentTypeTree == \"public.image\" && kMDItemPixelWidth == 32"),
            (Strings{"other.jpg", "photo.jpg"}));
  EXPECT_EQ(find("* == \"Bob\""), Strings{"photo.jpg"});
  EXPECT_EQ(find("kMDItemISOSpeed != 200"), (Strings{"notes.txt", "other.jpg"}));
}

TEST_F(MediaQuery, SortsFilesByWhatTheirContentSays) {
  scratch.file("a.jpg", sample::jpeg());
  scratch.file("b.png", sample::png());
  scratch.file("c.avi", sample::avi());
  scratch.file("d.jpg", "no picture");
  EXPECT_EQ(find("kMDItemFSSize >= 0", {"kMDItemPixelWidth"}), (Strings{"d.jpg", "b.png", "a.jpg", "c.avi"}));
}

}  // namespace
