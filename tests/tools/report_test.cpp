#include "tools/page/report.h"

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tools/failure.h"
#include "tools/json_objects.h"
#include "tools/page/page_files.h"
#include "tools/text.h"

namespace tarnfind {
namespace {

class Report : public testing::Test {
 protected:
  Report() {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
  }
  ~Report() override { std::filesystem::remove_all(folder_); }

  std::string Of(const std::string& lines, bool pictures = false) {
    std::ofstream(folder_ / "lines", std::ios::binary) << lines;
    std::ostringstream html;
    std::optional<std::filesystem::path> pictureFolder;
    if (pictures) pictureFolder = folder_;
    WriteReport({Utf8FromUtf16((folder_ / "lines").u16string()), pictureFolder}, html);
    return html.str();
  }
  std::string ErrorOf(const std::string& lines) {
    try {
      Of(lines);
      return {};
    } catch (const WrongUse& error) {
      const std::string text = error.what();
      return text.substr(text.find(": ") + 2);
    }
  }
  /// The lines inside the report.
  static std::vector<Json> Lines(const std::string& html) {
    const std::string begin = "<script type=\"application/x-ndjson\" id=\"lines\">\n";
    const std::size_t start = html.find(begin) + begin.size();
    std::istringstream text(html.substr(start, html.find("</script>", start) - start));
    std::vector<Json> lines;
    for (std::string line; std::getline(text, line);) lines.push_back(Json::parse(line));
    return lines;
  }

  const std::filesystem::path folder_ = std::filesystem::path(testing::TempDir()) / "tarnfind-report";
};

TEST_F(Report, HoldsWhatALineSaysAsTextAlone) {
  const std::string name = "</script><!--<script>alert(1)\xE2\x80\xA8'\"&";
  const Json camera = {{"event", "camera"}, {"camera", {{"mac", "A"}, {"model", name}, {"password", "hunter2"}}}};
  const Json unset = {{"event", "camera"}, {"camera", {{"mac", "B"}, {"password", nullptr}}}};
  const std::string html = Of(camera.dump() + "\n\r\n" + unset.dump());
  EXPECT_EQ(html.find("hunter2"), std::string::npos);
  EXPECT_EQ(html.find("alert(1)\xE2"), std::string::npos) << "U+2028 is escaped";
  EXPECT_EQ(html.find("<script>alert"), std::string::npos);
  const std::vector<Json> lines = Lines(html);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0]["camera"]["model"], name);
  EXPECT_EQ(lines[0]["camera"]["password"], "********");
  EXPECT_TRUE(lines[1]["camera"]["password"].is_null());
  for (const PageFile& script : kPageScripts) {
    EXPECT_NE(html.find("<script>" + std::string(script.text) + "</script>"), std::string::npos);
    EXPECT_NE(html.find("'sha256-" + std::string(script.sha256) + "'"), std::string::npos);
  }
  EXPECT_EQ(html.find("src=\"page.js\""), std::string::npos);
}

TEST_F(Report, RefusesWhatIsNoLineOfASearch) {
  const std::string good = "{\"event\":\"problem\",\"text\":\"x\"}\n";
  const std::pair<std::string, std::string> rows[] = {
      {good, ""},
      {good + "{\"event\":\"problem\"", "line 2 is no JSON object"},
      {good + "\n[1]", "line 3 is no JSON object"},
      {"\xFF", "line 1 is no JSON object"},
      {"{\"event\":\"problem\",\"text\":" + std::string(100000, '['), "line 1 is no JSON object"},
      {"{\"event\":\"set-network\",\"mac\":\"A\"}", "line 1 is no line of a search"},
      {"{}", "line 1 is no line of a search"},
      {"{\"event\":7}", "line 1 is no line of a search"},
      {"{\"event\":\"camera\",\"camera\":\"A\"}", "line 1 has no \"camera\""},
      {"{\"event\":\"picture\",\"file\":\"x\"}", "line 1 has no \"camera\""},
      {good + std::string(5 << 20, ' '), "line 2 is too long"},
  };
  for (const auto& [lines, error] : rows) EXPECT_EQ(ErrorOf(lines), error) << lines.substr(0, 60);
}

TEST_F(Report, TakesPicturesFromTheFolderAlone) {
  // A bitmap of one pixel.
  const std::string bmp =
      std::string("BM\x3A\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\1\0\0\0\1\0\0\0\1\0\x18\0\0\0\0\0\4\0\0\0", 38) +
      std::string(20, '\x7F');
  std::ofstream(folder_ / "a.bmp", std::ios::binary) << bmp.substr(0, 38) + std::string(16, '\0') + "\1\2\3\4";
  std::ofstream(folder_ / "broken.bmp", std::ios::binary) << "BM";
  std::filesystem::create_directory(folder_ / "below");
  std::filesystem::copy_file(folder_ / "a.bmp", folder_ / "below" / "a.bmp");
  const std::string longName = std::string(130, 'a') + ".bmp";
  std::filesystem::copy_file(folder_ / "a.bmp", folder_ / longName);
  const std::pair<std::string, bool> rows[] = {
      {"a.bmp", true},        {longName, true},       {"broken.bmp", false},
      {"missing.bmp", false}, {"below/a.bmp", false}, {"../tarnfind-report/a.bmp", false},
  };
  std::string lines;
  for (const auto& [file, inside] : rows)
    lines += Json({{"event", "picture"}, {"camera", file}, {"file", file}, {"data", "data:text/html,x"}}).dump() + '\n';
  const std::vector<Json> with = Lines(Of(lines, true)), without = Lines(Of(lines));
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(with[i].value("data", "").starts_with("data:image/jpeg;base64,/9j/"), rows[i].second) << rows[i].first;
    EXPECT_FALSE(without[i].contains("data"));
  }

  lines.clear();
  for (int i = 0; i < 502; ++i)
    lines += Json({{"event", "picture"}, {"camera", i == 0 ? "one" : "many"}, {"file", "a.bmp"}}).dump() + '\n';
  const std::vector<Json> many = Lines(Of(lines, true));
  EXPECT_TRUE(many[0].contains("data"));
  EXPECT_FALSE(many[251].contains("data")) << "250 of each of two cameras";
  EXPECT_TRUE(many[252].contains("data"));
}

}  // namespace
}  // namespace tarnfind
