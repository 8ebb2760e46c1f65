#include "software/Image.h"
#include "software/Png.h"
#include "support/TemporaryDirectory.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace fs = std::filesystem;
using software::Image;
using testing::HasSubstr;

namespace {

class Png : public testing::Test {
protected:
    Png() {
        std::uint8_t value = 0;
        for (software::Pixel& pixel : mImage.mPixels) {
            pixel = {value++, value++, 7, value++};
        }
    }

    const support::TemporaryDirectory mFolder;
    Image mImage{37, 11};
    std::string mError;
};

TEST_F(Png, ReturnsWhatWasWrittenAndFailedWritesLeaveNothingBehind) {
    const std::string path = mFolder.path("a.png");
    ASSERT_TRUE(software::writePng(mImage, path, mError)) << mError;
    Image read(1, 1);
    ASSERT_TRUE(software::readPng(path, read, mError)) << mError;
    EXPECT_TRUE(read.mWidth == 37 && read.mHeight == 11 && read.mPixels == mImage.mPixels);

    fs::create_directories(mFolder.path("taken/inside"));
    for (const std::string& wrong : {mFolder.path("missing/a.png"), mFolder.path("taken")}) {
        EXPECT_FALSE(software::writePng(mImage, wrong, mError));
        EXPECT_THAT(mError, HasSubstr("cannot write " + wrong + ": "));
        EXPECT_THAT(mError, HasSubstr("directory"));
    }
    EXPECT_FALSE(software::writePng(Image(), mFolder.path("empty.png"), mError));
    ASSERT_EQ(mkfifo(mFolder.path("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(software::writePng(mImage, mFolder.path("pipe"), mError));
    EXPECT_TRUE(fs::is_fifo(mFolder.path("pipe")));
    EXPECT_EQ(std::distance(fs::directory_iterator(mFolder.path()), fs::directory_iterator()), 3);
}

TEST_F(Png, FailedReadsNameTheFileAndKeepThePicture) {
    const std::string cut = mFolder.path("cut.png");
    ASSERT_TRUE(software::writePng(mImage, cut, mError));
    fs::resize_file(cut, fs::file_size(cut) / 2);
    std::ofstream(mFolder.path("text.png")) << "not a picture";
    // A header that promises 20000 by 20000 pixels, with its right checksum.
    std::ofstream(mFolder.path("large.png"), std::ios::binary)
        << std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\x4e\x20\0\0\x4e\x20\x08\x06\0\0\0\xe3\x70\x46\x39",
                       33)
        << std::string("\0\0\0\0IDAT\x35\xaf\x06\x1e", 12);
    for (const auto& [name, reason] : {std::pair("none.png", "No such file or directory"),
                                       {"text.png", "PNG"},
                                       {"cut.png", ""},
                                       {"large.png", "the picture is too large"}}) {
        Image kept = mImage;
        EXPECT_FALSE(software::readPng(mFolder.path(name), kept, mError)) << name;
        EXPECT_THAT(mError, HasSubstr("cannot read " + mFolder.path(name) + ": "));
        EXPECT_THAT(mError, HasSubstr(reason));
        EXPECT_TRUE(kept.mPixels == mImage.mPixels);
    }
}

}  // namespace
