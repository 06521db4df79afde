/// The files of the page, which travel inside the program.
#pragma once

#include <span>
#include <string_view>

namespace tarnfind {

struct PageFile {
  std::string_view name;  ///< as the browser asks for it; empty for the page itself
  std::string_view type;  ///< media type
  std::string_view text;
  std::string_view sha256;  ///< of the text, in base64
};
extern const PageFile kPageHtml;
extern const PageFile kPageStyle;
/// In the order in which the page takes them.
extern const std::span<const PageFile> kPageScripts;

}  // namespace tarnfind
