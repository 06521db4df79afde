#include "tools/page/page_server.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <boost/asio.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <random>
#include <thread>
#include <vector>

#include "tools/failure.h"
#include "tools/page/camera_picture.h"
#include "tools/page/page_files.h"
#include "tools/platform.h"

namespace tarnfind {

namespace {

namespace net = boost::asio;
namespace http = boost::beast::http;
using boost::beast::error_code;
using net::ip::tcp;

constexpr std::string_view kPicturesFolder = "pictures/";
constexpr std::size_t kMostConnections = 64;
constexpr std::uint32_t kMostHeaderBytes = 16 << 10;
/// How long a browser may take for a request, or for taking what it asked for.
constexpr std::chrono::seconds kPatience{60};
constexpr std::chrono::seconds kReloadTime{2};
/// What readers have for the last lines when the server ends.
constexpr std::chrono::milliseconds kEndTime{500};
constexpr std::chrono::milliseconds kAcceptDelay{100};

constexpr std::pair<const char*, const char*> kHeaders[] = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; base-uri 'none'; "
     "form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Cache-Control", "no-store"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
};

/// 128 bits in hexadecimal digits.
std::string MakeToken() {
  std::random_device random;  // the system's source on both systems
  std::string token;
  for (int i = 0; i < 4; ++i) token += fmt::format("{:08x}", static_cast<std::uint32_t>(random()));
  return token;
}

/// Takes the same time wherever the texts differ, so that the time does not tell how much of the token is right.
bool IsSameText(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  unsigned different = 0;
  for (std::size_t i = 0; i < a.size(); ++i) different |= static_cast<unsigned>(a[i] ^ b[i]);
  return different == 0;
}

/// Empty where an escape is malformed.
std::string PercentDecoded(std::string_view text) {
  const auto digit = [](char c) {
    const std::string_view digits = "0123456789abcdef";
    return digits.find(static_cast<char>(c >= 'A' && c <= 'F' ? c - 'A' + 'a' : c));
  };
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    if (text.size() - i < 3) return {};
    const std::size_t high = digit(text[i + 1]), low = digit(text[i + 2]);
    if (high == std::string_view::npos || low == std::string_view::npos) return {};
    decoded += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return decoded;
}

/// Null where there is none of that name.
const PageFile* FindPageFile(std::string_view name) {
  for (const PageFile* const file : {&kPageHtml, &kPageStyle})
    if (name == file->name) return file;
  const auto script = std::ranges::find(kPageScripts, name, &PageFile::name);
  return script == kPageScripts.end() ? nullptr : &*script;
}

/// The picture as a browser gets it; empty text where it cannot be shown, none where there is no such file any more.
std::optional<std::string> ShowablePictureOf(const std::filesystem::path& file) {
  const std::optional<std::vector<std::uint8_t>> bytes = ReadPictureFile(file);
  if (!bytes) return std::nullopt;
  const std::vector<std::uint8_t> jpeg = ShowablePicture(*bytes, kPictureOnPage);
  return std::string(jpeg.begin(), jpeg.end());
}

}  // namespace

/// Everything runs on thread_, except that lines come on the main thread and pictures are made on pictureThread_.
class PageServer::Server {
 public:
  Server(const Settings& settings, const PagePictures& pictures);
  ~Server();

  const std::string& Address() const { return address_; }
  PageLines& Lines() { return lines_; }

 private:
  class Session;
  friend class Session;

  void Listen(std::uint16_t port);
  void Accept();
  void End();
  void WakeReaders();
  void PageOpened();
  void PageClosed();
  void ConnectionClosed();

  /// 200 for a request of this page, else why it is refused.
  http::status Judge(const http::request<http::empty_body>& request) const;

  const bool endWithPages_;
  const PagePictures& pictures_;
  const std::string token_ = MakeToken();
  std::string address_;
  std::array<std::string, 2> hosts_;

  std::size_t connections_ = 0;
  std::size_t openPages_ = 0;
  bool ending_ = false;
  net::io_context io_{1};  // after what ~Session uses, because destroying it destroys the last sessions
  tcp::acceptor acceptor_{io_};
  net::steady_timer acceptDelay_{io_};
  net::steady_timer reload_{io_};
  net::steady_timer end_{io_};
  std::list<std::weak_ptr<Session>> sessions_;
  PageLines lines_{[this] { net::post(io_, [this] { WakeReaders(); }); }};
  net::thread_pool pictureThread_{1};
  std::thread thread_;
};

/// One connection, kept alive by the operations that are under way.
class PageServer::Server::Session : public std::enable_shared_from_this<Session> {
 public:
  Session(tcp::socket socket, Server& server) : server_(server), stream_(std::move(socket)) { ++server_.connections_; }
  ~Session() {
    if (isPage_) server_.PageClosed();
    server_.ConnectionClosed();
  }

  void ReadRequest() {
    parser_.emplace();
    parser_->header_limit(kMostHeaderBytes);
    parser_->body_limit(0);
    stream_.expires_after(kPatience);
    http::async_read(stream_, buffer_, *parser_, [self = shared_from_this()](error_code failed, std::size_t) {
      if (!failed) self->Answer();
    });
  }
  /// There may be lines to send.
  void Wake() {
    if (isPage_ && !writing_) SendLines();
  }
  /// The server ends: nothing but lines is still sent.
  void End() {
    if (isPage_)
      Wake();
    else
      Close();
  }

 private:
  void Answer() {
    const auto& request = parser_->get();
    const http::status status = server_.Judge(request);
    if (status != http::status::ok) return Send(status, {}, {});
    const std::string_view target = request.target().substr(server_.token_.size() + 2);
    if (target == "events") return BeginLines();
    if (target.starts_with(kPicturesFolder)) return SendPicture(PercentDecoded(target.substr(kPicturesFolder.size())));
    if (const PageFile* const file = FindPageFile(target))
      return Send(http::status::ok, file->type, std::string(file->text));
    Send(http::status::not_found, {}, {});
  }

  template <class Response>
  void SetHeaders(Response& response) const {
    for (const auto& [name, value] : kHeaders) response.set(name, value);
  }

  void Send(http::status status, std::string_view type, std::string body) {
    const auto& request = parser_->get();
    const auto response = std::make_shared<http::response<http::string_body>>(status, request.version());
    SetHeaders(*response);
    if (!type.empty()) response->set(http::field::content_type, type);
    response->body() = std::move(body);
    response->keep_alive(request.keep_alive() && !server_.ending_);
    response->prepare_payload();
    if (request.method() == http::verb::head) response->body().clear();
    stream_.expires_after(kPatience);
    http::async_write(stream_, *response, [self = shared_from_this(), response](error_code failed, std::size_t) {
      if (failed || !response->keep_alive()) return self->Close();
      self->ReadRequest();
    });
  }

  void SendPicture(const std::string& name) {
    const std::optional<std::filesystem::path> file = server_.pictures_.Find(name);
    if (!file) return Send(http::status::not_found, {}, {});
    net::post(server_.pictureThread_, [self = shared_from_this(), file] {
      const std::optional<std::string> jpeg = ShowablePictureOf(*file);
      net::post(self->server_.io_, [self, jpeg] {
        if (!jpeg) return self->Send(http::status::not_found, {}, {});
        if (jpeg->empty()) return self->Send(http::status::unsupported_media_type, {}, {});
        self->Send(http::status::ok, "image/jpeg", *jpeg);
      });
    });
  }

  void BeginLines() {
    const auto& request = parser_->get();
    header_.emplace(http::status::ok, request.version());
    SetHeaders(*header_);
    header_->set(http::field::content_type, "application/x-ndjson");
    header_->chunked(true);
    header_->keep_alive(false);
    serializer_.emplace(*header_);
    isPage_ = request.method() == http::verb::get;
    if (isPage_) server_.PageOpened();
    writing_ = true;
    stream_.expires_after(kPatience);
    http::async_write_header(stream_, *serializer_, [self = shared_from_this()](error_code failed, std::size_t) {
      if (failed || !self->isPage_) return self->Close();
      self->SendLines();
      self->WatchEnd();
    });
  }

  void SendLines() {
    chunk_ = server_.lines_.Take(reader_);
    writing_ = !chunk_.empty();
    if (writing_) {
      stream_.expires_after(kPatience);
      net::async_write(stream_, http::make_chunk(net::buffer(chunk_)), OnLinesSent());
    } else if (server_.lines_.IsAtEnd(reader_) && (!server_.endWithPages_ || server_.ending_)) {
      writing_ = true;
      net::async_write(stream_, http::make_chunk_last(),
                       [self = shared_from_this()](error_code, std::size_t) { self->Close(); });
    } else {
      stream_.expires_never();
    }
  }
  std::function<void(error_code, std::size_t)> OnLinesSent() {
    return [self = shared_from_this()](error_code failed, std::size_t) {
      if (failed) return self->Close();
      self->SendLines();
    };
  }
  /// A page sends nothing more, so the next thing to read is the end of its connection.
  void WatchEnd() {
    stream_.socket().async_read_some(net::buffer(&received_, 1),
                                     [self = shared_from_this()](error_code, std::size_t) { self->Close(); });
  }

  void Close() {
    error_code ignored;
    stream_.socket().shutdown(tcp::socket::shutdown_both, ignored);
    stream_.close();
  }

  Server& server_;
  boost::beast::tcp_stream stream_;
  boost::beast::flat_buffer buffer_{kMostHeaderBytes};
  std::optional<http::request_parser<http::empty_body>> parser_;

  bool isPage_ = false;  ///< reads the lines
  bool writing_ = false;
  PageLines::Reader reader_;
  std::string chunk_;
  char received_ = 0;
  std::optional<http::response<http::empty_body>> header_;
  std::optional<http::response_serializer<http::empty_body>> serializer_;
};

PageServer::Server::Server(const Settings& settings, const PagePictures& pictures)
    : endWithPages_(settings.endWithPages), pictures_(pictures) {
  Listen(settings.port);
  const std::uint16_t port = acceptor_.local_endpoint().port();
  hosts_ = {fmt::format("127.0.0.1:{}", port), fmt::format("localhost:{}", port)};
  address_ = fmt::format("http://{}/{}/", hosts_[0], token_);
  Accept();
  thread_ = std::thread([this] { io_.run(); });
}

PageServer::Server::~Server() {
  net::post(io_, [this] { End(); });
  thread_.join();
  pictureThread_.stop();
  pictureThread_.join();
}

void PageServer::Server::Listen(std::uint16_t port) {
  error_code failed;
  acceptor_.open(tcp::v4(), failed);
  if (!failed) {
    platform::PrepareListener(static_cast<std::uintptr_t>(acceptor_.native_handle()));
    acceptor_.bind({net::ip::address_v4::loopback(), port}, failed);
  }
  if (!failed) acceptor_.listen(tcp::acceptor::max_listen_connections, failed);
  if (failed) throw WrongUse(fmt::format("cannot serve at port {} of this computer: {}", port, failed.message()));
}

void PageServer::Server::Accept() {
  acceptor_.async_accept([this](error_code failed, tcp::socket socket) {
    if (ending_) return;
    if (failed) {  // no handle is free, for example
      acceptDelay_.expires_after(kAcceptDelay);
      return acceptDelay_.async_wait([this](error_code cancelled) {
        if (!cancelled && !ending_) Accept();
      });
    }
    std::erase_if(sessions_, [](const auto& session) { return session.expired(); });
    if (connections_ < kMostConnections) {
      const auto session = std::make_shared<Session>(std::move(socket), *this);
      sessions_.push_back(session);
      session->ReadRequest();
    }
    Accept();
  });
}

void PageServer::Server::End() {
  ending_ = true;
  acceptor_.close();
  acceptDelay_.cancel();
  reload_.cancel();
  if (connections_ == 0) return io_.stop();
  for (const auto& weak : sessions_)
    if (const auto session = weak.lock()) session->End();
  end_.expires_after(kEndTime);
  end_.async_wait([this](error_code) { io_.stop(); });
}

void PageServer::Server::ConnectionClosed() {
  if (--connections_ == 0 && ending_) io_.stop();
}

void PageServer::Server::WakeReaders() {
  for (const auto& weak : sessions_)
    if (const auto session = weak.lock()) session->Wake();
}

void PageServer::Server::PageOpened() {
  ++openPages_;
  lines_.SetAbandoned(false);
  reload_.cancel();
}

void PageServer::Server::PageClosed() {
  if (--openPages_ > 0 || ending_ || !endWithPages_) return;
  reload_.expires_after(kReloadTime);
  reload_.async_wait([this](error_code cancelled) {
    if (!cancelled) lines_.SetAbandoned(true);
  });
}

http::status PageServer::Server::Judge(const http::request<http::empty_body>& request) const {
  const auto isOwn = [&](std::string_view host) { return host == hosts_[0] || host == hosts_[1]; };
  const std::string_view host = request[http::field::host];
  if (!isOwn(host)) return http::status::forbidden;
  const auto origin = request.find(http::field::origin);
  constexpr std::string_view kScheme = "http://";
  if (origin != request.end() && origin->value() != std::string(kScheme) + std::string(host))
    return http::status::forbidden;
  const auto site = request.find("Sec-Fetch-Site");
  if (site != request.end() && site->value() != "same-origin" && site->value() != "none")
    return http::status::forbidden;
  const std::string_view target = request.target();
  const std::size_t slash = target.find('/', 1);
  if (!target.starts_with('/') || slash == std::string_view::npos || !IsSameText(target.substr(1, slash - 1), token_))
    return http::status::not_found;
  if (request.method() != http::verb::get && request.method() != http::verb::head)
    return http::status::method_not_allowed;
  return http::status::ok;
}

PageServer::PageServer(const Settings& settings, const PagePictures& pictures)
    : server_(std::make_unique<Server>(settings, pictures)) {}
PageServer::~PageServer() = default;
const std::string& PageServer::Address() const {
  return server_->Address();
}
PageLines& PageServer::Lines() {
  return server_->Lines();
}

}  // namespace tarnfind
