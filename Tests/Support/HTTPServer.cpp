#include "HTTPServer.h"

#include <arpa/inet.h>
#include <csignal>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace Seam {

namespace {

constexpr int mostConnections = 8; // at the same time
constexpr int patience = 10;       // seconds, with a client that asks nothing

void require(bool holds, const char* what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

std::string wholeAnswer(const HTTPServer::Answer& answer) {
    std::string text = "HTTP/1.1 " + std::to_string(answer.status) + " Answer\r\nConnection: close\r\n";
    for (const auto& header : answer.headers) {
        text += header + "\r\n";
    }
    if (answer.status != 204 && answer.status != 304) { // which have no body
        text += "Content-Length: " + std::to_string(answer.body.size()) + "\r\n";
    }
    return text + "\r\n" + answer.body;
}

/// Not for child processes.
void keepToItself(int descriptor, int flags) {
    fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    fcntl(descriptor, F_SETFL, flags);
}

int listenerOnLoopback() {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    keepToItself(listener, O_NONBLOCK); // several threads accept
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    require(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0, "bind");
    require(listen(listener, SOMAXCONN) == 0, "listen");
    return listener;
}

std::string addressOf(int listener) {
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    require(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) == 0, "getsockname");
    return "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
}

class PlainStream : public Stream {
public:
    explicit PlainStream(int socket) : socket_(socket) {}

    bool isAccepted() override { return true; }
    bool receive(char& byte) override { return recv(socket_, &byte, 1, 0) == 1; }

    bool send(const std::string& bytes) override {
        std::size_t sent = 0;
        while (sent < bytes.size()) {
            const auto count = ::send(socket_, bytes.data() + sent, bytes.size() - sent, 0);
            if (count <= 0) {
                return false;
            }
            sent += static_cast<std::size_t>(count);
        }
        return true;
    }

private:
    int socket_;
};

} // namespace

HTTPServer::HTTPServer() : HTTPServer("http", [](int socket) { return std::make_unique<PlainStream>(socket); }) {}

HTTPServer::HTTPServer(std::string scheme, MakeStream makeStream)
    : scheme_(std::move(scheme)), makeStream_(std::move(makeStream)), listener_(listenerOnLoopback()),
      address_(addressOf(listener_)) {
    require(pipe(end_) == 0, "pipe");
    for (const int descriptor : end_) {
        keepToItself(descriptor, 0);
    }
    for (int i = 0; i < mostConnections; ++i) {
        threads_.emplace_back([this] { serve(); });
    }
}

HTTPServer::~HTTPServer() {
    {
        const std::lock_guard guard(mutex_);
        stopped_ = true;
    }
    changed_.notify_all();
    close(end_[1]);
    for (auto& thread : threads_) {
        thread.join();
    }
    close(end_[0]);
    close(listener_);
}

void HTTPServer::answer(const std::string& path, const Answer& answer) {
    this->answer(path, std::vector<Piece>{{wholeAnswer(answer)}});
}

void HTTPServer::answer(const std::string& path, std::vector<Piece> pieces) {
    const std::lock_guard guard(mutex_);
    answers_[path] = std::move(pieces);
}

void HTTPServer::release() {
    {
        const std::lock_guard guard(mutex_);
        released_ = true;
    }
    changed_.notify_all();
}

std::string HTTPServer::url(const std::string& path) const {
    return scheme_ + "://" + address_ + path;
}

std::vector<HTTPServer::Request> HTTPServer::requests() const {
    const std::lock_guard guard(mutex_);
    return requests_;
}

int HTTPServer::connections() const {
    const std::lock_guard guard(mutex_);
    return connections_;
}

void HTTPServer::serve() {
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE); // of clients that went away
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    for (int client = 0; (client = accepted()) >= 0;) {
        serve(*makeStream_(client));
        close(client);
    }
}

/// The next client's socket; negative when the server ends.
int HTTPServer::accepted() {
    while (true) {
        pollfd waiting[] = {{listener_, POLLIN, 0}, {end_[0], POLLIN, 0}};
        poll(waiting, 2, -1);
        if (waiting[1].revents != 0) {
            return -1;
        }
        const int client = accept(listener_, nullptr, nullptr);
        if (client >= 0) {
            keepToItself(client, 0);
            const timeval longest = {patience, 0};
            setsockopt(client, SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof longest);
            const int yes = 1;
            setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
            return client;
        }
    }
}

void HTTPServer::serve(Stream& client) {
    {
        const std::lock_guard guard(mutex_);
        ++connections_;
    }
    if (!client.isAccepted()) {
        return;
    }
    if (const auto request = requestOf(client)) {
        sendPieces(client, piecesFor(*request));
    }
}

/// The head of a request; nothing when the client goes away first.
std::optional<HTTPServer::Request> HTTPServer::requestOf(Stream& client) {
    Request request;
    char byte = 0;
    while (!request.head.ends_with("\r\n\r\n")) {
        if (!client.receive(byte)) {
            return std::nullopt;
        }
        request.head += byte;
    }
    const auto start = request.head.find(' ') + 1;
    request.path = request.head.substr(start, request.head.find(' ', start) - start);
    return request;
}

void HTTPServer::sendPieces(Stream& client, const std::vector<Piece>& pieces) {
    for (const auto& piece : pieces) {
        if (isStoppedAfter(piece.delay) || !client.send(piece.bytes)) {
            return;
        }
    }
}

std::vector<HTTPServer::Piece> HTTPServer::piecesFor(const Request& request) {
    const std::lock_guard guard(mutex_);
    requests_.push_back(request);
    const auto answer = answers_.find(request.path);
    return answer == answers_.end() ? std::vector<Piece>{{wholeAnswer({404, "Not found", {}})}} : answer->second;
}

bool HTTPServer::isStoppedAfter(std::chrono::milliseconds delay) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, delay, [this] { return stopped_ || released_; });
    return stopped_;
}

} // namespace Seam
