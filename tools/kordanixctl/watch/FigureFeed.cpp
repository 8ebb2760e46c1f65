#include "watch/FigureFeed.h"

#include "figures/Catalogue.h"
#include "io/ProcessStart.h"
#include "ostra/ProcessSocket.h"

#include <poll.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>

namespace control {

namespace {

using Clock = std::chrono::steady_clock;
using platform::FigureReport;

/// A program answers at once unless it is stopped or the machine is very busy.
constexpr int PATIENCE_MS = 100;
constexpr std::chrono::seconds UNANSWERED{3};

}  // namespace

FigureFeed::FigureFeed(std::string directory, pid_t process)
    : mDirectory(std::move(directory)), mProcess(process), mOpened(Clock::now()), mLastNews(mOpened) {}

FigureFeed::~FigureFeed() {
    if (mSocket >= 0) {
        close(mSocket);
        unlink(mPath.c_str());
    }
}

std::string FigureFeed::open() {
    constexpr int TRIES = 16;
    for (int i = 0; i < TRIES && mSocket < 0; ++i) {
        if (getrandom(&mAsker, sizeof(mAsker), 0) != sizeof(mAsker)) {
            return "there are no random numbers";
        }
        mPath = platform::askerPath(mDirectory, mAsker);
        mSocket = platform::openSocketAt(mPath);
        if (mSocket < 0 && errno != EADDRINUSE) {
            break;
        }
    }
    return mSocket >= 0 ? std::string()
                        : "cannot make " + mPath + ": " + std::generic_category().message(errno);
}

std::optional<FigureReport> FigureFeed::ask() {
    if (!mError.empty() || mHasEnded) {
        return std::nullopt;
    }
    const bool isListening = send();
    std::optional<FigureReport> report = receive();
    if (!report) {
        mHasEnded = !isListening && !platform::processStart(mProcess);
        if (!mHasAnswered && Clock::now() - mOpened > UNANSWERED) {
            mError = "process " + std::to_string(mProcess) +
                     " does not tell its figures: it is stopped, or its layer is of another version";
        }
        return std::nullopt;
    }
    mHasAnswered = true;
    if (report->refreshes == 0 || report->refreshes == std::exchange(mSeenRefreshes, report->refreshes)) {
        return std::nullopt;
    }
    if (report->layout != figures::catalogueSignature()) {
        mError =
            "process " + std::to_string(mProcess) + " has a layer of another version than this kordanixctl";
        return std::nullopt;
    }
    mLastNews = Clock::now();
    return report;
}

/// Whether the process took the question.
bool FigureFeed::send() {
    platform::ProcessMessage message;
    message.kind = platform::ProcessMessage::Kind::FIGURES;
    message.asker = mAsker;
    return platform::sendMessage(mDirectory, mProcess, message).empty();
}

/// The newest answer of those that have come.
std::optional<FigureReport> FigureFeed::receive() {
    pollfd socket = {mSocket, POLLIN, 0};
    poll(&socket, 1, PATIENCE_MS);
    std::optional<FigureReport> newest;
    std::array<char, sizeof(FigureReport)> bytes;
    for (;;) {
        const ssize_t size = recv(mSocket, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_TRUNC);
        if (size < 0) {
            return newest;
        }
        const auto length = static_cast<std::size_t>(size);
        const auto report = length <= bytes.size()
                                ? platform::decodeReport(std::string_view(bytes.data(), length))
                                : std::nullopt;
        newest = report ? report : newest;
    }
}

}  // namespace control
