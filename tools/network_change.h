/// A change of one camera's network settings: what it makes of the camera, and what speaks against it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/camera_snapshot.h"

namespace tarnfind {

/// What is not given stays as the camera has it. Texts are checked and in their standard form.
struct NetworkChange {
  std::string mac;
  std::optional<std::string> ip;
  std::optional<std::string> mask;
  std::optional<std::string> gateway;
  std::optional<bool> dhcp;
  std::optional<std::string> user;
  std::optional<std::string> password;

  bool IsEmpty() const { return !ip && !mask && !gateway && !dhcp && !user && !password; }
};

/// What is wrong with the change whatever the camera is; empty where nothing is.
std::string Contradiction(const NetworkChange& change);

/// The camera with the change made.
CameraSnapshot Changed(const CameraSnapshot& camera, const NetworkChange& change);

struct Objection {
  std::string text;
  bool mayBeForced = false;  ///< a network may want it all the same
};
/// What speaks against the change. listed: all cameras that the server knows.
std::vector<Objection> Objections(const CameraSnapshot& camera, const NetworkChange& change,
                                  const std::vector<CameraSnapshot>& listed);

struct Difference {
  const char* label;
  std::string before;
  std::string after;
};
/// Settings that differ, ready for a terminal. Passwords are hidden unless `showPasswords`.
std::vector<Difference> Differences(const CameraSnapshot& before, const CameraSnapshot& after, bool showPasswords);
/// Settings in which the camera as it is listed differs from what was sent, as far as it can be read back: a password
/// cannot, and with DHCP the address is not ours to choose.
std::vector<Difference> Unapplied(const CameraSnapshot& sent, const CameraSnapshot& listed);
/// "IP 10.0.0.1 -> 10.0.0.7, DHCP yes -> no"
std::string JoinedDifferences(const std::vector<Difference>& differences);

}  // namespace tarnfind
