#include "tools/event_program.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <vector>

#include "tools/platform.h"

namespace tarnfind {

namespace {

/// TARN_SUBNET_MASK of "subnetMask".
std::string VariableName(const std::string& key) {
  std::string name = "TARN_";
  for (const char c : key) {
    if (c >= 'A' && c <= 'Z') name += '_';
    name += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  }
  return name;
}

/// NULs end the text, because an environment cannot hold them.
std::string ValueOf(const Json& value) {
  const std::string text = value.is_string() ? value.get<std::string>() : value.is_null() ? "" : value.dump();
  return text.substr(0, text.find('\0'));
}

bool HasVariable(const std::vector<std::string>& variables, const std::string& nameAndEquals) {
  return std::any_of(variables.begin(), variables.end(), [&](const auto& v) { return v.starts_with(nameAndEquals); });
}

/// The first of two members of one name counts: it is the event's own.
void AddVariables(const Json& object, std::vector<std::string>& variables) {
  for (const auto& [key, value] : object.items()) {
    if (value.is_object())
      AddVariables(value, variables);
    else if (const std::string name = VariableName(key) + '='; !HasVariable(variables, name))
      variables.push_back(name + ValueOf(value));
  }
}

}  // namespace

void EventProgram::Run(const Json& event) {
  if (program_.empty()) return;
  std::vector<std::string> variables;
  AddVariables(event, variables);
  const platform::ProgramResult result = platform::RunProgram(program_, variables, JsonLine(event));
  if (!result.error.empty())
    error_ = fmt::format("cannot run \"{}\": {}", std::exchange(program_, {}), result.error);
  else if (!error_.empty())
    return;
  else if (result.exitCode != 0)
    error_ = fmt::format("\"{}\" ended with {}", program_, result.exitCode);
  else
    return;
  platform::Write(platform::Stream::kError, fmt::format("tarnfind: {}\n", error_));
}

}  // namespace tarnfind
