#include <fstream>

#include <gtest/gtest.h>

#include <host/Plugin.hpp>

namespace {

TEST(Plugin, IsLoadedFromTheCurrentFolderIfItsNameHasNoSlash) {
  const std::filesystem::path file(LUMO_PLUGIN), here = std::filesystem::current_path();
  std::filesystem::current_path(file.parent_path());
  EXPECT_NO_THROW(lumo::Plugin(file.filename()).create());
  std::filesystem::current_path(here);
}

TEST(Plugin, ErrorMessageContainsTheNameOfTheFile) {
  std::ofstream(testing::TempDir() + "lumo-no-library") << "text";
  for (const std::string& file :
       {std::string("no/such.so"), testing::TempDir() + "lumo-no-library", std::string(OXMATH_LIBRARY)}) {
    try {
      const lumo::Plugin plugin(file);
      ADD_FAILURE() << file << " is loaded";
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find(file), std::string::npos) << error.what();
    }
  }
}

TEST(Plugin, SymbolsAreLocal) {
  const lumo::Plugin plugin(LUMO_PLUGIN);
  ASSERT_NE(plugin.create(), nullptr);
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "destroy"), nullptr);
}

}  // namespace
