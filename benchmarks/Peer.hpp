#pragma once

#include <memory>
#include <string>
#include <vector>

#include <tools/RandomState.hpp>

namespace lumo {

/// Another dynamics library, with a model of the robot.
class Peer {
 public:
  virtual ~Peer() = default;

  virtual std::string version() const = 0;
  /// Whether the library can move the root. If not, the root stays at the world's origin, and all states passed to the
  /// functions below must have it there.
  virtual bool floats() const = 0;

  virtual double mass() const = 0;
  /// Centre of mass of the whole robot in the world (m).
  virtual Eigen::Vector3d com(const RandomState& x) = 0;
  /// The 15 joint torques of inverse dynamics under gravity (N m).
  virtual Eigen::VectorXd torques(const RandomState& x) = 0;

  /// Adds a row for each operation of the plug-in that the library has too. The name of a row is NAME/OPERATION. The
  /// peer must live as long as the rows.
  virtual void addRows(const std::string& name) = 0;
};

/// A peer that was compiled into the program. The source file of each peer adds its own before main starts.
struct InstalledPeer {
  InstalledPeer(const char* name_, std::unique_ptr<Peer> (*make_)()) : name(name_), make(make_) {
    all().push_back(*this);
  }
  static std::vector<InstalledPeer>& all() {
    static std::vector<InstalledPeer> peers;
    return peers;
  }

  std::string name;
  std::unique_ptr<Peer> (*make)();
};

}  // namespace lumo
