#pragma once

#include "HTTPServer.h"

#include <filesystem>

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

/// The same over TLS.
class HTTPSServer : public HTTPServer {
public:
    explicit HTTPSServer(const Certificate& certificate);
};

} // namespace Seam
