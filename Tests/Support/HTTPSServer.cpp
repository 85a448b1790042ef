#include "HTTPSServer.h"

#include <cstdlib>
#include <openssl/ssl.h>
#include <stdexcept>

namespace Seam {

namespace {

/// Ends without TLS's goodbye: whole answers state their length.
class TLSStream : public Stream {
public:
    TLSStream(int socket, SSL_CTX* context) : socket_(socket), session_(SSL_new(context), SSL_free) {}

    bool isAccepted() override { return SSL_set_fd(session_.get(), socket_) == 1 && SSL_accept(session_.get()) == 1; }
    bool receive(char& byte) override { return SSL_read(session_.get(), &byte, 1) == 1; }
    bool send(const std::string& bytes) override {
        return bytes.empty() || SSL_write(session_.get(), bytes.data(), static_cast<int>(bytes.size())) > 0;
    }

private:
    int socket_;
    std::unique_ptr<SSL, void (*)(SSL*)> session_;
};

std::shared_ptr<SSL_CTX> contextOf(const Certificate& certificate) {
    const std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
    if (SSL_CTX_use_certificate_file(context.get(), certificate.file().c_str(), SSL_FILETYPE_PEM) != 1 ||
        SSL_CTX_use_PrivateKey_file(context.get(), certificate.keyFile().c_str(), SSL_FILETYPE_PEM) != 1) {
        throw std::runtime_error("certificate");
    }
    return context;
}

} // namespace

Certificate::Certificate() {
    std::string folder = std::filesystem::temp_directory_path() / "certificate-XXXXXX";
    if (!mkdtemp(folder.data())) {
        throw std::runtime_error("mkdtemp");
    }
    folder_ = folder;
    const auto command =
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj /CN=127.0.0.1 "
        "-addext subjectAltName=IP:127.0.0.1 -keyout " +
        keyFile().string() + " -out " + file().string() + " 2>/dev/null";
    if (std::system(command.c_str()) != 0) {
        throw std::runtime_error("openssl req");
    }
}

Certificate::~Certificate() {
    std::filesystem::remove_all(folder_);
}

HTTPSServer::HTTPSServer(const Certificate& certificate)
    : HTTPServer("https", [context = contextOf(certificate)](int socket) {
          return std::make_unique<TLSStream>(socket, context.get());
      }) {}

} // namespace Seam
