#pragma once

#include "serve/RequestGuard.h"
#include "serve/ServedProgram.h"

#include <memory>
#include <string>
#include <thread>

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

namespace control {

/// Serves the page and its questions by HTTP on the loopback address, on threads of its own. What the guard
/// refuses gets status 403 and the reason.
class PageServer {
public:
    /// `program` must outlive the server.
    explicit PageServer(ServedProgram& program);

    /// Ends the server; an answer that is under way is finished.
    ~PageServer();
    PageServer(const PageServer&) = delete;
    PageServer& operator=(const PageServer&) = delete;

    /// Begins to listen; on any free port with 0. Returns an empty text, or why it cannot.
    std::string start(int port);

    /// The page's address, with the token in it.
    const std::string& address() const { return mAddress; }

private:
    bool refuse(const httplib::Request& request, httplib::Response& response) const;
    void get(const httplib::Request& request, httplib::Response& response);
    void post(const httplib::Request& request, httplib::Response& response);

    ServedProgram& mProgram;
    std::unique_ptr<httplib::Server> mServer;
    std::unique_ptr<RequestGuard> mGuard;
    std::string mAddress;
    std::thread mThread;
};

}  // namespace control
