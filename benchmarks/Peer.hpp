#pragma once

#include <memory>
#include <string>

#include <tools/RandomState.hpp>

namespace lumo {

/// Another dynamics library, with a model of the robot.
class Peer {
 public:
  virtual ~Peer() = default;

  virtual std::string name() const = 0;
  virtual std::string version() const = 0;
  /// Whether the library can move the root. If not, the root stays at the world's origin, and all states passed to the
  /// functions below must have it there.
  virtual bool floats() const = 0;

  virtual double mass() const = 0;
  /// Centre of mass of the whole robot in the world (m).
  virtual Eigen::Vector3d com(const RandomState& x) = 0;
  /// The 15 joint torques of inverse dynamics under gravity (N m).
  virtual Eigen::VectorXd torques(const RandomState& x) = 0;

  /// Adds a row for each operation of the plug-in that the library has too. The name of a row is name()/OPERATION. The
  /// peer must live as long as the rows.
  virtual void addRows() = 0;
};

std::unique_ptr<Peer> makeMuJoCo();
std::unique_ptr<Peer> makeOrocosKdl();

}  // namespace lumo
