#include "serve/RequestGuard.h"

#include <sys/random.h>

#include <array>
#include <utility>

namespace control {

namespace {

constexpr std::string_view SCHEME = "http://";

/// In a time that does not tell how much of it is right.
bool isSame(std::string_view left, std::string_view right) {
    unsigned int difference = left.size() == right.size() ? 0 : 1;
    for (std::size_t i = 0; i < right.size(); ++i) {
        const char other = i < left.size() ? left[i] : '\0';
        difference |= static_cast<unsigned char>(other) ^ static_cast<unsigned char>(right[i]);
    }
    return difference == 0;
}

}  // namespace

RequestGuard::RequestGuard(std::string token, int port)
    : mToken(std::move(token)), mPort(std::to_string(port)) {}

bool RequestGuard::isOwnHost(std::string_view host) const {
    return host == "127.0.0.1:" + mPort || host == "localhost:" + mPort;
}

std::string_view RequestGuard::refusal(const Head& head) const {
    if (!head.host || !isOwnHost(*head.host)) {
        return "this is not the host that was asked for";
    }
    if (head.origin && (head.origin->compare(0, SCHEME.size(), SCHEME) != 0 ||
                        head.origin->substr(SCHEME.size()) != *head.host)) {
        return "another page may not ask";
    }
    const std::string_view path = head.path;
    const std::size_t end = path.find('/', 1);
    if (path.empty() || path.front() != '/' || end == std::string_view::npos ||
        !isSame(path.substr(1, end - 1), mToken)) {
        return "the address lacks the token that 'kordanixctl serve' has printed";
    }
    return {};
}

std::string_view RequestGuard::resource(const std::string& path) const {
    return std::string_view(path).substr(mToken.size() + 2);
}

std::string makeToken() {
    constexpr char DIGITS[] = "0123456789abcdef";
    std::array<unsigned char, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        return {};
    }
    std::string token;
    for (const unsigned char byte : bytes) {
        token += DIGITS[byte >> 4U];
        token += DIGITS[byte & 15U];
    }
    return token;
}

}  // namespace control
