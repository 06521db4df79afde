#include "tools/arguments.h"

#include <gtest/gtest.h>

#include "tools/command_line.h"
#include "tools/failure.h"

namespace tarnfind {
namespace {

std::string CheckMac(const std::string& text) {
  std::string normal = text;
  const std::string complaint = NormaliseMac(normal);
  EXPECT_TRUE(!complaint.empty() || normal == "00:40:8C:AB:CD:EF") << normal;
  return complaint;
}

TEST(Arguments, AreAcceptedOrRefused) {
  const struct {
    std::string (*check)(const std::string& text);
    std::vector<std::string> good, bad;
  } rows[] = {
      {CheckMac,
       {"00:40:8C:ab:cd:ef", "00-40-8c-AB-CD-EF", "0040.8cab.cdef", "00408cABcdef", "0:40:8c:ab:cd:ef"},
       {"", "00:40:8C:AB:CD", "00:40:8C:AB:CD:EF:", "00:40:8C:AB:CD:EG", "00:40:8C:AB:CD: F", "00.40.8C.AB.CD.EF",
        "00:40-8C:AB:CD:EF", "0040:8CAB:CDEF", "00408CABCDE", "00408CABCDEF0", "0:40::AB:CD:EF", "000:40:8C:AB:CD:EF",
        "40.8cab.cdef"}},
      {CheckIpAddress,
       {"0.0.0.0", "192.168.0.9", "255.255.255.255"},
       {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.04", "1.2.3.-4", "1.2.3.4 ", "1..3.4", "::1",
        "1.2.3.9999999999"}},
      {CheckSubnetMask,
       {"0.0.0.0", "128.0.0.0", "255.255.254.0", "255.255.255.255"},
       {"255.0.255.0", "0.0.0.255", "255.255.255", "255.255.253.0"}},
      {CheckSeconds, {"0", "0.25", "5", "86400"}, {"", "-1", "86401", "1e9", "nan", "inf", "5s", "0x10", "0,5"}},
  };
  for (const auto& row : rows) {
    for (const std::string& text : row.good) EXPECT_EQ(row.check(text), "") << text;
    for (const std::string& text : row.bad) EXPECT_NE(row.check(text), "") << text;
  }
}

CommandLine Parse(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "tarnfind");
  return ParseCommandLine(arguments);
}

TEST(CommandLine, TellsNothingGivenFromNothingAndTakesCommonOptionsAnywhere) {
  EXPECT_TRUE(Parse({"--json", "list"}).options.json);
  EXPECT_TRUE(Parse({"list", "--json"}).options.json);
  const Options options = Parse({"set-network", "00-40-8c-00-00-01", "--static", "--password", ""}).options;
  EXPECT_EQ(options.change.mac, "00:40:8C:00:00:01");
  EXPECT_EQ(options.change.dhcp, false);
  EXPECT_EQ(options.change.password, "");
  EXPECT_EQ(options.change.user, std::nullopt);
  EXPECT_EQ(Parse({"info", "00408c000001"}).options.mac, "00:40:8C:00:00:01");
  EXPECT_EQ(Parse({"info", "10.0.0.1"}).options.ip, "10.0.0.1");
}

TEST(CommandLine, WrongUseIsRefusedInOneLineWithoutAPassword) {
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"info", "\x1b[2J"},
       "ADDRESS: \"�[2J\" is neither an IPv4 address such as 192.168.0.9 nor a hardware address; see tarnfind info "
       "--help"},
      {{"list", "--sort", "modle"},
       "--sort: must be one of mac, ip, dhcp, vendor, model, firmware, plugin, type, first, last, events; "
       "see tarnfind list --help"},
      {{"list", "--filter", "modle=x"},
       "--filter: there is no column \"modle\"; columns are mac, ip, dhcp, vendor, model, firmware, plugin, type, "
       "first, "
       "last, events; see tarnfind list --help"},
      {{"--json", "search", "--sort", "ip"}, "--sort excludes --json; see tarnfind search --help"},
      {{"list", "--csv", "--json"}, "--csv excludes --json; see tarnfind list --help"},
      {{"set-network", "00:40:8C:00:00:01", "--type", "2"}, "--type: must be 1 or 4; see tarnfind set-network --help"},
      {{"set-network", "00:40:8C:00:00:01", "--dhcp", "--static"},
       "--dhcp excludes --static; see tarnfind set-network --help"},
      {{"set-network", "00:40:8C:00:00:01", "--password", "\xFF"},
       "--password: is no valid UTF-8; see tarnfind set-network --help"},
      {{"set-network", "00:40:8C:00:00:01", "--pasword", "secret"},
       "\"--pasword\" is not understood; did you mean --password; see tarnfind set-network --help"},
  };
  for (const auto& [arguments, complaint] : rows) {
    try {
      Parse(arguments);
      ADD_FAILURE() << "accepted instead of: " << complaint;
    } catch (const WrongUse& error) {
      EXPECT_EQ(error.what(), complaint);
    }
  }
}

}  // namespace
}  // namespace tarnfind
