#pragma once

#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <Eigen/Geometry>
#include <mujoco/mujoco.h>

#include <benchmarks/addRow.hpp>

namespace lumo {

/// The robot in MuJoCo, which has a floating base. MuJoCo needs the kinematics before any other computation. Its mass
/// matrix is sparse: each row holds only the coordinates between the body and the root.
class MuJoCo {
 public:
  static constexpr const char* name = "MuJoCo";
  static constexpr bool floats = true;
  static std::string version() { return mj_versionString(); }

  explicit MuJoCo(const char* file) {
    char error[1000] = "";
    model_.reset(mj_loadXML(file, nullptr, error, sizeof error));
    if (!model_) throw std::runtime_error("MuJoCo rejects the model: " + std::string(error));
    model_->ngeom = 0;  // the poses of the shapes would take time
    data_.reset(mj_makeData(model_.get()));
  }

  /// Mass, centre of mass, mass matrix and joint torques in the plug-in's coordinates.
  std::array<Eigen::MatrixXd, 4> results(const RandomState& x) {
    const Inputs inputs(x);
    computeInverseDynamics(inputs);
    mj_crb(model_.get(), data_.get());
    Matrix21 H, T = Matrix21::Identity();  // qvel = T dq
    T.topLeftCorner<3, 3>() = inputs.R;
    mj_fullM(model_.get(), H.data(), data_->qM);
    Vector21 applied = Vector21::Zero();  // the generalized forces of the wrenches, which mj_rne ignores
    for (int b = 1; b < model_->nbody; ++b) {
      const Eigen::Matrix<float, 6, 1> wrench(x.wrenches[static_cast<std::size_t>(b - 1)].data());
      const Eigen::Matrix3d R = Eigen::Matrix3d::Map(data_->xmat + 9 * b).transpose();
      const Eigen::Vector3d force = R * wrench.head<3>().cast<double>(), torque = R * wrench.tail<3>().cast<double>();
      mj_applyFT(model_.get(), data_.get(), force.data(), torque.data(), data_->xpos + 3 * b, b, applied.data());
    }
    return {Eigen::MatrixXd::Constant(1, 1, model_->body_subtreemass[1]), Eigen::Vector3d(data_->subtree_com + 3),
            T.transpose() * H * T, (forces_ - applied).tail<15>()};
  }

  /// Adds a row for each operation of the plug-in that the library has too. This object must live as long as the rows.
  void addRows() {
    add("computeFwdKinematics", [this](std::size_t i) { computeFwdKinematics(inputs_[i]); });
    add("computeGeneralizedMass", [this](std::size_t) { mj_crb(model_.get(), data_.get()); });
    add("kinematicsAndMass", [this](std::size_t i) {
      computeFwdKinematics(inputs_[i]);
      mj_crb(model_.get(), data_.get());
    });
    add("computeInverseDynamics", [this](std::size_t i) { computeInverseDynamics(inputs_[i]); });
    add("controlCycle", [this](std::size_t i) {
      computeInverseDynamics(inputs_[i]);
      mj_crb(model_.get(), data_.get());
      for (int b = 1; b < model_->nbody; ++b) {
        benchmark::DoNotOptimize(Eigen::Vector3d(Eigen::Vector3d::Map(data_->xpos + 3 * b)));
        benchmark::DoNotOptimize(Eigen::Matrix3d(Eigen::Matrix3d::Map(data_->xmat + 9 * b)));
      }
      benchmark::DoNotOptimize(forces_);
    });
  }

 private:
  using Vector21 = Eigen::Matrix<double, 21, 1>;
  using Matrix21 = Eigen::Matrix<double, 21, 21>;

  /// A state as MuJoCo represents it: the root's linear velocity is in world axes, its angular velocity in body axes,
  /// and its acceleration is the derivative of these.
  struct Inputs {
    explicit Inputs(const RandomState& x) : qvel(x.dq.cast<double>()), qacc(x.ddq.cast<double>()) {
      const Vector21 q = x.q.cast<double>();
      const Eigen::Quaterniond turn = Eigen::AngleAxisd(q[5], Eigen::Vector3d::UnitZ()) *
                                      Eigen::AngleAxisd(q[4], Eigen::Vector3d::UnitY()) *
                                      Eigen::AngleAxisd(q[3], Eigen::Vector3d::UnitX());
      R = turn.toRotationMatrix();
      qpos << q.head<3>(), turn.w(), turn.vec(), q.tail<15>();
      const Eigen::Vector3d v = qvel.head<3>(), w = qvel.segment<3>(3), a = qacc.head<3>();
      qvel.head<3>() = R * v;
      qacc.head<3>() = R * (a + w.cross(v));
    }
    Eigen::Matrix3d R;  ///< the root's axes in the world
    Eigen::Matrix<double, 22, 1> qpos;
    Vector21 qvel, qacc;
  };

  /// The fewest calls that compute poses, centre of mass and joint axes.
  void computeFwdKinematics(const Inputs& x) {
    Eigen::Matrix<double, 22, 1>::Map(data_->qpos) = x.qpos;
    mj_kinematics(model_.get(), data_.get());
    mj_comPos(model_.get(), data_.get());
  }
  /// The fewest calls that compute the torques; mj_inverse computes much more.
  void computeInverseDynamics(const Inputs& x) {
    Vector21::Map(data_->qvel) = x.qvel;
    Vector21::Map(data_->qacc) = x.qacc;
    computeFwdKinematics(x);
    mj_comVel(model_.get(), data_.get());
    mj_rne(model_.get(), data_.get(), 1, forces_.data());
  }

  template <typename Work>
  void add(const std::string& operation, Work work) {
    addRow(std::string(name) + "/" + operation, [this, work] {
      computeFwdKinematics(inputs_[0]);
      return work;
    });
  }

  std::unique_ptr<mjModel, void (*)(mjModel*)> model_{nullptr, mj_deleteModel};
  std::unique_ptr<mjData, void (*)(mjData*)> data_{nullptr, mj_deleteData};
  const std::vector<Inputs> inputs_{states().begin(), states().end()};
  Vector21 forces_;
};

}  // namespace lumo
