// What the page calls: the robot of the plug-in with the state and the report of the inspector.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <Eigen/Geometry>
#include <emscripten/bind.h>
#include <nlohmann/json.hpp>

#include <service/RigidBodySystem.hpp>
#include <tools/digest.hpp>
#include <tools/inspect/Report.hpp>
#include <tools/inspect/State.hpp>
#include <tools/inspect/toJson.hpp>
#include <tools/limbs.hpp>
#include <tools/toFloats.hpp>

extern "C" lumo::RigidBodySystem* create();

namespace {

using Eigen::Vector3f;
using emscripten::val;

std::vector<float> numbers(const val& array) { return emscripten::convertJSArrayToNumberVector<float>(array); }

template <class Values>
val toArray(const Values& values) {
  return val::array(values.begin(), values.end());
}

/// The robot at rest. A state is an array of 21 numbers: the root's x, y, z (m), roll, pitch, yaw (rad), and the joint
/// angles (rad). A load is an array of eight: a body, the wrench on it in its frame (N, N m), and the base, which is
/// the body that is fixed in the world.
class Robot {
 public:
  /// Computes everything. Returns the inspector's report as JSON.
  std::string report(const val& state, const val& load) {
    set(numbers(state).data(), numbers(load));
    return toJson(lumo::inspect::computeReport(*robot_));
  }

  /// The wrench on the base in the last state, in the frame of the base.
  val baseWrench() const { return toArray(baseWrench_); }

  /// The torques and the centre of mass in many states: 18 numbers for each.
  val curves(const val& states, const val& load) {
    const std::vector<float> all = numbers(states), loads = numbers(load);
    std::vector<float> results;
    for (std::size_t i = 0; i < all.size(); i += 21) {
      set(all.data() + i, loads);
      robot_->computeInverseDynamics();
      const auto torques = robot_->getJointAnglesTorque();
      const auto com = lumo::toFloats(robot_->getComPosition());
      results.insert(results.end(), torques.begin(), torques.end());
      results.insert(results.end(), com.begin(), com.end());
    }
    return toArray(results);
  }

  /// What does not depend on the state, as JSON: the limbs; for each body its limb and the radius of its ball; the ends
  /// of the links; the pose `greeting` of the inspector.
  std::string model() const {
    nlohmann::json model;
    const auto parents = robot_->getParentsVector();
    const auto limbOf = lumo::limbOfBodies(parents);
    for (const lumo::Limb& limb : lumo::limbs) model["limbs"].push_back({{"name", limb.name}, {"colour", limb.colour}});
    for (std::size_t b = 0; b < parents.size(); ++b) {
      const double radius = lumo::ballRadius(static_cast<double>(robot_->getMass(b)));
      model["bodies"].push_back({{"limb", limbOf[b]}, {"radius", radius}});
    }
    for (const lumo::Link& link : lumo::linksOf(parents)) model["links"].push_back({link.body, link.end});
    const std::unique_ptr<lumo::RigidBodySystem> greeting(create());
    setState(lumo::inspect::greeting(), *greeting);
    model["greeting"] = lumo::inspect::greeting().root;
    for (const float angle : greeting->getJointAnglesPos()) model["greeting"].push_back(angle);
    return model.dump();
  }

  /// The hashes of all results in many states. This replaces the masses, so the page must be loaded again.
  std::string digest(int states) { return lumo::digest(*robot_, static_cast<std::uint64_t>(states), 1.0F); }

 private:
  /// Sets a state with a load, and computes the poses. A wrench on the base balances the weight and the wrench of the
  /// load. It is left out if the base is the root, because it would not change a joint torque.
  void set(const float* state, const std::vector<float>& load) {
    const OX::Math::Position6D root(state[0], state[1], state[2], state[3], state[4], state[5]);
    robot_->setRootPose(OX::Math::transformFromPosition6D(root));
    robot_->setJointAnglesPos(Eigen::ArrayXf::Map(state + 6, 15));
    robot_->computeFwdKinematics();

    const auto body = static_cast<std::size_t>(load[0]), base = static_cast<std::size_t>(load[7]);
    const std::vector<float> wrench(load.begin() + 1, load.begin() + 7), none(6);
    for (std::size_t b = 0; b < robot_->getNbBodies(); ++b) robot_->setExternalWrench(b, b == body ? wrench : none);
    baseWrench_ = base == body ? wrench : none;
    if (base == 0) return;

    // The force and the torque of the weight and of the load, in world axes about the origin of the base.
    const Eigen::Matrix<float, 3, 4> loaded = lumo::toMatrix(robot_->getPose(body));
    const Eigen::Matrix<float, 3, 4> fixed = lumo::toMatrix(robot_->getPose(base));
    const Vector3f com = lumo::toMatrix(robot_->getComPosition()), weight(0, 0, -9.81F * robot_->getMass());
    const Vector3f f = loaded.leftCols<3>() * Vector3f(wrench.data());
    const Vector3f t = loaded.leftCols<3>() * Vector3f(wrench.data() + 3);
    const Vector3f torque = (com - fixed.col(3)).cross(weight) + (loaded.col(3) - fixed.col(3)).cross(f) + t;
    Vector3f::Map(baseWrench_.data()) -= fixed.leftCols<3>().transpose() * (weight + f);
    Vector3f::Map(baseWrench_.data() + 3) -= fixed.leftCols<3>().transpose() * torque;
    robot_->setExternalWrench(base, baseWrench_);
  }

  std::unique_ptr<lumo::RigidBodySystem> robot_{create()};
  std::vector<float> baseWrench_;
};

}  // namespace

EMSCRIPTEN_BINDINGS(lumo) {
  emscripten::class_<Robot>("Robot")
      .constructor()
      .function("report", &Robot::report)
      .function("baseWrench", &Robot::baseWrench)
      .function("curves", &Robot::curves)
      .function("model", &Robot::model)
      .function("digest", &Robot::digest);
}
