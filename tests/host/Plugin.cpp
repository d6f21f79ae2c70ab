#include <gtest/gtest.h>

#include <host/Plugin.hpp>

namespace {

TEST(Plugin, IsLoadedFromTheCurrentFolderIfItsNameHasNoSlash) {
  const std::filesystem::path file(LUMO_PLUGIN), here = std::filesystem::current_path();
  std::filesystem::current_path(file.parent_path());
  EXPECT_NO_THROW(lumo::Plugin(file.filename()).create());
  std::filesystem::current_path(here);
}

TEST(Plugin, SymbolsAreLocal) {
  const lumo::Plugin plugin(LUMO_PLUGIN);
  ASSERT_NE(plugin.create(), nullptr);
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "destroy"), nullptr);
}

}  // namespace
