#include <algorithm>
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

Vector3d vector(const urdf::Vector3& v) { return {v.x, v.y, v.z}; }
Matrix3d matrix(const urdf::Rotation& q) { return Eigen::Quaterniond(q.w, q.x, q.y, q.z).toRotationMatrix(); }

/// Compares a file with the tables of the model.
void expectTables(const std::string& text) {
  const auto model = urdf::parseURDF(text);
  ASSERT_TRUE(model) << "urdfdom cannot read the file";
  const std::vector<reference::BodyData> bodies = reference::readBodies();
  EXPECT_EQ(model->links_.size(), bodies.size() + model->links_.count("world"));
  for (std::size_t b = 0; b < bodies.size(); ++b) {
    const reference::BodyData& body = bodies[b];
    SCOPED_TRACE(body.name);
    const auto link = model->getLink(body.name);
    ASSERT_TRUE(link && link->inertial && (b == 0 || link->parent_joint));
    if (const auto joint = link->parent_joint) {
      EXPECT_EQ(joint->parent_link_name, b == 0 ? "world" : bodies[static_cast<std::size_t>(body.parent)].name);
      const urdf::Pose& placement = joint->parent_to_joint_origin_transform;
      EXPECT_EQ(joint->name, norvaX3::joint_names[b]);
      EXPECT_EQ(joint->type, b == 0 ? urdf::Joint::FLOATING : urdf::Joint::CONTINUOUS);
      EXPECT_TRUE(near(vector(joint->axis), Vector3d(0, 0, b == 0 ? 0 : 1), 1e-7));
      EXPECT_TRUE(near(vector(placement.position), body.r, 1e-7 * body.r.norm()));
      EXPECT_TRUE(near(matrix(placement.rotation), Matrix3d(body.R.colwise().normalized()), 1e-7));
    }

    const urdf::Inertial& given = *link->inertial;
    Matrix3d I;
    I << given.ixx, given.ixy, given.ixz, given.ixy, given.iyy, given.iyz, given.ixz, given.iyz, given.izz;
    const Vector3d moments = Eigen::SelfAdjointEigenSolver<Matrix3d>(I).eigenvalues();
    EXPECT_TRUE(moments[0] > 0.0 && moments[2] <= moments[0] + moments[1]) << "no real body has these moments";
    const Vector3d com = vector(given.origin.position), h = norvaX3::inertias[b].h.cast<double>();
    const Matrix3d R = matrix(given.origin.rotation), expected = reference::rotationalInertia(norvaX3::inertias[b]);
    I = R * I * R.transpose() + given.mass * (com.squaredNorm() * Matrix3d::Identity() - com * com.transpose());
    EXPECT_TRUE(near(given.mass, norvaX3::inertias[b].m, 1e-7 * given.mass));
    EXPECT_TRUE(near(given.mass * com, h, 1e-7 * h.norm()));
    EXPECT_TRUE(near(I, expected, 1e-7 * expected.cwiseAbs().maxCoeff()));
  }
}

/// The environment variable LUMO_URDF names another file to compare with the tables.
TEST(Urdf, EqualsTheTablesOfTheModel) {
  const char* other = std::getenv("LUMO_URDF");
  expectTables(output(other ? "cat " + std::string(other) : LUMO_URDF).first);
}

TEST(Urdf, ShowsEachBodyAsABallAndItsLinksAsCylindersFromItsOrigin) {
  const auto model = urdf::parseURDF(output(LUMO_URDF).first);
  for (const auto& [name, link] : model->links_) {
    SCOPED_TRACE(name);
    EXPECT_TRUE(link->collision_array.empty());
    ASSERT_FALSE(link->visual_array.empty());
    const auto& ball = link->visual_array.back()->origin.position;
    EXPECT_TRUE(near(vector(ball), vector(link->inertial->origin.position), 1e-9));
    for (std::size_t i = 0; i + 1 < link->visual_array.size(); ++i) {
      const urdf::Visual& visual = *link->visual_array[i];
      const double length = dynamic_cast<const urdf::Cylinder&>(*visual.geometry).length;
      const Vector3d middle = vector(visual.origin.position), axis = matrix(visual.origin.rotation).col(2);
      EXPECT_TRUE(near(Vector3d(middle - axis * length / 2), Vector3d(0, 0, 0), 1e-9));
    }
  }
}

TEST(Urdf, FloatingRootHangsBelowTheWorld) {
  const std::string file = testing::TempDir() + "lumo-urdf.urdf";
  EXPECT_EQ(output(LUMO_URDF " --floating --out " + file), std::pair(std::string(), true));
  expectTables(output("cat " + file).first);
  EXPECT_EQ(urdf::parseURDFFile(file)->getRoot()->name, "world");
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
