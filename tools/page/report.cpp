#include "tools/page/report.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string_view>
#include <unordered_map>

#include "base/base64.h"
#include "tools/camera_snapshot.h"
#include "tools/failure.h"
#include "tools/json_objects.h"
#include "tools/page/camera_picture.h"
#include "tools/page/page_files.h"
#include "tools/page/page_pictures.h"
#include "tools/picture_store.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

constexpr std::size_t kLongestLine = 4 << 20;
constexpr std::size_t kUsualPictures = 500;
constexpr std::size_t kMostPictures = 1'000'000;

/// The lines that a report may have, and the member that each must have, an object or a text.
struct LineKind {
  std::string_view event;
  const char* member;
  bool isObject;
};
constexpr LineKind kLineKinds[] = {
    {"camera", "camera", true},    {"picture", "camera", false}, {"values", "camera", false},
    {"summary", "command", false}, {"error", "error", false},    {"problem", "text", false},
    {"omitted", nullptr, false},   {"state", "state", false},
};

class LineReader {
 public:
  explicit LineReader(const std::string& path)
      : path_(path), stream_(PathFromUtf8(path), std::ios::binary), line_(kLongestLine, '\0') {
    if (!stream_) throw WrongUse(fmt::format("{} cannot be read", Printable(path)));
  }

  /// The next line of a search; empty at the end.
  std::optional<Json> Next() {
    while (stream_.getline(line_.data(), static_cast<std::streamsize>(line_.size()))) {
      ++number_;
      const std::string_view line(line_.data());
      if (line.find_first_not_of(" \t\r") != std::string_view::npos) return Parse(line);
    }
    if (stream_.bad()) throw WrongUse(fmt::format("{} cannot be read", Printable(path_)));
    if (!stream_.eof()) ++number_, Fail("is too long");
    return std::nullopt;
  }

 private:
  Json Parse(std::string_view line) const {
    Json object = ParseJsonLine(line);
    if (!object.is_object()) Fail("is no JSON object");
    const auto event = object.find("event");
    const auto kind = std::ranges::find_if(kLineKinds, [&](const LineKind& row) {
      return event != object.end() && event->is_string() && event->get_ref<const std::string&>() == row.event;
    });
    if (kind == std::end(kLineKinds)) Fail("is no line of a search");
    if (!kind->member) return object;
    const auto member = object.find(kind->member);
    if (member == object.end() || !(kind->isObject ? member->is_object() : member->is_string()))
      Fail(fmt::format("has no \"{}\"", kind->member));
    return object;
  }
  [[noreturn]] void Fail(const std::string& what) const {
    throw WrongUse(fmt::format("{}: line {} {}", Printable(path_), number_, what));
  }

  const std::string path_;
  std::ifstream stream_;
  std::string line_;
  std::uint64_t number_ = 0;
};

/// The number of pictures of each camera, by the server's text.
using PictureCounts = std::unordered_map<std::string, std::size_t>;

bool IsPicture(const Json& line) {
  return line["event"] == "picture" && line.contains("file") && line["file"].is_string();
}

PictureCounts CountPictures(const ReportSource& source) {
  PictureCounts counts;
  std::size_t total = 0;
  LineReader lines(source.lines);
  while (const std::optional<Json> line = lines.Next())
    if (IsPicture(*line) && ++total <= kMostPictures) ++counts[(*line)["camera"].get<std::string>()];
  return counts;
}

/// "data:image/jpeg;base64,…"; empty where there is nothing to show.
std::string DataAddress(const std::filesystem::path& folder, const std::string& file) {
  // A name and not a path, because the lines come from a file.
  if (file != SafeFileName(file, file.size())) return {};
  const auto bytes = ReadPictureFile(folder / PathFromUtf8(file));
  if (!bytes) return {};
  const std::vector<std::uint8_t> jpeg = ShowablePicture(*bytes, kPictureInReport);
  if (jpeg.empty()) return {};
  std::string text(Kestrel::Base64EncodedLength(jpeg.size()), '\0');
  Kestrel::Base64EncodeTo(jpeg.data(), jpeg.size(), text.data());
  std::erase_if(text, [](char c) { return c == '\r' || c == '\n'; });
  return "data:image/jpeg;base64," + text;
}

void MaskPassword(Json& line) {
  const auto camera = line.find("camera");
  if (camera == line.end() || !camera->is_object()) return;
  const auto password = camera->find("password");
  if (password != camera->end() && !password->is_null()) *password = ShownPassword({}, false);
}

/// JSON for the inside of a script element: "<" stands only in texts, where an escape means the same.
std::string EmbeddedLine(const Json& line) {
  std::string escaped;
  for (const char c : JsonLine(line)) c == '<' ? escaped += "\\u003c" : escaped += c;
  return escaped;
}

ReportCounts WriteLines(const ReportSource& source, std::ostream& html) {
  const PictureCounts counts = CountPictures(source);
  const std::size_t ofEach = std::max<std::size_t>(1, kUsualPictures / std::max<std::size_t>(1, counts.size()));
  PictureCounts seen;
  ReportCounts written;
  LineReader lines(source.lines);
  while (std::optional<Json> line = lines.Next()) {
    MaskPassword(*line);
    line->erase("data");
    if (IsPicture(*line)) {
      const auto camera = counts.find((*line)["camera"].get<std::string>());
      const bool chosen = camera != counts.end() && ++seen[camera->first] + ofEach > camera->second;
      if (const std::string data =
              chosen && source.pictures ? DataAddress(*source.pictures, (*line)["file"].get<std::string>()) : "";
          !data.empty()) {
        (*line)["data"] = data;
        ++written.pictures;
      }
    }
    html << EmbeddedLine(*line);
    ++written.lines;
  }
  return written;
}

/// Writes the page; the caller writes other text in place of some of its lines.
class Template {
 public:
  Template(std::string_view text, std::ostream& html) : rest_(text), html_(html) {}
  /// Writes the page up to that line, which itself is left out.
  void WriteUpTo(const std::string& line) {
    const std::size_t place = rest_.find('\n' + line + '\n') + 1;
    html_ << rest_.substr(0, place);
    rest_.remove_prefix(place + line.size() + 1);
  }
  void WriteRest() { html_ << rest_; }

 private:
  std::string_view rest_;
  std::ostream& html_;
};

std::string Policy() {
  std::string scripts;
  for (const PageFile& script : kPageScripts) scripts += fmt::format(" 'sha256-{}'", script.sha256);
  return fmt::format(
      "default-src 'none'; script-src{}; style-src 'sha256-{}'; img-src data:; base-uri 'none'; form-action 'none'",
      scripts, kPageStyle.sha256);
}

}  // namespace

ReportCounts WriteReport(const ReportSource& source, std::ostream& html) {
  Template page(kPageHtml.text, html);
  page.WriteUpTo("<link rel=\"stylesheet\" href=\"page.css\">");
  html << "<meta http-equiv=\"Content-Security-Policy\" content=\"" << Policy() << "\">\n<style>" << kPageStyle.text
       << "</style>\n";
  page.WriteUpTo("<!-- lines -->");
  html << "<script type=\"application/x-ndjson\" id=\"lines\">\n";
  const ReportCounts written = WriteLines(source, html);
  html << "</script>\n";
  for (const PageFile& script : kPageScripts) {
    page.WriteUpTo(fmt::format("<script src=\"{}\" defer></script>", script.name));
    html << "<script>" << script.text << "</script>\n";
  }
  page.WriteRest();
  return written;
}

}  // namespace tarnfind
