#include "Platform/Foundation/URLSession.h"

#include "Platform/Foundation/FileManager.h"
#include "Platform/Linux/Foundation/Transfers.h"
#include "Support/Fetching.h"
#include "Support/HTTPSServer.h"

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <malloc.h>
#include <netinet/in.h>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace Fetching;
using namespace std::chrono_literals;

constexpr double patience = 1; // seconds, in tests of silence
constexpr auto pause = 300ms;  // which is shorter
constexpr auto forever = 1h;

std::size_t entries(const fs::path& folder) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
}

/// Each byte of the text after a pause.
Pieces drip(const std::string& text) {
    Pieces pieces;
    for (const char c : text) {
        pieces.push_back({std::string(1, c), pause});
    }
    return pieces;
}

class URLSessionOnLinux : public testing::Test {
protected:
    URLSessionOnLinux() {
        unsetenv("SSL_CERT_DIR");
        fs::remove_all(temporaryFolder());
    }

    static fs::path temporaryFolder() { return NS::FileManager::defaultManager().temporaryDirectory().path(); }

    Seam::HTTPServer server_;
};

TEST_F(URLSessionOnLinux, EveryStatusIsAnAnswer) {
    for (const int status : {200, 201, 204, 206, 304, 400, 401, 403, 404, 407, 500, 503}) {
        const std::string text = status == 204 || status == 304 ? "" : "text";
        server_.answer("/x", {status, text, {}});
        const auto answer = fetch(server_.url("/x"));
        ASSERT_TRUE(answer && answer->response) << status;
        EXPECT_EQ(answer->response->statusCode, status);
        EXPECT_EQ(answer->data, text);
        const auto file = download(server_.url("/x"));
        ASSERT_TRUE(file && file->response) << status;
        EXPECT_EQ(file->response->statusCode, status);
        EXPECT_EQ(read(file->location.path()), text);
        fs::remove(file->location.path());
    }
}

TEST_F(URLSessionOnLinux, TheRequestIsAPlainOne) {
    server_.answer("/a%20b/../%C3%A9?q=1", {200, "here", {}});
    EXPECT_EQ(body(server_.url("/a b/../\xC3\xA9?q=1#fragment")), "here");
    auto uncached = request(server_.url("/a b/../\xC3\xA9?q=1#fragment"));
    uncached.cachePolicy = NS::URLRequestCachePolicy::ReloadIgnoringLocalCacheData;
    ASSERT_TRUE(NS::URLSession::sharedSession().dataForRequest(uncached));
    for (const auto& request : server_.requests()) {
        const auto host = server_.url().substr(std::string("http://").size());
        EXPECT_EQ(request.head, "GET /a%20b/../%C3%A9?q=1 HTTP/1.1\r\nHost: " + host + "\r\nAccept: */*\r\n\r\n");
    }
    EXPECT_EQ(server_.requests().size(), 2U);
}

TEST_F(URLSessionOnLinux, TwentyRedirectsAreFollowedAndNoMore) {
    for (int i = 0; i < 21; ++i) {
        server_.answer("/" + std::to_string(i), {302, "", {"Location: /" + std::to_string(i + 1)}});
    }
    server_.answer("/21", {200, "here", {}});
    EXPECT_EQ(body(server_.url("/1")), "here");
    EXPECT_EQ(body(server_.url("/0")), "failure");
}

TEST_F(URLSessionOnLinux, RedirectsInACircleFail) {
    server_.answer("/a", {302, "", {"Location: /b"}});
    server_.answer("/b", {302, "", {"Location: /a"}});
    EXPECT_FALSE(fetch(server_.url("/a")));
    EXPECT_EQ(server_.requests().size(), 21U);
}

TEST_F(URLSessionOnLinux, ARedirectToNowhereIsAnAnswer) {
    server_.answer("/x", {302, "text", {}});
    EXPECT_EQ(body(server_.url("/x")), "status 302");
}

TEST_F(URLSessionOnLinux, RedirectsStayWithHTTP) {
    Seam::HTTPServer other;
    for (const auto& place : {std::string("file:///etc/hostname"), "ftp" + other.url("/x").substr(4),
                              "gopher" + other.url("/x").substr(4), std::string("data:,x")}) {
        server_.answer("/x", {302, "", {"Location: " + place}});
        EXPECT_FALSE(fetch(server_.url("/x"))) << place;
    }
    EXPECT_EQ(other.connections(), 0);
}

TEST_F(URLSessionOnLinux, OnlyHTTPIsSpoken) {
    for (const auto& url : {std::string("file:///etc/hostname"), std::string("file://localhost/etc/hostname"),
                            "ftp" + server_.url("/x").substr(4), "gopher" + server_.url("/x").substr(4),
                            "unknown" + server_.url("/x").substr(4), server_.url("/x").substr(5), std::string("/x"),
                            std::string("x"), std::string("data:,x"), std::string("https:")}) {
        EXPECT_FALSE(NS::URLSession::sharedSession().dataForRequest(request(url))) << url;
    }
    EXPECT_FALSE(NS::URLSession::sharedSession().dataForRequest({}));
    EXPECT_EQ(server_.connections(), 0);
}

TEST_F(URLSessionOnLinux, APathIsNeverTakenForAHost) {
    server_.answer("/x", {200, "here", {}});
    const auto host = server_.url().substr(std::string("http://").size());
    for (const std::string start : {"http:", "http:/", "http:///", "http://@/", "http://:80/"}) {
        EXPECT_FALSE(fetch(start + host + "/x")) << start;
    }
    EXPECT_EQ(server_.connections(), 0);
}

TEST_F(URLSessionOnLinux, ASchemeMayBeInCapitals) {
    server_.answer("/x", {200, "here", {}});
    EXPECT_EQ(body("HTTP" + server_.url("/x").substr(4)), "here");
}

TEST_F(URLSessionOnLinux, CredentialsStayWithTheirServer) {
    Seam::HTTPServer other;
    other.answer("/x", {200, "here", {}});
    server_.answer("/x", {302, "", {"Location: " + other.url("/x")}});
    const std::string scheme = "http://";
    EXPECT_EQ(body(scheme + "user:secret@" + server_.url("/x").substr(scheme.size())), "here");
    EXPECT_NE(server_.requests().at(0).head.find("Authorization: Basic"), std::string::npos);
    EXPECT_EQ(other.requests().at(0).head.find("uthorization"), std::string::npos);
}

TEST_F(URLSessionOnLinux, StoredPasswordsAreNotUsed) {
    std::ofstream(fs::path(std::getenv("HOME")) / ".netrc") << "machine 127.0.0.1 login user password secret\n";
    EXPECT_EQ(body(server_.url("/x")), "status 404");
    EXPECT_EQ(server_.requests().at(0).head.find("uthorization"), std::string::npos);
}

TEST_F(URLSessionOnLinux, TheSystemsProxyIsAsked) {
    setenv("http_proxy", server_.url().c_str(), 1);
    server_.answer("http://h.example/x", {200, "from the proxy", {}});
    EXPECT_EQ(body("http://h.example/x"), "from the proxy");
    unsetenv("http_proxy");
}

TEST_F(URLSessionOnLinux, WhatIsNotHTTPFails) {
    for (const char* text :
         {"hello\r\n\r\n", "SSH-2.0-x\r\n", "HTTP/1.1\r\n\r\n", "HTTP/9.9 200 OK\r\n\r\n", "\x15\x03\x01", ""}) {
        server_.answer("/x", Pieces{{text}});
        EXPECT_FALSE(fetch(server_.url("/x"))) << text;
    }
}

TEST_F(URLSessionOnLinux, AConnectionThatIsCutFails) {
    for (const char* text :
         {"HTTP/1.1 200 OK\r\nContent-Le", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n",
          "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n1234", "HTTP/1.1 404 No\r\nContent-Length: 5\r\n\r\n1234",
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n",
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\n1234",
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\n1234\r\n",
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\n1234\r\nx\r\n\r\n"}) {
        server_.answer("/x", Pieces{{text}});
        EXPECT_FALSE(fetch(server_.url("/x"))) << text;
        EXPECT_FALSE(download(server_.url("/x"))) << text;
    }
    EXPECT_EQ(entries(temporaryFolder()), 0U);
}

TEST_F(URLSessionOnLinux, HeadersMayFollowABody) {
    server_.answer("/x", Pieces{{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nTrailer: A\r\n\r\n"
                                 "3\r\nabc\r\n0\r\nA: b\r\n\r\n"}});
    EXPECT_EQ(body(server_.url("/x")), "abc");
}

TEST_F(URLSessionOnLinux, AnEarlyHintIsNoAnswer) {
    const std::string hint = "HTTP/1.1 103 Early Hints\r\nLink: </y>\r\n\r\n";
    server_.answer("/x", Pieces{{hint + "HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nabc"}});
    EXPECT_EQ(body(server_.url("/x")), "abc");
    server_.answer("/x", Pieces{{hint}});
    EXPECT_FALSE(fetch(server_.url("/x")));
    server_.answer("/x", Pieces{{hint + "HTTP/1.1 200 OK\r\n"}});
    EXPECT_FALSE(fetch(server_.url("/x")));
}

TEST_F(URLSessionOnLinux, ABodyWithoutLengthEndsWithItsConnection) {
    server_.answer("/x", Pieces{{"HTTP/1.1 200 OK\r\n\r\nabc"}, {"def", 10ms}});
    EXPECT_EQ(body(server_.url("/x")), "abcdef");
}

TEST_F(URLSessionOnLinux, SilenceEndsATransfer) {
    const std::string whole = "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n1234";
    for (const std::size_t length : {std::size_t{0}, std::size_t{5}, whole.size() - 4, whole.size() - 1}) {
        server_.answer("/x", Pieces{{whole.substr(0, length)}, {whole.substr(length), forever}});
        const auto time = durationOf([&] { EXPECT_FALSE(fetch(server_.url("/x"), patience)); });
        EXPECT_GE(time.count(), patience) << length;
        EXPECT_LE(time.count(), 2 * patience) << length;
    }
    EXPECT_FALSE(download(server_.url("/x"), patience));
    EXPECT_EQ(entries(temporaryFolder()), 0U);
}

TEST_F(URLSessionOnLinux, SilenceInAHandshakeEndsATransfer) {
    const auto time = durationOf([&] { EXPECT_FALSE(fetch("https" + server_.url("/x").substr(4), patience)); });
    EXPECT_GE(time.count(), patience);
    EXPECT_LE(time.count(), 2 * patience);
}

TEST_F(URLSessionOnLinux, AConnectionThatIsNotMadeEndsATransfer) {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(listen(listener, 0), 0);
    ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
    const int waiting = socket(AF_INET, SOCK_STREAM, 0); // the only one that the queue has room for
    ASSERT_EQ(connect(waiting, reinterpret_cast<sockaddr*>(&address), size), 0);
    const auto url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
    const auto time = durationOf([&] { EXPECT_FALSE(fetch(url, patience)); });
    EXPECT_GE(time.count(), patience - 0.01); // libcurl counts in whole milliseconds
    EXPECT_LE(time.count(), 2 * patience);
    close(waiting);
    close(listener);
}

TEST_F(URLSessionOnLinux, EveryByteOfABodyRestartsTheTimeout) {
    auto pieces = drip("12345678");
    pieces.insert(pieces.begin(), {"HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\n"});
    server_.answer("/x", pieces);
    const auto time = durationOf([&] { EXPECT_EQ(body(server_.url("/x"), patience), "12345678"); });
    EXPECT_GE(time.count(), 2 * patience);
}

TEST_F(URLSessionOnLinux, EveryByteOfAHeadRestartsTheTimeout) {
    auto pieces = drip("X-Slow: a line");
    pieces.insert(pieces.begin(), {"HTTP/1.1 200 OK\r\nContent-Length: 4\r\n"});
    pieces.push_back({"\r\n\r\n1234"});
    server_.answer("/x", pieces);
    const auto time = durationOf([&] { EXPECT_EQ(body(server_.url("/x"), patience), "1234"); });
    EXPECT_GE(time.count(), 2 * patience);
}

TEST_F(URLSessionOnLinux, RedirectsRestartTheTimeout) {
    server_.answer("/x", Pieces{{"HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: /y\r\n\r\n", 2 * pause}});
    server_.answer("/y", Pieces{{"HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: /z\r\n\r\n", 2 * pause}});
    server_.answer("/z", Pieces{{"HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n1234", 2 * pause}});
    EXPECT_EQ(body(server_.url("/x"), patience), "1234");
}

TEST_F(URLSessionOnLinux, ADownloadIsAFileOfTheCallersOwn) {
    const std::string bytes(1'000'000, '\xE9');
    const auto files = filesOfTwoDownloads(server_, bytes);
    ASSERT_EQ(files.size(), 2U);
    EXPECT_NE(files[0], files[1]);
    for (const auto& path : files) {
        EXPECT_EQ(fs::path(path).parent_path(), temporaryFolder());
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
        EXPECT_TRUE(read(path) == bytes);
    }
    EXPECT_EQ(entries(temporaryFolder()), 2U);
}

TEST_F(URLSessionOnLinux, ADownloadThatDoesNotFitLeavesNothing) {
    server_.answer("/x", {200, std::string(1'000'000, 'x'), {}});
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small = {100'000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_FALSE(download(server_.url("/x")));
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(entries(temporaryFolder()), 0U);
    EXPECT_TRUE(download(server_.url("/x")));
}

TEST_F(URLSessionOnLinux, WithoutAFileNothingIsAskedFor) {
    const auto folder = temporaryFolder();
    fs::remove_all(folder);
    std::ofstream(folder) << "in the way";
    EXPECT_FALSE(download(server_.url("/x")));
    EXPECT_EQ(server_.connections(), 0);
    fs::remove(folder);
}

TEST_F(URLSessionOnLinux, TransfersOfSeveralThreadsDoNotMix) {
    for (int number = 0; number < 4; ++number) {
        server_.answer("/" + std::to_string(number), {200, std::string(20'000, static_cast<char>('a' + number)), {}});
    }
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([this, number] {
            const auto expected = std::string(20'000, static_cast<char>('a' + number));
            for (int round = 0; round < 20; ++round) {
                EXPECT_TRUE(body(server_.url("/" + std::to_string(number))) == expected);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
}

struct Usage {
    std::size_t descriptors = 0;
    std::size_t threads = 0;
    std::size_t memory = 0; // bytes on the heap, where the server notes down what it is asked
};

/// Once the server is done with its connections, too.
Usage usage() {
    Usage now;
    do {
        now.descriptors = entries("/proc/self/fd");
        std::this_thread::sleep_for(pause);
    } while (entries("/proc/self/fd") != now.descriptors);
    now.threads = entries("/proc/self/task");
    now.memory = mallinfo2().uordblks;
    return now;
}

TEST_F(URLSessionOnLinux, ManyTransfersLeaveNothingBehind) {
    server_.answer("/x", {200, std::string(10'000, 'x'), {}});
    server_.answer("/cut", Pieces{{"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n1234"}});
    const auto transfer = [this] {
        EXPECT_TRUE(fetch(server_.url("/x")));
        EXPECT_FALSE(download(server_.url("/cut")));
        const auto file = download(server_.url("/x"));
        ASSERT_TRUE(file);
        fs::remove(file->location.path());
    };
    for (int i = 0; i < 30; ++i) {
        transfer();
    }
    const auto before = usage();
    for (int i = 0; i < 100; ++i) {
        transfer();
    }
    const auto after = usage();
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_LT(after.memory, before.memory + 100'000);
    EXPECT_EQ(entries(temporaryFolder()), 0U);
}

void cancelDuringTransfer() {
    Seam::HTTPServer server;
    server.answer("/x", Pieces{{"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n1234"}, {"5", forever}});
    std::thread canceller([&] {
        while (server.requests().size() < 2) {
            std::this_thread::sleep_for(1ms);
        }
        std::this_thread::sleep_for(pause);
        Linux::cancelTransfers();
    });
    std::thread other([&] { EXPECT_FALSE(download(server.url("/x"))); });
    const auto time = durationOf([&] {
        EXPECT_FALSE(fetch(server.url("/x")));
        other.join();
    });
    canceller.join();
    EXPECT_LT(time.count(), 2);
    EXPECT_FALSE(fetch(server.url("/none")));
    std::this_thread::sleep_for(pause);
    EXPECT_EQ(server.connections(), 2);
    EXPECT_EQ(entries(NS::FileManager::defaultManager().temporaryDirectory().path()), 0U);
    std::_Exit(testing::Test::HasFailure());
}

TEST(URLSessionDeathTest, TransfersEndWhenTheApplicationDoes) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(cancelDuringTransfer(), testing::ExitedWithCode(0), "");
}

class URLSessionOverTLS : public URLSessionOnLinux {
protected:
    URLSessionOverTLS() { setenv("SSL_CERT_FILE", certificate_.file().c_str(), 1); }
    ~URLSessionOverTLS() override { unsetenv("SSL_CERT_FILE"); }

    Seam::Certificate certificate_;
    Seam::HTTPSServer secure_{certificate_};
};

TEST_F(URLSessionOverTLS, ATrustedServerIsHeard) {
    secure_.answer("/x", {200, std::string(1'000'000, 'x'), {}});
    EXPECT_TRUE(body(secure_.url("/x")) == std::string(1'000'000, 'x'));
}

TEST_F(URLSessionOverTLS, TrustMayComeFromAFolder) {
    secure_.answer("/x", {200, "here", {}});
    const auto folder = certificate_.file().parent_path() / "trusted";
    fs::create_directory(folder);
    fs::copy(certificate_.file(), folder);
    ASSERT_EQ(std::system(("openssl rehash " + folder.string()).c_str()), 0);
    unsetenv("SSL_CERT_FILE");
    EXPECT_EQ(body(secure_.url("/x")), "failure");
    setenv("SSL_CERT_DIR", folder.c_str(), 1);
    EXPECT_EQ(body(secure_.url("/x")), "here");
    unsetenv("SSL_CERT_DIR");
}

TEST_F(URLSessionOverTLS, AServerThatNobodyTrustsIsAskedNothing) {
    const Seam::Certificate other;
    setenv("SSL_CERT_FILE", other.file().c_str(), 1);
    EXPECT_FALSE(fetch(secure_.url("/x")));
    unsetenv("SSL_CERT_FILE");
    EXPECT_FALSE(fetch(secure_.url("/x")));
    setenv("SSL_CERT_FILE", "/nowhere", 1);
    EXPECT_FALSE(fetch(secure_.url("/x")));
    EXPECT_GT(secure_.connections(), 0);
    EXPECT_TRUE(secure_.requests().empty());
}

TEST_F(URLSessionOverTLS, AServerOfAnotherNameIsAskedNothing) {
    const auto port = secure_.url().substr(secure_.url().rfind(':'));
    EXPECT_FALSE(fetch("https://localhost" + port + "/x"));
    EXPECT_GT(secure_.connections(), 0);
    EXPECT_TRUE(secure_.requests().empty());
}

TEST_F(URLSessionOverTLS, NoRedirectLeadsBackToPlainHTTP) {
    server_.answer("/plain", {200, "here", {}});
    secure_.answer("/direct", {302, "", {"Location: " + server_.url("/plain")}});
    secure_.answer("/later", {302, "", {"Location: /direct"}});
    server_.answer("/up", {302, "", {"Location: " + secure_.url("/direct")}});
    EXPECT_FALSE(fetch(secure_.url("/direct")));
    EXPECT_FALSE(fetch(secure_.url("/later")));
    EXPECT_FALSE(fetch("HTTPS" + secure_.url("/direct").substr(5)));
    EXPECT_FALSE(download(secure_.url("/direct")));
    EXPECT_EQ(server_.connections(), 0);
    EXPECT_FALSE(fetch(server_.url("/up")));
    EXPECT_EQ(server_.connections(), 1);
}

TEST_F(URLSessionOverTLS, RedirectsMayTurnToTLS) {
    secure_.answer("/x", {302, "", {"Location: /y"}});
    secure_.answer("/y", {200, "here", {}});
    server_.answer("/x", {302, "", {"Location: " + secure_.url("/x")}});
    EXPECT_EQ(body(server_.url("/x")), "here");
}

TEST_F(URLSessionOverTLS, EveryByteRestartsTheTimeout) {
    auto pieces = drip("12345678");
    pieces.insert(pieces.begin(), {"HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\n"});
    secure_.answer("/x", pieces);
    EXPECT_EQ(body(secure_.url("/x"), patience), "12345678");
}

TEST_F(URLSessionOverTLS, ManyTransfersLeaveNothingBehind) {
    secure_.answer("/x", {200, "here", {}});
    for (int i = 0; i < 50; ++i) {
        EXPECT_TRUE(fetch(secure_.url("/x")));
    }
    const auto before = usage();
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(fetch(secure_.url("/x")));
    }
    const auto after = usage();
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_LT(after.memory, before.memory + 300'000);
}

} // namespace
