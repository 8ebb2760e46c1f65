#include "serve/PageServer.h"

#include "serve/Page.h"

#include <httplib.h>
#include <sys/socket.h>

#include <charconv>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>

namespace control {

namespace {

constexpr const char* HOST = "127.0.0.1";
constexpr const char* JSON = "application/json";
constexpr int DONE = 200;
constexpr int WRONG = 400;
constexpr int REFUSED = 403;
constexpr int UNKNOWN = 404;
constexpr int NO_SUCH_METHOD = 405;
constexpr int OTHER_TYPE = 415;
constexpr int NOT_NOW = 503;

/// The page asks for nothing that is larger.
constexpr std::size_t MAX_BODY = 64 * 1024;
constexpr std::size_t QUESTIONS_PER_CONNECTION = 10000;
constexpr int KEEP_ALIVE_S = 1;
constexpr int PATIENCE_S = 1;
constexpr std::size_t WORKERS = 32;

std::optional<std::string> header(const httplib::Request& request, const char* name) {
    return request.has_header(name) ? std::optional(request.get_header_value(name)) : std::nullopt;
}

void answer(httplib::Response& response, int status, const std::string& error) {
    response.status = status;
    const auto body =
        error.empty() ? nlohmann::json::object() : nlohmann::json{{"error", std::string(error)}};
    response.set_content(body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace), JSON);
}

void setPage(httplib::Response& response) {
    constexpr std::string_view MARK = "@NONCE@";
    const std::string nonce = makeToken();
    std::string page(PAGE);
    for (std::size_t at = page.find(MARK); at != std::string::npos; at = page.find(MARK, at)) {
        page.replace(at, MARK.size(), nonce);
    }
    response.set_header("Content-Security-Policy",
                        "default-src 'none'; connect-src 'self'; img-src blob: data:; script-src 'nonce-" +
                            nonce + "'; style-src 'nonce-" + nonce +
                            "'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'");
    response.set_content(page, "text/html; charset=utf-8");
}

}  // namespace

PageServer::PageServer(ServedProgram& program)
    : mProgram(program), mServer(std::make_unique<httplib::Server>()) {}

PageServer::~PageServer() {
    if (mThread.joinable()) {
        mServer->stop();
        mThread.join();
    }
}

std::string PageServer::start(int port) {
    // Without the port being shared: two servers would get each other's questions.
    mServer->set_socket_options([](socket_t socket) {
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
    });
    mServer->set_payload_max_length(MAX_BODY);
    mServer->set_keep_alive_max_count(QUESTIONS_PER_CONNECTION);
    mServer->set_keep_alive_timeout(KEEP_ALIVE_S);
    mServer->set_tcp_nodelay(true);
    // Whoever connects and says nothing must not keep the page from being answered.
    mServer->set_read_timeout(PATIENCE_S);
    mServer->new_task_queue = [] { return new httplib::ThreadPool(WORKERS); };
    mServer->set_default_headers({{"Cache-Control", "no-store"},
                                  {"Cross-Origin-Resource-Policy", "same-origin"},
                                  {"Referrer-Policy", "no-referrer"},
                                  {"X-Content-Type-Options", "nosniff"},
                                  {"X-Frame-Options", "DENY"}});
    const std::string token = makeToken();
    if (token.empty()) {
        return "there are no random numbers for the address's token";
    }
    if (port == 0) {
        port = mServer->bind_to_any_port(HOST);
    } else if (!mServer->bind_to_port(HOST, port)) {
        return "port " + std::to_string(port) + " of " + HOST + " is not free";
    }
    if (port <= 0) {
        return std::string("no port of ") + HOST + " is free";
    }
    mGuard = std::make_unique<RequestGuard>(token, port);
    mAddress = std::string("http://") + HOST + ':' + std::to_string(port) + '/' + token + '/';
    mServer->set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
        return refuse(request, response) ? httplib::Server::HandlerResponse::Handled
                                         : httplib::Server::HandlerResponse::Unhandled;
    });
    mServer->Get(".*", [this](const httplib::Request& request, httplib::Response& response) {
        get(request, response);
    });
    mServer->Post(".*", [this](const httplib::Request& request, httplib::Response& response) {
        post(request, response);
    });
    mThread = std::thread([this] { mServer->listen_after_bind(); });
    return {};
}

bool PageServer::refuse(const httplib::Request& request, httplib::Response& response) const {
    const std::string_view refusal =
        mGuard->refusal({request.path, header(request, "Host"), header(request, "Origin")});
    if (!refusal.empty()) {
        answer(response, REFUSED, std::string(refusal));
        return true;
    }
    if (request.method != "GET" && request.method != "POST") {
        answer(response, NO_SUCH_METHOD, "only GET and POST are answered");
        return true;
    }
    return false;
}

void PageServer::get(const httplib::Request& request, httplib::Response& response) {
    const std::string_view resource = mGuard->resource(request.path);
    if (resource.empty()) {
        setPage(response);
    } else if (resource == "figures") {
        const std::string seen = request.get_param_value("refresh");
        std::uint32_t refresh = 0;
        std::from_chars(seen.data(), seen.data() + seen.size(), refresh);
        response.set_content(mProgram.figures(refresh), JSON);
    } else if (resource == "properties") {
        response.set_content(mProgram.properties(), JSON);
    } else if (resource == "picture.png") {
        std::string png;
        const std::string error = mProgram.picture(png);
        if (error.empty()) {
            response.set_content(png, "image/png");
        } else {
            answer(response, NOT_NOW, error);
        }
    } else {
        answer(response, UNKNOWN, "there is no such thing");
    }
}

void PageServer::post(const httplib::Request& request, httplib::Response& response) {
    const std::string_view resource = mGuard->resource(request.path);
    if (resource != "properties" && resource != "reset") {
        answer(response, UNKNOWN, "there is no such thing");
    } else if (request.get_header_value("Content-Type") != JSON) {
        answer(response, OTHER_TYPE, std::string("expected ") + JSON);
    } else {
        const std::string error = resource == "reset" ? mProgram.reset() : mProgram.set(request.body);
        answer(response, error.empty() ? DONE : WRONG, error);
    }
}

}  // namespace control
