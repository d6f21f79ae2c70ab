#pragma once

#include <memory>
#include <string>
#include <vector>

#include <tools/State.hpp>

namespace lumo {

/// Another dynamics library that was given our robot.
class Peer {
 public:
  virtual ~Peer() = default;

  virtual std::string version() const = 0;
  /// Whether the root moves. If not, it stays at the world's origin, and states that are asked about keep it there.
  virtual bool floats() const = 0;

  virtual double mass() const = 0;
  /// Centre of mass of the whole robot in the world (m).
  virtual Eigen::Vector3d com(const State& x) = 0;
  /// The 15 joint torques of inverse dynamics under gravity (N m).
  virtual Eigen::VectorXd torques(const State& x) = 0;

  /// Adds a row for each of our operations that the library has, each named NAME/OPERATION. The peer outlives them.
  virtual void addRows(const std::string& name) = 0;
};

/// What was compiled in. The source of each peer adds itself before main.
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
