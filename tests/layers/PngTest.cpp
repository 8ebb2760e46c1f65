#include "software/Png.h"

#include "software/Image.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace fs = std::filesystem;
using software::Image;
using software::Pixel;

namespace {

class Png : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "png-test-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        mFolder = pattern;
        std::mt19937 random(5);
        const auto byte = [&] { return static_cast<std::uint8_t>(random() % 256); };
        for (Pixel& pixel : mImage.mPixels) {
            pixel = {byte(), byte(), byte(), byte()};
        }
    }
    void TearDown() override { fs::remove_all(mFolder); }

    std::string path(const char* name) const { return (mFolder / name).string(); }
    std::size_t fileCount() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(mFolder), fs::directory_iterator()));
    }

    fs::path mFolder;
    Image mImage{37, 11};
    std::string mError;
};

TEST_F(Png, ReturnsWhatWasWritten) {
    ASSERT_TRUE(software::writePng(mImage, path("a.png"), mError)) << mError;
    Image read(1, 1);
    ASSERT_TRUE(software::readPng(path("a.png"), read, mError)) << mError;
    EXPECT_EQ(read.mWidth, 37U);
    EXPECT_EQ(read.mHeight, 11U);
    EXPECT_TRUE(read.mPixels == mImage.mPixels);
    EXPECT_EQ(fileCount(), 1U);
}

TEST_F(Png, FailedWritesLeaveNothingBehind) {
    fs::create_directories(path("taken/inside"));
    const struct {
        std::string mPath;
        const char* mReason;
    } cases[] = {{path("missing/a.png"), "No such file or directory"}, {path("taken"), "directory"}};
    for (const auto& failure : cases) {
        EXPECT_FALSE(software::writePng(mImage, failure.mPath, mError));
        EXPECT_THAT(mError, testing::HasSubstr("cannot write " + failure.mPath + ": "));
        EXPECT_THAT(mError, testing::HasSubstr(failure.mReason));
    }
    EXPECT_FALSE(software::writePng(Image(), path("empty.png"), mError));
    EXPECT_EQ(fileCount(), 1U);
}

TEST_F(Png, FailedReadsNameTheFileAndKeepThePicture) {
    ASSERT_TRUE(software::writePng(mImage, path("cut.png"), mError));
    fs::resize_file(path("cut.png"), fs::file_size(path("cut.png")) / 2);
    std::ofstream(path("text.png")) << "not a picture";
    // A header that promises 20000 by 20000 pixels, with its right checksum.
    std::ofstream(path("large.png"), std::ios::binary)
        << std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\x4e\x20\0\0\x4e\x20\x08\x06\0\0\0\xe3\x70\x46\x39",
                       33)
        << std::string("\0\0\0\0IDAT\x35\xaf\x06\x1e", 12);
    const struct {
        const char* mName;
        const char* mReason;
    } cases[] = {{"none.png", "No such file or directory"},
                 {"text.png", "PNG"},
                 {"cut.png", ""},
                 {"large.png", "the picture is too large"}};
    for (const auto& failure : cases) {
        Image kept = mImage;
        EXPECT_FALSE(software::readPng(path(failure.mName), kept, mError)) << failure.mName;
        EXPECT_THAT(mError, testing::HasSubstr("cannot read " + path(failure.mName) + ": "));
        EXPECT_THAT(mError, testing::HasSubstr(failure.mReason));
        EXPECT_TRUE(kept.mPixels == mImage.mPixels);
    }
}

}  // namespace
