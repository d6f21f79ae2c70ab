#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <fmt/format.h>
#include <mujoco/mujoco.h>

#include <benchmarks/Peer.hpp>
#include <benchmarks/addRow.hpp>
#include <kinetra/minus_g.hpp>
#include <tools/reference/BodyData.hpp>

namespace {

using reference::BodyData;

template <typename Vector>
std::string list(const Vector& values) {
  return fmt::format("{:.17g}", fmt::join(values.data(), values.data() + values.size(), " "));
}

/// Returns an inertia that a real body can have, in which no principal moment exceeds the sum of the two others. MuJoCo
/// requires this. Most bodies of the robot are nearly point masses, so their moments about the centre of mass are
/// mostly rounding errors. The smallest sufficient amount, at most 5e-8 kg m^2, is added to all three moments.
Eigen::Matrix3d madeReal(const Eigen::Matrix3d& inertia) {
  const Eigen::Vector3d moments = Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(inertia).eigenvalues();
  const double missing = std::max(0.0, moments[2] - moments[1] - moments[0]);
  return inertia + (missing + 1e-12) * Eigen::Matrix3d::Identity();
}

/// The MJCF text of a body and of all its descendants.
std::string bodyXml(const std::vector<BodyData>& bodies, std::size_t id) {
  const BodyData& body = bodies[id];
  const Eigen::Quaterniond turn(body.R);
  const Eigen::Matrix3d I = madeReal(body.inertia);
  std::string xml =
      fmt::format(R"(<body name="{}" pos="{}" quat="{}">{}<inertial pos="{}" mass="{:.17g}" fullinertia="{}"/>)",
                  body.name, list(body.r), list(std::array{turn.w(), turn.x(), turn.y(), turn.z()}),
                  body.parent < 0 ? "<freejoint/>" : R"(<joint type="hinge" axis="0 0 1"/>)", list(body.com), body.mass,
                  list(std::array{I(0, 0), I(1, 1), I(2, 2), I(0, 1), I(0, 2), I(1, 2)}));
  for (std::size_t child = id + 1; child < bodies.size(); ++child) {
    if (bodies[child].parent == static_cast<int>(id)) xml += bodyXml(bodies, child);
  }
  return xml + "</body>";
}

struct Deleter {
  void operator()(mjVFS* files) const {
    mj_deleteVFS(files);
    delete files;
  }
  void operator()(mjModel* model) const { mj_deleteModel(model); }
  void operator()(mjData* data) const { mj_deleteData(data); }
};

std::unique_ptr<mjModel, Deleter> load(const std::string& xml) {
  const char* name = "norvaX3.xml";
  const std::unique_ptr<mjVFS, Deleter> files(new mjVFS);
  mj_defaultVFS(files.get());
  if (mj_makeEmptyFileVFS(files.get(), name, static_cast<int>(xml.size())) != 0) {
    throw std::runtime_error("MuJoCo cannot store the text of the model");
  }
  std::memcpy(files->filedata[0], xml.data(), xml.size());
  std::array<char, 1000> error{};
  std::unique_ptr<mjModel, Deleter> model(mj_loadXML(name, files.get(), error.data(), static_cast<int>(error.size())));
  if (!model) {
    std::string text = error.data();
    std::replace(text.begin(), text.end(), '\n', ' ');
    throw std::runtime_error("MuJoCo rejects the model: " + text);
  }
  return model;
}

/// MuJoCo has a floating base and needs the kinematics before any other computation. Its mass matrix is sparse: each
/// row holds only the coordinates between the body and the root.
class MuJoCo : public lumo::Peer {
 public:
  MuJoCo() {
    const Eigen::Vector3d g = -kinetra::minus_g.linear().cast<double>();
    model_ = load(
        fmt::format(R"(<mujoco><compiler angle="radian" inertiafromgeom="false" balanceinertia="false" boundmass="0" )"
                    R"(boundinertia="0"/><option gravity="{}"><flag contact="disable"/></option>)"
                    R"(<worldbody>{}</worldbody></mujoco>)",
                    list(g), bodyXml(reference::readBodies(), 0)));
    data_.reset(mj_makeData(model_.get()));
    for (const lumo::RandomState& x : lumo::states()) inputs_.emplace_back(x);
  }

  std::string name() const override { return "MuJoCo"; }
  std::string version() const override { return mj_versionString(); }
  bool floats() const override { return true; }
  double mass() const override { return model_->body_subtreemass[1]; }
  Eigen::Vector3d com(const lumo::RandomState& x) override {
    computeFwdKinematics(Inputs(x));
    return Eigen::Vector3d::Map(data_->subtree_com + 3);
  }
  Eigen::VectorXd torques(const lumo::RandomState& x) override {
    computeInverseDynamics(Inputs(x));
    return Eigen::VectorXd(forces_.tail<15>());
  }

  void addRows() override {
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
  /// A state as MuJoCo represents it: the root's linear velocity is in world axes, its angular velocity in body axes,
  /// and its acceleration is the derivative of these.
  struct Inputs {
    explicit Inputs(const lumo::RandomState& x) {
      const Eigen::Array<double, 21, 1> q = x.q.cast<double>();
      const Eigen::Matrix3d R =
          (Eigen::AngleAxisd(q[5], Eigen::Vector3d::UnitZ()) * Eigen::AngleAxisd(q[4], Eigen::Vector3d::UnitY()) *
           Eigen::AngleAxisd(q[3], Eigen::Vector3d::UnitX()))
              .toRotationMatrix();
      const Eigen::Quaterniond turn(R);
      qpos << q.head<3>().matrix(), turn.w(), turn.vec(), q.tail<15>().matrix();
      qvel = x.dq.cast<double>();
      qacc = x.ddq.cast<double>();
      const Eigen::Vector3d v = qvel.head<3>();
      const Eigen::Vector3d w = qvel.segment<3>(3);
      qvel.head<3>() = R * v;
      qacc.head<3>() = R * (qacc.head<3>() + w.cross(v));
    }
    Eigen::Matrix<double, 22, 1> qpos;
    Eigen::Matrix<double, 21, 1> qvel, qacc;
  };

  /// The fewest calls that compute poses, centre of mass and joint axes.
  void computeFwdKinematics(const Inputs& x) {
    std::memcpy(data_->qpos, x.qpos.data(), sizeof x.qpos);
    mj_kinematics(model_.get(), data_.get());
    mj_comPos(model_.get(), data_.get());
  }
  /// The fewest calls that compute the torques; mj_inverse computes much more.
  void computeInverseDynamics(const Inputs& x) {
    std::memcpy(data_->qvel, x.qvel.data(), sizeof x.qvel);
    std::memcpy(data_->qacc, x.qacc.data(), sizeof x.qacc);
    computeFwdKinematics(x);
    mj_comVel(model_.get(), data_.get());
    mj_rne(model_.get(), data_.get(), 1, forces_.data());
  }

  template <typename Work>
  void add(const std::string& operation, Work work) {
    lumo::addRow(name() + "/" + operation, [this, work] {
      computeFwdKinematics(inputs_[0]);
      return work;
    });
  }

  std::unique_ptr<mjModel, Deleter> model_;
  std::unique_ptr<mjData, Deleter> data_;
  std::vector<Inputs> inputs_;
  Eigen::Matrix<double, 21, 1> forces_;
};

}  // namespace

std::unique_ptr<lumo::Peer> lumo::makeMuJoCo() { return std::make_unique<MuJoCo>(); }
