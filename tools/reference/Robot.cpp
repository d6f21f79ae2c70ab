#include <tools/reference/Robot.hpp>

#include <Eigen/Geometry>

#include <tools/reference/BodyData.hpp>

namespace reference {

namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;

Matrix3d turn(double angle, const Vector3d& axis) { return Eigen::AngleAxisd(angle, axis).toRotationMatrix(); }

Matrix3d closed(Matrix3d R) {
  R.row(2) = R.row(0).cross(R.row(1));
  return R;
}

WithMagnitude pose(const Matrix3d& R, const Vector3d& p, double reach) {
  WithMagnitude result{Eigen::MatrixXd(3, 4), Eigen::MatrixXd::Ones(3, 4)};
  result.value << R, p;
  result.magnitude.col(3).setConstant(reach);
  return result;
}

}  // namespace

std::array<kinetra::Spatial::Force, 16> toForces(const std::vector<std::vector<float>>& wrenches) {
  std::array<kinetra::Spatial::Force, 16> forces;
  for (std::size_t i = 0; i < 16; ++i) {
    const float* wrench = wrenches[i].data();
    forces[i] = kinetra::Spatial::Force(Eigen::Vector3f(wrench + 3), Eigen::Vector3f(wrench));
  }
  return forces;
}

Robot::Robot(const Vector21f& q_, const Vector21f& dq_, const Vector21f& ddq_, const kinetra::Spatial::Force* fext)
    : torques_{Eigen::MatrixXd::Zero(21, 1), Eigen::MatrixXd::Zero(21, 1)} {
  const std::vector<BodyData> given = readBodies();
  const Eigen::Matrix<double, 21, 1> q = q_.cast<double>(), dq = dq_.cast<double>(), ddq = ddq_.cast<double>();
  const Vector3d x = Vector3d::UnitX(), y = Vector3d::UnitY(), z = Vector3d::UnitZ();
  const Matrix3d R0 = turn(q[5], z) * turn(q[4], y) * turn(q[3], x);
  for (int i = 0; i < 16; ++i) {
    const BodyData& data = given[static_cast<std::size_t>(i)];
    Body& b = bodies_[i];
    if (i == 0) {
      b.R = R0;
      b.p = q.head<3>();
      b.angular << Matrix3d::Zero(), R0, Eigen::Matrix<double, 3, 15>::Zero();
      b.turns << 0.0, 0.0, 0.0, 1.0, 1.0, 1.0, Eigen::Matrix<double, 1, 15>::Zero();
      b.w = R0 * dq.segment<3>(3);
      b.dw = R0 * ddq.segment<3>(3);
      b.a = R0 * ddq.head<3>() + b.w.cross(R0 * dq.head<3>());
    } else {
      const int d = 5 + i;
      const Body& parent = bodies_[data.parent];
      b = parent;
      b.R_root = closed(parent.R_root * data.R * turn(q[d], z));
      b.R = R0 * nearestRotation(b.R_root);
      b.p_root += parent.R_root * data.r;
      b.chain += data.r.norm();
      const Vector3d axis = b.R.col(2), link = parent.R * data.r;
      b.p += link;
      b.angular.col(d) = axis;
      b.turns[d] = 1.0;
      b.a += b.dw.cross(link) + b.w.cross(b.w.cross(link));
      b.dw += axis * ddq[d] + b.w.cross(axis) * dq[d];
      b.w += axis * dq[d];
    }

    const Vector3d& c = data.com;
    const Matrix3d& I = data.inertia;
    b.mass = data.mass;
    b.com = b.R * c;
    b.inertia = b.R * I * b.R.transpose();

    b.linear << R0, Eigen::Matrix<double, 3, 18>::Zero();
    b.arm << 1.0, 1.0, 1.0, Eigen::Matrix<double, 1, 18>::Zero();
    for (int d = 3; d < 21; ++d) {
      const Body& joint = bodies_[d < 6 ? 0 : d - 5];
      if (b.turns[d] == 0.0) continue;
      b.linear.col(d) = b.angular.col(d).cross(b.p + b.com - joint.p);
      b.arm[d] = b.chain - joint.chain + c.norm();
    }

    const Vector3d f = fext ? Vector3d(b.R * fext[i].force().cast<double>()) : Vector3d::Zero();
    const Vector3d n = fext ? Vector3d(b.R * fext[i].couple().cast<double>()) : Vector3d::Zero();
    const Vector3d weight = b.mass * static_cast<double>(9.81F) * z;
    const Vector3d force = b.mass * (b.a + b.dw.cross(b.com) + b.w.cross(b.w.cross(b.com))) + weight - f;
    const Vector3d moment = b.inertia * b.dw + b.w.cross(b.inertia * b.w) - (n - b.com.cross(f));
    torques_.value += b.linear.transpose() * force + b.angular.transpose() * moment;

    const double w = b.turns * dq.cwiseAbs(), dw = b.turns * ddq.cwiseAbs() + w * w, reach = b.chain + c.norm();
    const double a = ddq.head<3>().norm() + dw * reach + w * (dq.head<3>().norm() + w * reach);
    torques_.magnitude += (b.mass * a + weight.norm() + f.norm()) * b.arm.transpose();
    torques_.magnitude += (I.norm() * (dw + w * w) + n.norm() + c.norm() * f.norm()) * b.turns.transpose();
  }
}

WithMagnitude Robot::poseInWorld(int body) const {
  const Body &b = bodies_[body], &root = bodies_[0];
  return pose(closed(root.R * b.R_root), root.p + root.R * b.p_root, root.p.norm() + b.chain);
}

WithMagnitude Robot::poseInRoot(int body) const {
  return pose(bodies_[body].R_root, bodies_[body].p_root, bodies_[body].chain);
}

WithMagnitude Robot::jacobianInRoot() const {
  WithMagnitude J{Eigen::MatrixXd::Zero(6, 21), Eigen::MatrixXd::Zero(6, 21)};
  for (int i = 1; i < 16; ++i) {
    const Vector3d axis = bodies_[i].R_root.col(2);
    J.value.col(5 + i) << axis, bodies_[i].p_root.cross(axis);
    J.magnitude.col(5 + i) << Vector3d::Ones(), Vector3d::Constant(bodies_[i].chain);
  }
  return J;
}

WithMagnitude Robot::bodyComInWorld(int body) const {
  const Body& b = bodies_[body];
  return {b.p + b.com, Vector3d::Constant(bodies_[0].p.norm() + b.chain + b.com.norm())};
}

WithMagnitude Robot::firstMomentInRoot(int excluded) const {
  Vector3d sum = Vector3d::Zero(), size = sum;
  for (int i = 0; i < 16; ++i) {
    if (i == excluded) continue;
    const Body& b = bodies_[i];
    sum += b.mass * (b.p_root + bodies_[0].R.transpose() * b.com);
    size.array() += b.mass * (b.chain + b.com.norm());
  }
  return {sum, size};
}

WithMagnitude Robot::massMatrix(int excluded) const {
  Eigen::Matrix<double, 21, 21> H = Eigen::Matrix<double, 21, 21>::Zero(), size = H;
  for (int i = 0; i < 16; ++i) {
    if (i == excluded) continue;
    const Body& b = bodies_[i];
    H += b.mass * (b.linear.transpose() * b.linear) + b.angular.transpose() * (b.inertia * b.angular);
    size += b.mass * (b.arm.transpose() * b.arm) + b.inertia.norm() * (b.turns.transpose() * b.turns);
  }
  return {H, size};
}

WithMagnitude Robot::momentumJacobianInWorld(int excluded) const {
  const WithMagnitude H = massMatrix(excluded);  // the root's linear coordinates move every body alike
  return {bodies_[0].R * H.value.topRows(3), H.magnitude.topRows(3)};
}

}  // namespace reference
