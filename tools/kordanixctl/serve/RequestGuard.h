#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace control {

/// Decides which requests the page's server answers: only those that know the token, that were addressed to
/// the loopback address by that name, so that no other name can be made to lead here, and that no other page
/// sent. Immutable; any thread.
class RequestGuard {
public:
    /// The token in lowercase hexadecimal.
    RequestGuard(std::string token, int port);

    struct Head {
        std::string path;                   ///< without the query
        std::optional<std::string> host;    ///< the header
        std::optional<std::string> origin;  ///< the header
    };

    /// Returns why the request is refused, for its sender; empty when it may be answered.
    std::string_view refusal(const Head& head) const;

    /// What follows "/TOKEN/" in the path of a request that is not refused.
    std::string_view resource(const std::string& path) const;

    const std::string& token() const { return mToken; }

private:
    bool isOwnHost(std::string_view host) const;

    std::string mToken;
    std::string mPort;
};

/// Returns 32 random hexadecimal digits; an empty text when there is no randomness.
std::string makeToken();

}  // namespace control
