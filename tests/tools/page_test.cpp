#include <fmt/format.h>
#include <gtest/gtest.h>

#include <boost/asio.hpp>
#include <string>
#include <thread>

#include "tools/page/page_files.h"
#include "tools/page/page_server.h"

namespace tarnfind {
namespace {

namespace net = boost::asio;

std::string Omitted(int lines) {
  return "{\"event\":\"omitted\",\"lines\":" + std::to_string(lines) + "}\n";
}

TEST(PageLines, AreReplayedInOrderWithinTheirBound) {
  PageLines lines({}, 16);
  PageLines::Reader early, late;
  for (const auto& [line, subject] : {std::pair{"aaa\n", "A"}, {"b1\n", "B"}, {"x\n", ""}, {"b2\n", "B"}})
    lines.Add(line, subject);
  lines.SetState("old\n");
  lines.SetState("state\n");
  EXPECT_EQ(lines.Take(early), "aaa\nb1\nx\nb2\nstate\n");
  EXPECT_EQ(lines.Take(early), "");
  lines.Add("y\n", "");
  EXPECT_EQ(lines.Take(late), "aaa\nb1\nx\nb2\ny\nstate\n") << "15 bytes: all of them";
  lines.Add("zz\n", "");
  PageLines::Reader later;
  EXPECT_EQ(lines.Take(later), Omitted(1) + "aaa\nx\nb2\ny\nzz\nstate\n") << "the newest of A and B stay";
  lines.Add("b3-b3-b3\n", "B");
  EXPECT_EQ(lines.Take(early), Omitted(1) + "zz\nb3-b3-b3\n") << "y went before it was read";
  lines.Finish();
  EXPECT_TRUE(lines.IsAtEnd(early));
  EXPECT_FALSE(lines.IsAtEnd(later));
  EXPECT_EQ(lines.Take(later), "b3-b3-b3\n");
  EXPECT_TRUE(lines.IsAtEnd(later));
}

/// The server's answer, to the end of the connection.
std::string Answer(std::uint16_t port, const std::string& request) {
  net::io_context io;
  net::ip::tcp::socket socket(io);
  socket.connect({net::ip::address_v4::loopback(), port});
  net::write(socket, net::buffer(request));
  std::string answer;
  boost::system::error_code ended;
  net::read(socket, net::dynamic_buffer(answer), ended);
  return answer;
}

struct ServedPage {
  PagePictures pictures{testing::TempDir()};
  PageServer server{{}, pictures};
  const std::string address = server.Address();
  const std::size_t colon = address.rfind(':');
  const std::size_t slash = address.find('/', colon);
  const std::uint16_t port = static_cast<std::uint16_t>(std::stoi(address.substr(colon + 1)));
  const std::string host = "127.0.0.1:" + std::to_string(port);
  const std::string token = address.substr(slash + 1, 32);

  std::string Get(const std::string& line, const std::string& headers) const {
    return Answer(port, line + " HTTP/1.1\r\n" + headers + "Connection: close\r\n\r\n");
  }
  ~ServedPage() { server.Lines().Finish(); }
};

TEST(PageServer, AnswersItsOwnPageAndNobodyElse) {
  const ServedPage page;
  ASSERT_EQ(page.address, "http://" + page.host + '/' + page.token + '/');
  const std::string host = "Host: " + page.host + "\r\n", path = "GET /" + page.token + '/';
  std::string wrong = page.token;
  wrong.back() = wrong.back() == '0' ? '1' : '0';
  const struct {
    const char* name;
    std::string line, headers;
    int status;
  } rows[] = {
      {"page", path, host, 200},
      {"other name", path, "Host: localhost:" + std::to_string(page.port) + "\r\n", 200},
      {"style", path + "page.css", host + "Origin: http://" + page.host + "\r\nSec-Fetch-Site: same-origin\r\n", 200},
      {"typed", path + "page.js", host + "Sec-Fetch-Site: none\r\n", 200},
      {"head", "HEAD /" + page.token + "/page.css", host, 200},
      {"unknown", path + "page.html", host, 404},
      {"no token", "GET /", host, 404},
      {"token alone", "GET /" + page.token, host, 404},
      {"wrong token", "GET /" + wrong + '/', host, 404},
      {"short token", "GET /" + page.token.substr(1) + '/', host, 404},
      {"traversal", path + "../page.css", host, 404},
      {"picture that no line named", path + "pictures/x.png", host, 404},
      {"whole address", "GET http://" + page.host + '/' + page.token + '/', host, 404},
      {"no host", path, "", 403},
      {"foreign name", path, "Host: example.com:" + std::to_string(page.port) + "\r\n", 403},
      {"other port", path, "Host: 127.0.0.1\r\n", 403},
      {"foreign page", path + "events", host + "Origin: http://example.com\r\n", 403},
      {"page of a file", path + "events", host + "Origin: null\r\n", 403},
      {"other name of the own page", path, host + "Origin: http://localhost:" + std::to_string(page.port) + "\r\n",
       403},
      {"cross-site", path, host + "Sec-Fetch-Site: cross-site\r\n", 403},
      {"another port's page", path, host + "Sec-Fetch-Site: same-site\r\n", 403},
      {"post", "POST /" + page.token + '/', host + "Content-Length: 0\r\n", 405},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string answer = page.Get(row.line, row.headers);
    EXPECT_EQ(answer.substr(0, 13), "HTTP/1.1 " + std::to_string(row.status) + ' ') << answer;
    EXPECT_NE(answer.find("\r\nContent-Security-Policy: default-src 'none'; script-src 'self';"), std::string::npos);
    const bool empty = row.status != 200 || row.line.starts_with("HEAD");
    EXPECT_EQ(answer.ends_with("\r\n\r\n"), empty);
  }
  EXPECT_TRUE(page.Get(path, host).ends_with(kPageHtml.text));
  EXPECT_EQ(Answer(page.port, std::string(20000, 'x')), "") << "a request without an end";
}

TEST(PageServer, SendsLinesAsTheyComeAndEndsBehindTheLast) {
  ServedPage page;
  page.server.Lines().Add("1\n", "");
  std::string answer;
  std::thread reader([&] { answer = page.Get("GET /" + page.token + "/events", "Host: " + page.host + "\r\n"); });
  page.server.Lines().Add("2\n", "");
  page.server.Lines().Finish();
  reader.join();
  EXPECT_NE(answer.find("\r\nTransfer-Encoding: chunked\r\n"), std::string::npos) << answer;
  EXPECT_TRUE(answer.ends_with("\r\n0\r\n\r\n")) << answer;
  EXPECT_LT(answer.find("1\n"), answer.find("2\n"));
}

TEST(PageServer, KnowsThatEveryPageWasClosed) {
  const PagePictures none{{}};
  PageServer server({.endWithPages = true}, none);
  const std::string address = server.Address();
  const std::string host = address.substr(7, address.find('/', 7) - 7);
  net::io_context io;
  net::ip::tcp::socket socket(io);
  socket.connect(
      {net::ip::address_v4::loopback(), static_cast<std::uint16_t>(std::stoi(host.substr(host.find(':') + 1)))});
  server.Lines().Finish();
  net::write(socket,
             net::buffer("GET " + address.substr(7 + host.size()) + "events HTTP/1.1\r\nHost: " + host + "\r\n\r\n"));
  std::string head;
  net::read_until(socket, net::dynamic_buffer(head), "\r\n\r\n");
  EXPECT_FALSE(server.Lines().IsAbandoned());
  socket.close();
  for (int i = 0; i < 100 && !server.Lines().IsAbandoned(); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_TRUE(server.Lines().IsAbandoned());
}

}  // namespace
}  // namespace tarnfind
