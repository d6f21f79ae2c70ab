#include <tests/plugin/support.hpp>

// The built files: the plug-in, the inspector, and the host's math library or its stand-in.

namespace {

using namespace lumo::test;

/// What a command writes to standard output, and whether it succeeds.
std::pair<std::string, bool> output(const std::string& command) {
  std::FILE* pipe = popen(command.c_str(), "r");
  std::string text;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) text += static_cast<char>(c);
  return {text, pclose(pipe) == 0};
}

// A sanitizer's runtime is in the program, not in the libraries that the file names.
TEST(Module, ExportsTwoFunctionsLacksNoneAndIsHardened) {
  EXPECT_EQ(output(LUMO_NM " -D --defined-only -j " LUMO_PLUGIN " | sort").first, "create\ndestroy\n");
  EXPECT_EQ(output("ldd -r " LUMO_PLUGIN " 2>&1 | grep -E 'undefined|not found' | grep -vE '__(a|t|ub)san_'").first,
            "");
  const std::string elf = output(LUMO_READELF " -W -d -l " LUMO_PLUGIN).first;
  for (const char* part : {"BIND_NOW", "GNU_RELRO", "GNU_STACK"}) EXPECT_NE(elf.find(part), std::string::npos) << part;
  for (const char* part : {"RWE", "TEXTREL"}) EXPECT_EQ(elf.find(part), std::string::npos) << part << ": writable code";
}

TEST(Inspector, PrintsEveryBodyOrOneLineOfError) {
  const auto [table, success] = output(LUMO_INSPECT);
  EXPECT_TRUE(success && table.find("27.824") != std::string::npos) << table;
  const auto system = create();
  for (Size b = 0; b < nb_bodies; ++b) EXPECT_NE(table.find(system->getBodyName(b)), std::string::npos) << b;
  for (const std::string how : {"--plugin no/such.so 2>&1 >/dev/null", "--plugin " OXMATH_LIBRARY " 2>&1 >/dev/null",
                                "--bogus 2>&1 >/dev/null", "2>&1 >/dev/full"}) {
    const auto [error, accepted] = output(LUMO_INSPECT " " + how);
    EXPECT_FALSE(accepted) << how;
    EXPECT_TRUE(error.size() > 1 && error.find('\n') == error.size() - 1) << how << error;
  }
}

// Elsewhere the six values show in every world pose. Here the axes of roll and yaw are in line, and the angles not
// unique.
TEST(OxMath, PoseSurvivesGimbalLock) {
  for (const float pitch : {1.57079633F, -1.57079633F}) {
    Transform locked = pose((Eigen::ArrayXf(6) << 1, 2, 3, 0.5F, pitch, -2).finished());
    auto rows = lumo::toFloats(locked);
    rows[0] = rows[4] = rows[9] = rows[10] = 0;
    std::memcpy(static_cast<void*>(&locked), rows.data(), sizeof locked);
    const Transform again = OX::Math::transformFromPosition6D(OX::Math::position6DFromTransform(locked));
    EXPECT_TRUE(near(vector(again), vector(locked), 2 * epsilon)) << pitch;
  }
}

}  // namespace
