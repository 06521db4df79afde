/// Serves the page of one search to browsers on this computer, and to nobody else.
///
/// It listens at 127.0.0.1 only. A request is answered where it carries the token as the first part of its path, names
/// this server in Host (a foreign name that resolves to this computer does not), and does not come from another page:
/// Origin and Sec-Fetch-Site are this server's own or missing. Everything else gets 403, 404 or 405 and an empty body.
///
///   GET /TOKEN/                the page
///   GET /TOKEN/NAME            its style, or one of its scripts
///   GET /TOKEN/events          the lines, chunked, until the last one
///   GET /TOKEN/pictures/NAME   a picture that a line has named, made anew as a JPEG; 415 where it cannot be shown
///
/// One thread of its own serves all; a second one makes the pictures.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tools/page/page_lines.h"
#include "tools/page/page_pictures.h"

namespace tarnfind {

class PageServer {
 public:
  struct Settings {
    std::uint16_t port = 0;  ///< 0: one that is free
    /// The lines count as abandoned two seconds after the last open page was closed; a reload takes less. The response
    /// with the lines stays open behind the last line, because its end tells that the page was closed.
    bool endWithPages = false;
  };
  /// Listens when it returns. Throws WrongUse where the port cannot be had. Requires that `pictures` outlives it.
  PageServer(const Settings& settings, const PagePictures& pictures);
  /// Gives readers a moment to take the last lines, then ends all connections. Requires that Lines().Finish was called.
  ~PageServer();

  /// "http://127.0.0.1:PORT/TOKEN/"
  const std::string& Address() const;
  PageLines& Lines();

 private:
  class Server;
  std::unique_ptr<Server> server_;
};

}  // namespace tarnfind
