#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include <tests/plugin/support.hpp>
#include <tests/support/output.hpp>

// Tests of what the inspector reads and shows. Tests in CMakeLists.txt compare its whole output in one state with
// recorded files.

namespace {

using namespace lumo::test;
using nlohmann::json;

/// What the inspector prints. Throws if it fails.
std::string shown(const std::string& options) {
  const auto [text, accepted] = output(LUMO_INSPECT " " + options);
  if (!accepted) throw std::runtime_error("the inspector failed with the options " + options);
  return text;
}

std::string contents(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The picture that the inspector draws. Each test has a file of its own, because tests can run at the same time.
std::string picture(const std::string& options) {
  const std::string file = testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name() + ".svg";
  shown(options + " --svg " + file);
  return contents(file);
}

/// The JSON report of a state, and an object in that state.
struct InspectorJson : testing::Test {
  const std::string text = shown(
      "--root 0.1,0.2,0.3,0.4,0.5,0.6 --joint KneePitch=0.7 --joint LElbowYaw=-0.8 --velocity HipPitch=0.9"
      " --acceleration HeadYaw=1.1 --wrench RWristYaw=1,2,3,4,5,6 --format json");
  const json report = json::parse(text);
  const Object system = create();

  InspectorJson() {
    system->setRootPose(OX::Math::transformFromPosition6D(OX::Math::Position6D(0.1F, 0.2F, 0.3F, 0.4F, 0.5F, 0.6F)));
    system->setJointAnglePos(9, 0.7F), system->setJointAnglePos(4, -0.8F);
    system->setJointAngleVel(8, 0.9F), system->setJointAngleAcc(0, 1.1F);
    system->setExternalWrench(15, {1, 2, 3, 4, 5, 6});
    compute(*system);
  }
  static Eigen::VectorXf numbers(const json& shown) {
    const std::vector<float> values =
        shown.is_array() ? shown.get<std::vector<float>>() : std::vector{shown.get<float>()};
    return Eigen::VectorXf::Map(values.data(), static_cast<Eigen::Index>(values.size()));
  }
};

TEST_F(InspectorJson, WholeRobotEqualsTheInterface) {
  EXPECT_TRUE(identical(numbers(report["mass"]), system->getMass()));
  EXPECT_TRUE(identical(numbers(report["com"]), system->getComPosition()));
  EXPECT_TRUE(identical(numbers(report["com_in_root"]), system->getComPositionInRoot()));
  for (Eigen::Index i = 0; i < 21; ++i) {
    const json& row = report["generalized_mass"][static_cast<Size>(i)];
    EXPECT_TRUE(identical(numbers(row), system->getGeneralizedMass().row(i).transpose())) << "row " << i;
  }
}

TEST_F(InspectorJson, NumbersHaveTheFewestDigits) {
  EXPECT_NE(text.find("\"position\":0.7,\"velocity\":0.0,"), std::string::npos) << text;
}

TEST_F(InspectorJson, BodiesEqualTheInterface) {
  const Table parents = system->getParentsVector();
  for (Size b = 0; b < nb_bodies; ++b) {
    const json& body = report["bodies"][b];
    const Eigen::MatrixXd pose = toDoubles(system->getPose(b));
    SCOPED_TRACE(system->getBodyName(b));
    EXPECT_EQ(body["name"], system->getBodyName(b));
    EXPECT_EQ(body["parent"], b == 0 ? json() : json(system->getBodyName(static_cast<Size>(parents[b]))));
    EXPECT_TRUE(identical(numbers(body["mass"]), system->getMass(b)));
    EXPECT_TRUE(identical(numbers(body["position"]), pose.col(3)));
    EXPECT_TRUE(identical(numbers(body["rotation"]), pose.leftCols<3>().transpose().reshaped()));
    EXPECT_TRUE(identical(numbers(body["com"]), system->getComPosition(b)));
  }
}

TEST_F(InspectorJson, JointsEqualTheInterface) {
  for (Size k = 0; k < nb_joint_angles; ++k) {
    const json& joint = report["joints"][k];
    SCOPED_TRACE(system->getJointAngleName(k));
    EXPECT_EQ(joint["name"], system->getJointAngleName(k));
    EXPECT_EQ(joint["body"], system->getBodyName(k + 1));
    EXPECT_TRUE(identical(numbers(joint["position"]), system->getJointAnglePos(k)));
    EXPECT_TRUE(identical(numbers(joint["velocity"]), system->getJointAngleVel(k)));
    EXPECT_TRUE(identical(numbers(joint["acceleration"]), system->getJointAngleAcc(k)));
    EXPECT_TRUE(identical(numbers(joint["torque"]), system->getJointAngleTorque(k)));
  }
}

TEST(Inspector, StartsFromTheGreetingPoseOnlyIfNoStateIsGiven) {
  const std::string zero = shown("--pose zero");
  EXPECT_NE(shown(""), zero);
  EXPECT_EQ(shown(""), shown("--pose greeting"));
  for (const char* state : {"--root 0,0,0,0,0,0", "--joint HeadYaw=1 --joint HeadYaw=0", "--velocity HeadYaw=0",
                            "--acceleration HeadYaw=0", "--wrench RWristYaw=0,0,0,0,0,0"}) {
    EXPECT_EQ(shown(state), zero) << state;
  }
}

TEST(Inspector, PicturesContainTheNamesOfTheBodiesAndTheAxes) {
  const std::string masses = picture(""), axes = picture("--pose zero --axes");
  const auto system = create();
  for (Size b = 0; b < nb_bodies; ++b) EXPECT_NE(masses.find(system->getBodyName(b)), std::string::npos) << b;
  for (const char* axis : {">HipRoll +x<", ">KneePitch +y<", ">HeadYaw +z<", ">LElbowYaw ≈+x<"}) {
    EXPECT_NE(axes.find(axis), std::string::npos) << axis;
  }
}

TEST(Inspector, PictureEscapesTheNameOfThePlugIn) {
  const std::filesystem::path link = testing::TempDir() + "a&b<c.so";
  std::filesystem::remove(link);
  std::filesystem::create_symlink(LUMO_PLUGIN, link);
  EXPECT_NE(picture("--plugin '" + link.string() + "'").find(">a&amp;b&lt;c<"), std::string::npos);
}

TEST(Inspector, ShowsTheRobotFarFromTheOrigin) {
  const std::string up = picture("--root 0,0,30,0,0,0"), far = picture("--root 1e9,-1e9,1e9,0,0,0");
  EXPECT_NE(up.find("ground, z = 0, 29.2 m down<"), std::string::npos);
  EXPECT_NE(up.find(">x 0.010, y 0.000 m<"), std::string::npos);
  EXPECT_NE(far.find("ground, z = 0, 1e+09 m down<"), std::string::npos);
  EXPECT_NE(far.find(">x 1e+09, y -1e+09 m<"), std::string::npos);
  const auto drawn = [](const std::string& svg) { return std::regex_replace(svg, std::regex("<text.*?</text>"), ""); };
  EXPECT_EQ(drawn(up), drawn(far));

  std::istringstream lines(shown("--root 1e9,-1e9,1e9,0,0,0"));
  for (std::string row; std::getline(lines, row);) EXPECT_LE(row.size(), 100U) << row;
}

TEST(Inspector, PrintsItsVersion) {
  EXPECT_TRUE(std::regex_match(shown("--version"), std::regex(R"(lumo-inspect \d+\.\d+\.\d+\n)")));
}

TEST(Inspector, ReportsBadInputInOneLineAndWritesNothing) {
  const std::filesystem::path none = testing::TempDir() + "lumo-inspect-none.svg";
  for (const auto& [input, hint] : std::vector<std::pair<std::string, std::string>>{
           {"--plugin no/such.so", "no/such.so"},
           {"--plugin " OXMATH_LIBRARY, "is not a plug-in"},
           {"--bogus", "--bogus"},
           {"--joint Knee=1", "no joint named \"Knee\"; the names are HeadYaw, HeadPitch, "},
           {"--wrench Hand=1,2,3,4,5,6", "no body named \"Hand\"; the names are Torso, HeadYaw, "},
           {"--joint HeadYaw", "expected NAME=RAD"},
           {"--joint HeadYaw=1.5.2", "not a finite number"},
           {"--joint HeadYaw=nan", "not a finite number"},
           {"--joint 'Head\n\033Yaw=1'", "HeadYaw"},
           {"--root 1,2,3,4,5", "found 5"},
           {"--wrench Torso=1,2,3,4,5,6,7", "found 7"},
           {"--format yaml", "yaml"},
           {"--axes", "requires --svg"},
           {"--svg ''", "expected the name of a file"},
           {"--svg no/such/picture.svg", "no/such/picture.svg"},
           {"--svg /dev/full", "/dev/full"},
       }) {
    SCOPED_TRACE(input);
    std::string command = LUMO_INSPECT " ";
    command.append(input).append(input.find("--svg") == 0 || input == "--axes" ? "" : " --svg " + none.string());
    const auto [error, accepted] = output(command + " 2>&1 >/dev/null");
    EXPECT_FALSE(accepted);
    EXPECT_EQ(std::count_if(error.begin(), error.end(), [](unsigned char c) { return c < ' '; }), 1) << error;
    EXPECT_EQ(error.back(), '\n') << error;
    EXPECT_NE(error.find(hint), std::string::npos) << error;
    EXPECT_EQ(output(command + " 2>/dev/null").first, "");
    EXPECT_FALSE(std::filesystem::exists(none));
  }
}

TEST(Inspector, FailsWhenItsOutputCannotBeWritten) {
  EXPECT_FALSE(output(LUMO_INSPECT " 2>/dev/null >/dev/full").second);
}

TEST(Inspector, WritesThePictureThroughALinkOrKeepsTheOldOne) {
  const std::filesystem::path folder = testing::TempDir() + "lumo-inspect", link = folder / "link.svg",
                              target = folder / "pictures/robot.svg";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(target.parent_path());
  std::filesystem::create_symlink("pictures/robot.svg", link);
  for (const char* state : {"", "--pose zero"}) {  // the first picture is a new file
    SCOPED_TRACE(state);
    shown(std::string(state) + " --svg " + link.string());
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(contents(target), picture(state));
  }
  std::ofstream(target) << "old";
  const auto [error, written] =
      output("trap '' XFSZ; ulimit -f 4; " LUMO_INSPECT " --svg " + link.string() + " 2>&1 >/dev/null");
  EXPECT_FALSE(written);
  EXPECT_NE(error.find("cannot write " + link.string()), std::string::npos) << error;
  EXPECT_EQ(contents(target), "old");
  EXPECT_EQ(std::filesystem::remove_all(folder), 4U) << "a part of the new picture is left";
}

}  // namespace
