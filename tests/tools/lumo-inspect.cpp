#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include <tests/plugin/support.hpp>
#include <tests/support/output.hpp>

namespace {

using namespace lumo::test;
using lumo::toFloats;
using Point = std::array<float, 3>;

TEST(Inspector, ShowsWhatTheInterfaceAnswers) {
  const auto [table, success] = output(LUMO_INSPECT);
  EXPECT_TRUE(success && table.find("27.824") != std::string::npos) << table;
  const std::filesystem::path picture = testing::TempDir() + "robot.svg";
  const auto [text, answered] =
      output(LUMO_INSPECT
             " --root 0.1,0.2,0.3,0.4,0.5,0.6 --joint KneePitch=0.7 --joint LElbowYaw=-0.8 --velocity HipPitch=0.9"
             " --acceleration HeadYaw=1.1 --wrench RWristYaw=1,2,3,4,5,6 --format json --svg " +
             picture.string());
  const auto system = create();
  system->setRootPose(OX::Math::transformFromPosition6D({0.1F, 0.2F, 0.3F, 0.4F, 0.5F, 0.6F}));
  system->setJointAnglePos(9, 0.7F), system->setJointAnglePos(4, -0.8F);
  system->setJointAngleVel(8, 0.9F), system->setJointAngleAcc(0, 1.1F);
  system->setExternalWrench(15, {1, 2, 3, 4, 5, 6});
  compute(*system);

  ASSERT_TRUE(answered);
  const auto json = nlohmann::json::parse(text);
  EXPECT_EQ(json["com"].get<Point>(), toFloats(system->getComPosition()));
  EXPECT_EQ(json["com_in_root"].get<Point>(), toFloats(system->getComPositionInRoot()));
  std::ifstream file(picture);
  const std::string drawing{std::istreambuf_iterator<char>(file), {}};
  for (std::size_t b = 0; b < nb_bodies; ++b) {
    const auto& body = json["bodies"][b];
    const auto R = body["rotation"].get<std::array<float, 9>>();
    const auto t = body["position"].get<Point>();
    EXPECT_EQ((std::array{R[0], R[1], R[2], t[0], R[3], R[4], R[5], t[1], R[6], R[7], R[8], t[2]}),
              toFloats(system->getPose(b)));
    EXPECT_EQ(body["com"].get<Point>(), toFloats(system->getComPosition(b)));
    EXPECT_EQ(body["mass"].get<float>(), system->getMass(b));
    for (const auto& shown : {table, drawing}) EXPECT_NE(shown.find(system->getBodyName(b)), std::string::npos) << b;
  }
  for (std::size_t k = 0; k < 15; ++k) {
    EXPECT_EQ(json["joints"][k]["torque"].get<float>(), system->getJointAngleTorque(k)) << k;
  }
  for (Eigen::Index i = 0; i < 21 * 21; ++i) {
    const auto& row = json["generalized_mass"][static_cast<std::size_t>(i / 21)];
    EXPECT_EQ(row[static_cast<std::size_t>(i % 21)].get<float>(), system->getGeneralizedMass()(i / 21, i % 21));
  }
}

TEST(Inspector, AnswersBadInputWithOneLineAndWritesNothing) {
  const std::filesystem::path picture = testing::TempDir() + "none.svg";
  for (const auto& [input, hint] : std::vector<std::pair<std::string, std::string>>{
           {"--plugin no/such.so", "no/such.so"},
           {"--plugin " OXMATH_LIBRARY, "is not a plug-in"},
           {"--bogus", "--bogus"},
           {"--joint headyow=1", "most similar name is HeadYaw"},
           {"--joint Knee=1", "most similar name is KneePitch"},
           {"--joint HeadYaw", "expected NAME=RAD"},
           {"--joint HeadYaw=1.5.2", "not a finite number"},
           {"--joint HeadYaw=nan", "not a finite number"},
           {"--root 1,2,3,4,5", "found 5"},
           {"--wrench Torso=1,2,3,4,5,6,7", "found 7"},
           {"--format yaml", "yaml"},
           {"--svg no/such/picture.svg", "no/such/picture.svg"},
           {"--svg /dev/full", "/dev/full"},
       }) {
    std::string command = LUMO_INSPECT " ";
    command.append(input).append(input.find("--svg") == 0 ? "" : " --svg " + picture.string());
    const auto [error, accepted] = output(command + " 2>&1 >/dev/null");
    EXPECT_FALSE(accepted) << input;
    EXPECT_EQ(error.find('\n'), error.size() - 1) << error;
    EXPECT_NE(error.find(hint), std::string::npos) << error;
    EXPECT_EQ(output(command + " 2>/dev/null").first, "") << input;
    EXPECT_FALSE(std::filesystem::exists(picture)) << input;
  }
  EXPECT_FALSE(output(LUMO_INSPECT " 2>/dev/null >/dev/full").second);
}

TEST(Inspector, LeavesTheOldPictureWhenAWriteFailsHalfWay) {
  const std::filesystem::path folder = testing::TempDir() + "lumo-inspect", picture = folder / "robot.svg";
  std::filesystem::create_directory(folder);
  std::ofstream(picture) << "old";
  const auto [error, written] =
      output("trap '' XFSZ; ulimit -f 4; " LUMO_INSPECT " --svg " + picture.string() + " 2>&1 >/dev/null");
  EXPECT_FALSE(written);
  EXPECT_NE(error.find("cannot write " + picture.string()), std::string::npos) << error;
  EXPECT_EQ(std::filesystem::file_size(picture), 3U);
  EXPECT_EQ(std::filesystem::remove_all(folder), 2U) << "a part of the new picture is left";
}

}  // namespace
