#include "Platform/Foundation/URLSession.h"

#include "Support/Fetching.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

using namespace Fetching;
using namespace std::chrono_literals;

struct URLSession : testing::Test {
    Seam::HTTPServer server_;
};

TEST_F(URLSession, AnyStatusIsAnAnswer) {
    for (const int status : {200, 201, 206, 400, 403, 404, 500, 503}) {
        server_.answer("/x", {status, "text", {}});
        const auto answer = fetch(server_.url("/x"));
        ASSERT_TRUE(answer && answer->response) << status;
        EXPECT_EQ(answer->response->statusCode, status);
        EXPECT_EQ(answer->data, "text");
        const auto file = download(server_.url("/x"));
        ASSERT_TRUE(file && file->response) << status;
        EXPECT_EQ(file->response->statusCode, status);
        EXPECT_EQ(read(file->location.path()), "text");
        std::filesystem::remove(file->location.path());
    }
}

TEST_F(URLSession, EachDownloadIsAFileOfItsOwn) {
    const std::string bytes(1'000'000, '\xE9');
    const auto files = filesOfTwoDownloads(server_, bytes);
    ASSERT_EQ(files.size(), 2U);
    EXPECT_NE(files[0], files[1]);
    for (const auto& path : files) {
        EXPECT_TRUE(read(path) == bytes);
        std::filesystem::remove(path);
    }
}

TEST_F(URLSession, RedirectsInACircleEnd) {
    server_.answer("/a", {302, "", {"Location: /b"}});
    server_.answer("/b", {302, "", {"Location: /a"}});
    EXPECT_FALSE(fetch(server_.url("/a")));
}

TEST_F(URLSession, ABodyThatIsCutOffFails) {
    server_.answer("/x", Pieces{{"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n1234"}});
    EXPECT_FALSE(fetch(server_.url("/x")));
    EXPECT_FALSE(download(server_.url("/x")));
}

TEST_F(URLSession, SilenceEndsATransfer) {
    server_.answer("/x", Pieces{{"HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n"}, {"1234", 1h}});
    const auto time = durationOf([&] { EXPECT_FALSE(fetch(server_.url("/x"), /*timeout=*/1)); });
    EXPECT_GE(time.count(), 0.9);
    EXPECT_LE(time.count(), 10);
}

TEST_F(URLSession, ABodyArrivesByteByByte) {
    std::string bytes;
    for (unsigned i = 0; i < 3'000'000; ++i) {
        bytes += static_cast<char>(i * i >> 5);
    }
    server_.answer("/x", {200, bytes, {}});
    EXPECT_TRUE(body(server_.url("/x")) == bytes);
    server_.answer("/x", {200, "", {}});
    EXPECT_EQ(body(server_.url("/x")), "");
}

TEST_F(URLSession, RedirectsAreFollowed) {
    Seam::HTTPServer other;
    other.answer("/folder/there", {200, "here", {}});
    for (const int status : {301, 302, 303, 307, 308}) {
        server_.answer("/x", {status, "moved", {"Location: " + other.url("/folder/x")}});
        other.answer("/folder/x", {status, "moved again", {"Location: there"}});
        EXPECT_EQ(body(server_.url("/x")), "here") << status;
    }
    const auto file = download(server_.url("/x"));
    ASSERT_TRUE(file);
    EXPECT_EQ(read(file->location.path()), "here");
    std::filesystem::remove(file->location.path());
}

TEST_F(URLSession, WhereNobodyListensTransfersFail) {
    std::string url;
    {
        const Seam::HTTPServer gone;
        url = gone.url("/x");
    }
    EXPECT_FALSE(fetch(url));
    EXPECT_FALSE(fetch("http://127.0.0.1:99999/"));
}

TEST_F(URLSession, NoCookieIsKept) {
    server_.answer("/x", {302, "", {"Set-Cookie: a=b", "Location: /y"}});
    server_.answer("/y", {200, "here", {"Set-Cookie: c=d"}});
    EXPECT_EQ(body(server_.url("/x")), "here");
    EXPECT_EQ(body(server_.url("/y")), "here");
    for (const auto& request : server_.requests()) {
        EXPECT_EQ(request.head.find("ookie"), std::string::npos) << request.head;
    }
}

TEST_F(URLSession, ABodyMayComeInChunks) {
    server_.answer("/x", Pieces{{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"},
                                {"3\r\nabc\r\n", 10ms},
                                {"A;x=y\r\n0123456789\r\n", 10ms},
                                {"0\r\n\r\n", 10ms}});
    EXPECT_EQ(body(server_.url("/x")), "abc0123456789");
}

} // namespace
