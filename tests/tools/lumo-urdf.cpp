#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <gtest/gtest.h>
#include <urdf_parser/urdf_parser.h>

#include <models/norvaX3/norvaX3.hpp>
#include <tests/support/matchers.hpp>
#include <tests/support/output.hpp>
#include <tools/reference/BodyData.hpp>

// Tests of the file that lumo-urdf writes. urdfdom reads it.

namespace {

using namespace lumo::test;
using Eigen::Matrix3d, Eigen::Vector3d;
using kinetra::norvaX3;

using Same = testing::AssertionResult;
Vector3d vector(const urdf::Vector3& v) { return {v.x, v.y, v.z}; }
Matrix3d matrix(const urdf::Rotation& q) { return Eigen::Quaterniond(q.w, q.x, q.y, q.z).toRotationMatrix(); }

/// Compares a file with the tables of the model. Returns a line for each quantity that differs.
std::string differences(const std::string& text) {
  const auto model = urdf::parseURDF(text);
  if (!model) return "urdfdom cannot read the file";
  std::string lines;
  const std::vector<reference::BodyData> bodies = reference::readBodies();
  for (std::size_t b = 0; b < bodies.size(); ++b) {
    const reference::BodyData& body = bodies[b];
    const auto check = [&](const char* what, const Same& same) {
      if (!same) lines += body.name + ", " + what + ": " + same.message() + "\n";
    };
    const auto link = model->getLink(body.name);
    check("link", Same(link && link->inertial && (b == 0 || link->parent_joint)));
    if (!link || !link->inertial) continue;
    if (const auto joint = link->parent_joint) {
      const std::string parent = b == 0 ? "world" : bodies[static_cast<std::size_t>(body.parent)].name;
      check("parent", Same(joint->parent_link_name == parent));
      const urdf::Pose& placement = joint->parent_to_joint_origin_transform;
      check("name of the joint", Same(joint->name == norvaX3::joint_names[b]));
      check("type", Same(joint->type == (b == 0 ? urdf::Joint::FLOATING : urdf::Joint::CONTINUOUS)));
      check("axis", near(vector(joint->axis), Vector3d(0, 0, b == 0 ? 0 : 1), 1e-7));
      check("origin", near(vector(placement.position), body.r, 1e-7 * body.r.norm()));
      check("rotation", near(matrix(placement.rotation), Matrix3d(body.R.colwise().normalized()), 1e-7));
    }

    const urdf::Inertial& given = *link->inertial;
    Matrix3d I;
    I << given.ixx, given.ixy, given.ixz, given.ixy, given.iyy, given.iyz, given.ixz, given.iyz, given.izz;
    const Vector3d moments = Eigen::SelfAdjointEigenSolver<Matrix3d>(I).eigenvalues();
    check("no real body has these moments", Same(moments[0] > 0.0 && moments[2] <= moments[0] + moments[1]));
    const Vector3d com = vector(given.origin.position), h = norvaX3::inertias[b].h.cast<double>();
    const Matrix3d R = matrix(given.origin.rotation), expected = reference::rotationalInertia(norvaX3::inertias[b]);
    I = R * I * R.transpose() + given.mass * (com.squaredNorm() * Matrix3d::Identity() - com * com.transpose());
    check("mass", near(given.mass, norvaX3::inertias[b].m, 1e-7 * given.mass));
    check("first moment", near(given.mass * com, h, 1e-7 * h.norm()));
    check("inertia about the origin of the link", near(I, expected, 1e-7 * expected.cwiseAbs().maxCoeff()));
  }
  if (model->links_.size() != bodies.size() + model->links_.count("world")) lines += "there are other links\n";
  return lines;
}

/// The environment variable LUMO_URDF names another file to compare with the tables.
TEST(Urdf, EqualsTheTablesOfTheModel) {
  const char* other = std::getenv("LUMO_URDF");
  EXPECT_EQ(differences(output(other ? "cat " + std::string(other) : LUMO_URDF).first), "");
}

TEST(Urdf, FloatingRootHangsBelowTheWorld) {
  const std::string file = testing::TempDir() + "lumo-urdf.urdf";
  EXPECT_EQ(output(LUMO_URDF " --floating --out " + file), std::pair(std::string(), true));
  EXPECT_EQ(differences(output("cat " + file).first), "");
  EXPECT_EQ(urdf::parseURDFFile(file)->getRoot()->name, "world");
}

TEST(Urdf, ComparisonFindsAnyOtherNumber) {
  const std::string text = output(LUMO_URDF).first;
  for (const auto& [from, to, found] : {
           std::array{"mass value='15.485", "mass value='15.486", "KneePitch, mass"},
           {"xyz='0 0.268", "xyz='0 -0.268", "KneePitch, origin"},
           {"8853' rpy='0 1.5707963", "8853' rpy='0 1.5707968", "HipRoll, rotation"},
           {"xyz='0.1115", "xyz='0.1114", "HeadPitch, first moment"},
           {"inertia ixx='", "inertia ixx='10000", "Torso, inertia"},
           {"inertia ixx='", "inertia ixx='-", "Torso, no real body"},
           {"parent link='HipPitch", "parent link='HipRoll", "KneePitch, parent"},
           {"axis xyz='0 0 1", "axis xyz='0 0 -1", "HeadYaw, axis"},
           {"link name='LWristYaw", "link name='Hand", "urdfdom cannot"},
       }) {
    std::string changed = text;
    changed.replace(text.find(from), std::string(from).size(), to);
    const std::string lines = differences(changed);
    EXPECT_NE(lines.find(found), std::string::npos) << from << '\n' << lines;
  }
}

TEST(Urdf, ReportsBadInputInOneLine) {
  for (const std::string input : {"--bogus", "robot.urdf", "--out", "--out ''", "--out no/such/file", "--out /dev/full",
                                  "--out /", ">/dev/full"}) {
    const auto [error, accepted] = output(LUMO_URDF " 2>&1 >/dev/null " + input);
    EXPECT_FALSE(accepted) << input;
    EXPECT_EQ(std::count(error.begin(), error.end(), '\n'), 1) << input << '\n' << error;
  }
}

}  // namespace
