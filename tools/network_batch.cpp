#include "tools/network_batch.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <unordered_set>

#include "tools/arguments.h"
#include "tools/csv.h"
#include "tools/failure.h"
#include "tools/replaced_file.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

/// Far above what anybody writes, so that a wrong file does not fill the memory.
constexpr std::size_t kLargestFile = 16 << 20;

std::string TakeMac(std::string text, NetworkChange& change) {
  const std::string wrong = NormaliseMac(text);
  change.mac = text;
  return wrong;
}

template <std::optional<std::string> NetworkChange::*kMember, auto kCheck>
std::string Take(std::string text, NetworkChange& change) {
  const std::string wrong = kCheck(text);
  if (wrong.empty()) change.*kMember = std::move(text);
  return wrong;
}

std::string TakeDhcp(std::string text, NetworkChange& change) {
  change.dhcp = text == "yes";
  return text == "yes" || text == "no" ? "" : fmt::format("\"{}\" is neither yes nor no", Printable(text));
}

struct BatchColumn {
  const char* name;
  std::string (*take)(std::string text, NetworkChange& change);  ///< tells what is wrong
};
constexpr BatchColumn kColumns[] = {
    {"mac", TakeMac},
    {"ip", Take<&NetworkChange::ip, CheckIpAddress>},
    {"mask", Take<&NetworkChange::mask, CheckSubnetMask>},
    {"gateway", Take<&NetworkChange::gateway, CheckIpAddress>},
    {"dhcp", TakeDhcp},
    {"user", Take<&NetworkChange::user, CheckText>},
    {"password", Take<&NetworkChange::password, CheckText>},
};

std::string ColumnNames() {
  std::string names;
  for (const BatchColumn& column : kColumns) names += fmt::format("{}{}", names.empty() ? "" : ", ", column.name);
  return names;
}

/// Reads the file line by line; every mistake names its place.
class BatchReader {
 public:
  explicit BatchReader(std::string file) : file_(std::move(file)), stream_(ReadTextFile(file_)) {}

  NetworkBatch Read() {
    NetworkBatch batch;
    if (!NextLine()) Fail("is empty; the first line names the columns: " + ColumnNames());
    batch.header = line_;
    const std::vector<const BatchColumn*> columns = ReadHeader();
    while (NextLine()) {
      if (line_.empty()) continue;
      batch.changes.push_back(ReadChange(columns));
      batch.lines.push_back(line_);
    }
    if (batch.changes.empty()) Fail("names no camera");
    return batch;
  }

 private:
  bool NextLine() {
    if (!std::getline(stream_, line_)) return false;
    if (line_.ends_with('\r')) line_.pop_back();
    ++number_;
    return true;
  }
  std::vector<const BatchColumn*> ReadHeader() {
    std::vector<const BatchColumn*> columns;
    for (const std::string& name : Fields()) {
      const auto* const column =
          std::find_if(std::begin(kColumns), std::end(kColumns), [&](const BatchColumn& c) { return c.name == name; });
      if (column == std::end(kColumns))
        Fail(fmt::format("there is no column \"{}\"; columns are {}", Printable(name), ColumnNames()));
      if (std::find(columns.begin(), columns.end(), column) != columns.end())
        Fail(fmt::format("the column {} stands there twice", name));
      columns.push_back(column);
    }
    if (std::find(columns.begin(), columns.end(), &kColumns[0]) == columns.end()) Fail("the column mac is missing");
    return columns;
  }
  NetworkChange ReadChange(const std::vector<const BatchColumn*>& columns) {
    const std::vector<std::string> fields = Fields();
    if (fields.size() != columns.size())
      Fail(fmt::format("has {} where the header has {}", Counted(fields.size(), "field"), columns.size()));
    NetworkChange change;
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (fields[i].empty()) continue;
      if (const std::string wrong = columns[i]->take(fields[i], change); !wrong.empty())
        Fail(fmt::format("{}: {}", columns[i]->name, wrong));
    }
    if (change.mac.empty()) Fail("mac: is missing");
    if (!macs_.insert(change.mac).second) Fail(fmt::format("{} stands there twice", change.mac));
    if (const std::string wrong = Contradiction(change); !wrong.empty()) Fail(wrong);
    return change;
  }
  std::vector<std::string> Fields() const {
    try {
      return ParseCsvLine(line_);
    } catch (const WrongUse& error) {
      Fail(error.what());
    }
  }
  [[noreturn]] void Fail(const std::string& what) const {
    throw WrongUse(fmt::format("{}:{}: {}", file_, std::max<std::size_t>(number_, 1), what));
  }

  std::string file_;
  std::istringstream stream_;
  std::string line_;
  std::size_t number_ = 0;
  std::unordered_set<std::string> macs_;
};

}  // namespace

NetworkBatch ReadNetworkBatch(const std::string& file) {
  return BatchReader(file).Read();
}

void WriteRemaining(const NetworkBatch& batch, const std::vector<std::size_t>& indices, const std::string& file) {
  ReplacedFile written(file);  // the lines may have come from this very file
  written.Stream() << batch.header << '\n';
  for (const std::size_t index : indices) written.Stream() << batch.lines[index] << '\n';
  written.Finish();
}

std::string ReadTextFile(const std::string& file) {
  std::ifstream opened;
  if (file != "-") opened.open(PathFromUtf8(file), std::ios::binary);
  std::istream& stream = file == "-" ? std::cin : opened;
  std::string text;
  for (std::array<char, 4096> part; stream.good() && text.size() <= kLargestFile;) {
    stream.read(part.data(), part.size());
    text.append(part.data(), static_cast<std::size_t>(stream.gcount()));
  }
  if (stream.bad() || (file != "-" && !opened.is_open())) throw WrongUse(fmt::format("cannot read \"{}\"", file));
  if (text.size() > kLargestFile) throw WrongUse(fmt::format("\"{}\" is too large", file));
  if (!IsValidUtf8(text)) throw WrongUse(fmt::format("\"{}\" is no valid UTF-8", file));
  if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
  return text;
}

}  // namespace tarnfind
