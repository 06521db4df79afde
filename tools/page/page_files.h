/// The files of the page, which travel inside the program.
#pragma once

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
extern const PageFile kPageScript;

}  // namespace tarnfind
