#include "HTTPServer.h"

#include <arpa/inet.h>
#include <csignal>
#include <cstdlib>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace Seam {

namespace {

constexpr int mostConnections = 8; // at the same time
constexpr int patience = 10'000;   // milliseconds, with a client that asks nothing

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

int listenerOnLoopback() {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
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

} // namespace

Certificate::Certificate() {
    std::string folder = std::filesystem::temp_directory_path() / "certificate-XXXXXX";
    require(mkdtemp(folder.data()) != nullptr, "mkdtemp");
    folder_ = folder;
    const auto command =
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj /CN=127.0.0.1 "
        "-addext subjectAltName=IP:127.0.0.1 -keyout " +
        keyFile().string() + " -out " + file().string() + " 2>/dev/null";
    require(std::system(command.c_str()) == 0, "openssl req");
}

Certificate::~Certificate() {
    std::filesystem::remove_all(folder_);
}

/// One client, over TLS or not.
class HTTPServer::Connection {
public:
    Connection(int descriptor, ssl_ctx_st* tls)
        : descriptor_(descriptor), tls_(tls ? SSL_new(tls) : nullptr, SSL_free) {
        const timeval longest = {patience / 1000, 0};
        setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof longest);
        const int yes = 1;
        setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    }
    ~Connection() { close(descriptor_); } // without TLS's goodbye: whole answers state their length
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool isAccepted() { return !tls_ || (SSL_set_fd(tls_.get(), descriptor_) == 1 && SSL_accept(tls_.get()) == 1); }

    /// The head of a request; nothing when the client goes away first.
    std::optional<Request> request() {
        Request request;
        char byte = 0;
        while (!request.head.ends_with("\r\n\r\n")) {
            if ((tls_ ? SSL_read(tls_.get(), &byte, 1) : recv(descriptor_, &byte, 1, 0)) != 1) {
                return std::nullopt;
            }
            request.head += byte;
        }
        const auto start = request.head.find(' ') + 1;
        request.path = request.head.substr(start, request.head.find(' ', start) - start);
        return request;
    }

    bool send(const std::string& bytes) {
        if (bytes.empty()) {
            return true;
        }
        if (tls_) {
            return SSL_write(tls_.get(), bytes.data(), static_cast<int>(bytes.size())) > 0;
        }
        std::size_t sent = 0;
        while (sent < bytes.size()) {
            const auto count = ::send(descriptor_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            if (count <= 0) {
                return false;
            }
            sent += static_cast<std::size_t>(count);
        }
        return true;
    }

private:
    int descriptor_;
    std::unique_ptr<SSL, void (*)(SSL*)> tls_;
};

HTTPServer::HTTPServer(const Certificate* certificate)
    : listener_(listenerOnLoopback()), address_(addressOf(listener_)),
      tls_(certificate ? SSL_CTX_new(TLS_server_method()) : nullptr, SSL_CTX_free) {
    if (certificate) {
        require(SSL_CTX_use_certificate_file(tls_.get(), certificate->file().c_str(), SSL_FILETYPE_PEM) == 1, "file");
        require(SSL_CTX_use_PrivateKey_file(tls_.get(), certificate->keyFile().c_str(), SSL_FILETYPE_PEM) == 1, "key");
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
    shutdown(listener_, SHUT_RDWR);
    for (auto& thread : threads_) {
        thread.join();
    }
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
    return (tls_ ? "https://" : "http://") + address_ + path;
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
    sigaddset(&pipe, SIGPIPE); // OpenSSL writes to clients that went away
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    for (int client = 0; (client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        Connection connection(client, tls_.get());
        serve(connection);
    }
}

void HTTPServer::serve(Connection& connection) {
    {
        const std::lock_guard guard(mutex_);
        ++connections_;
    }
    if (!connection.isAccepted()) {
        return;
    }
    if (const auto request = connection.request()) {
        sendPieces(connection, piecesFor(*request));
    }
}

void HTTPServer::sendPieces(Connection& connection, const std::vector<Piece>& pieces) {
    for (const auto& piece : pieces) {
        if (isStoppedAfter(piece.delay) || !connection.send(piece.bytes)) {
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
