#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

struct ssl_ctx_st;

/// Servers of the unit tests, on this machine alone.
namespace Seam {

/// A certificate for 127.0.0.1 that nobody has signed but itself.
class Certificate {
public:
    Certificate();
    ~Certificate();
    Certificate(const Certificate&) = delete;
    Certificate& operator=(const Certificate&) = delete;

    /// In PEM, as SSL_CERT_FILE takes it.
    std::filesystem::path file() const { return folder_ / "certificate.pem"; }
    std::filesystem::path keyFile() const { return folder_ / "key.pem"; }

private:
    std::filesystem::path folder_;
};

/// Answers on threads of its own what it was told to, and 404 to everything else. Ends each connection after one
/// answer. Safe from any thread.
class HTTPServer {
public:
    struct Answer {
        int status = 200;
        std::string body;
        std::vector<std::string> headers = {}; // beside Content-Length, without line ends
    };
    /// Bytes of an answer as they stand, its head included, and how long the server waits before it sends them.
    struct Piece {
        std::string bytes;
        std::chrono::milliseconds delay{0};
    };
    struct Request {
        std::string path;
        std::string head; // all its lines
    };

    /// With a certificate: over TLS.
    explicit HTTPServer(const Certificate* certificate = nullptr);
    ~HTTPServer();
    HTTPServer(const HTTPServer&) = delete;
    HTTPServer& operator=(const HTTPServer&) = delete;

    /// From now on.
    void answer(const std::string& path, const Answer& answer);
    /// For what a whole and prompt answer cannot be: after the last piece the connection is cut.
    void answer(const std::string& path, std::vector<Piece> pieces);

    /// Lets what waits for its time go out, and from now on everything at once.
    void release();

    /// Where the path is reached, from "http://" or "https://" on.
    std::string url(const std::string& path = "") const;
    /// What it was asked, in this order.
    std::vector<Request> requests() const;
    /// How many connections were made, also those that asked nothing.
    int connections() const;

private:
    class Connection;

    void serve();
    void serve(Connection& connection);
    void sendPieces(Connection& connection, const std::vector<Piece>& pieces);
    std::vector<Piece> piecesFor(const Request& request);
    bool isStoppedAfter(std::chrono::milliseconds delay);

    int listener_;
    std::string address_;
    std::unique_ptr<ssl_ctx_st, void (*)(ssl_ctx_st*)> tls_;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool stopped_ = false;
    bool released_ = false;
    int connections_ = 0;
    std::map<std::string, std::vector<Piece>> answers_;
    std::vector<Request> requests_;

    std::vector<std::thread> threads_; // last: they use all the rest
};

} // namespace Seam
