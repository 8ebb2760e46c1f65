#include "overlays/PictureDelivery.h"

#include "io/PlainFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <utility>

namespace control {

namespace {

constexpr std::chrono::milliseconds POLL_PERIOD{5};

/// The size of a picture of the largest surface.
constexpr std::size_t MAX_SIZE = (std::size_t{1} << 30) + 1024;

/// A picture that nobody has fetched for this long is abandoned, and its file is free to take.
constexpr std::time_t FETCH_SECONDS = 2;

bool isSame(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}  // namespace

PictureDelivery::PictureDelivery(std::string path) : mPath(std::move(path)) {}

PictureDelivery::~PictureDelivery() {
    if (mFile >= 0) {
        if (state() != State::FAILED) {
            unlink(mPath.c_str());
        }
        close(mFile);
    }
}

std::string PictureDelivery::open(Clock::time_point end) {
    for (;;) {
        mFile = platform::openPlainFile(mPath, O_RDWR | O_CREAT);
        if (mFile < 0) {
            return "cannot write " + mPath + ": " + platform::plainFileError(errno);
        }
        if (take()) {
            return {};
        }
        close(std::exchange(mFile, -1));
        if (Clock::now() >= end) {
            return "another program waits for a picture of the same process";
        }
        if (!wait()) {
            return "interrupted";
        }
    }
}

/// Locks the file, unless somebody else has locked it or has a picture in it to fetch.
bool PictureDelivery::take() {
    struct stat mine = {};
    struct stat there = {};
    if (flock(mFile, LOCK_EX | LOCK_NB) != 0 || fstat(mFile, &mine) != 0 ||
        stat(mPath.c_str(), &there) != 0 || !isSame(mine, there)) {
        return false;
    }
    const bool isFetched = mine.st_size == 0 || std::time(nullptr) - mine.st_mtime > FETCH_SECONDS;
    return isFetched && ftruncate(mFile, 0) == 0;
}

bool PictureDelivery::wait() const {
    return mSignals.wait(POLL_PERIOD);
}

PictureDelivery::State PictureDelivery::state() const {
    struct stat mine = {};
    struct stat there = {};
    if (stat(mPath.c_str(), &there) != 0 || fstat(mFile, &mine) != 0) {
        return State::FAILED;
    }
    if (there.st_size > 0) {
        return State::ARRIVED;
    }
    // Another empty file belongs to somebody who came after ours was removed.
    return isSame(mine, there) ? State::AWAITED : State::FAILED;
}

std::string PictureDelivery::read(std::string& bytes) const {
    const int error = platform::readPlainFile(mPath, bytes, MAX_SIZE);
    return error == 0 ? std::string() : mPath + ": " + platform::plainFileError(error);
}

}  // namespace control
