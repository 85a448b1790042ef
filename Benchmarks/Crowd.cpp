// Many copies that ask one server, each at its own time, over a connection of its own with TLS, as the program does: a
// copy gives up after 15 seconds of silence. The request is standard input; each asks from one of many addresses of the
// loopback, so that ports last.
// usage: Crowd PORT COPIES SECONDS    the copies spread evenly over so many seconds
// Prints a line for each: milliseconds until it was answered and the status, or how long it waited and 0.
#include <arpa/inet.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <iostream>
#include <iterator>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <string>
#include <string_view>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto patience = 15s;
constexpr std::uint32_t firstAddress = 0x7F000101; // 127.0.1.1
constexpr std::uint32_t addresses = 100;

struct FreeSSL {
    void operator()(SSL* ssl) const { SSL_free(ssl); }
};

struct Copy {
    int socket = -1;
    std::unique_ptr<SSL, FreeSSL> ssl;
    Clock::time_point began;
    Clock::time_point heard; // when the server last gave a sign of life
    bool hasAsked = false;
    std::string answer;
};

class Crowd {
public:
    Crowd(std::uint16_t port, std::string request)
        : port_(port), request_(std::move(request)), context_(SSL_CTX_new(TLS_client_method())),
          poll_(epoll_create1(0)) {}
    Crowd(const Crowd&) = delete;
    Crowd& operator=(const Crowd&) = delete;
    ~Crowd() {
        close(poll_);
        SSL_CTX_free(context_);
    }

    void run(std::size_t count, std::chrono::duration<double> window) {
        std::vector<Copy> copies(count);
        const auto began = Clock::now();
        std::size_t next = 0;
        while (next < count || active_ > 0) {
            const auto isDue = [&] { return Clock::now() - began >= window * (double(next) / double(count)); };
            for (int atOnce = 64; atOnce > 0 && next < count && isDue();
                 --atOnce) { // those under way want to be heard too
                ask(copies[next], static_cast<std::uint32_t>(next));
                ++next;
            }
            serve(next < count ? 1 : 10);
            giveUp(copies, next);
        }
    }

private:
    void ask(Copy& copy, std::uint32_t number) {
        copy.began = copy.heard = Clock::now();
        copy.socket = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        if (copy.socket < 0) {
            std::perror("Crowd: socket");
            std::exit(1);
        }
        const int on = 1;
        setsockopt(copy.socket, IPPROTO_IP, IP_BIND_ADDRESS_NO_PORT, &on, sizeof on);
        setsockopt(copy.socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        const auto own = addressOf(firstAddress + number % addresses, 0);
        const auto server = addressOf(INADDR_LOOPBACK, port_);
        bind(copy.socket, reinterpret_cast<const sockaddr*>(&own), sizeof own);
        connect(copy.socket, reinterpret_cast<const sockaddr*>(&server), sizeof server); // goes on by itself
        epoll_event event = {};
        event.events = EPOLLIN | EPOLLOUT | EPOLLET;
        event.data.ptr = &copy;
        epoll_ctl(poll_, EPOLL_CTL_ADD, copy.socket, &event);
        ++active_;
    }

    static sockaddr_in addressOf(std::uint32_t host, std::uint16_t port) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(host);
        address.sin_port = htons(port);
        return address;
    }

    void serve(int milliseconds) {
        epoll_event events[256];
        const int count = epoll_wait(poll_, events, std::size(events), milliseconds);
        for (int index = 0; index < count; ++index) {
            auto& copy = *static_cast<Copy*>(events[index].data.ptr);
            copy.heard = Clock::now();
            if (events[index].events & EPOLLERR) {
                end(copy, false);
            } else {
                goOn(copy);
            }
        }
    }

    void goOn(Copy& copy) {
        if (!copy.ssl) {
            copy.ssl.reset(SSL_new(context_));
            SSL_set_fd(copy.ssl.get(), copy.socket);
            SSL_set_connect_state(copy.ssl.get());
        }
        if (!copy.hasAsked) {
            const int written = SSL_write(copy.ssl.get(), request_.data(), static_cast<int>(request_.size()));
            if (written <= 0) {
                endIfFailed(copy, written);
                return;
            }
            copy.hasAsked = true;
        }
        char bytes[16384];
        int count = 0;
        while ((count = SSL_read(copy.ssl.get(), bytes, sizeof bytes)) > 0) {
            copy.answer.append(bytes, static_cast<std::size_t>(count));
            if (isWhole(copy.answer)) {
                end(copy, true);
                return;
            }
        }
        endIfFailed(copy, count);
    }

    void endIfFailed(Copy& copy, int result) {
        const int error = SSL_get_error(copy.ssl.get(), result);
        if (error != SSL_ERROR_WANT_READ && error != SSL_ERROR_WANT_WRITE) {
            end(copy, false);
        }
    }

    static bool isWhole(std::string_view answer) {
        constexpr std::string_view name = "Content-Length: ";
        const auto head = answer.find("\r\n\r\n");
        const auto length = answer.find(name);
        return head != answer.npos && length < head &&
               answer.size() - head - 4 >= std::strtoul(answer.data() + length + name.size(), nullptr, 10);
    }

    void end(Copy& copy, bool isAnswered) {
        const std::chrono::duration<double, std::milli> wait = Clock::now() - copy.began;
        constexpr std::string_view version = "HTTP/1.1 ";
        std::printf("%.1f %ld\n", wait.count(),
                    isAnswered ? std::strtol(copy.answer.c_str() + version.size(), nullptr, 10) : 0);
        if (copy.ssl) {
            SSL_shutdown(copy.ssl.get());
            copy.ssl.reset();
        }
        close(copy.socket);
        copy.socket = -1;
        copy.answer = {};
        --active_;
    }

    /// They began in order, but were heard in any.
    void giveUp(std::vector<Copy>& copies, std::size_t begun) {
        const auto now = Clock::now();
        if (now < nextLook_) {
            return;
        }
        nextLook_ = now + 100ms;
        for (std::size_t index = 0; index < begun; ++index) {
            if (copies[index].socket >= 0 && now - copies[index].heard > patience) {
                end(copies[index], false);
            }
        }
    }

    const std::uint16_t port_;
    const std::string request_;
    SSL_CTX* const context_;
    const int poll_;
    std::size_t active_ = 0;
    Clock::time_point nextLook_;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        return 2;
    }
    const std::string request(std::istreambuf_iterator<char>(std::cin), {});
    Crowd crowd(static_cast<std::uint16_t>(std::strtoul(argv[1], nullptr, 10)), request);
    crowd.run(std::strtoul(argv[2], nullptr, 10), std::chrono::duration<double>(std::strtod(argv[3], nullptr)));
}
