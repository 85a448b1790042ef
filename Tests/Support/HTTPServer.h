#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

/// Servers of the unit tests, on this machine alone.
namespace Seam {

/// What a client and a server send each other through.
class Stream {
public:
    Stream() = default;
    virtual ~Stream() = default;
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    virtual bool isAccepted() = 0;
    /// False: there is none.
    virtual bool receive(char& byte) = 0;
    virtual bool send(const std::string& bytes) = 0;
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

    HTTPServer();
    virtual ~HTTPServer();
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

protected:
    /// What its clients speak, over sockets that the server closes.
    using MakeStream = std::function<std::unique_ptr<Stream>(int socket)>;
    HTTPServer(std::string scheme, MakeStream makeStream);

private:
    void serve();
    void serve(Stream& client);
    int accepted();
    std::optional<Request> requestOf(Stream& client);
    void sendPieces(Stream& client, const std::vector<Piece>& pieces);
    std::vector<Piece> piecesFor(const Request& request);
    bool isStoppedAfter(std::chrono::milliseconds delay);

    std::string scheme_;
    MakeStream makeStream_;
    int listener_;
    int end_[2] = {}; // a pipe, closed when the server ends
    std::string address_;

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
