#include <gtest/gtest.h>

#include <tests/support/output.hpp>

// Tests of the file of the plug-in.

namespace {

using lumo::test::output;

TEST(Module, ExportsTwoFunctions) {
  EXPECT_EQ(output(LUMO_NM " -D --defined-only -j " LUMO_PLUGIN " | sort").first, "create\ndestroy\n");
}

// The runtime of a sanitizer is in the program and not in the libraries that the file names.
TEST(Module, FindsAllSymbolsAndLibraries) {
  const char* const missing = "ldd -r " LUMO_PLUGIN " 2>&1 | grep -E 'undefined|not found' | grep -vE '__(a|t|ub)san_'";
  EXPECT_EQ(output(missing).first, "");
}

// The C library's sines differ between its versions, and results must not depend on them.
TEST(Module, UsesNoSineOfTheCLibrary) {
  const std::string undefined = '\n' + output(LUMO_NM " -D --undefined-only -j " LUMO_PLUGIN).first;
  EXPECT_NE(undefined.find("\n__cxa_throw"), std::string::npos) << "no list of undefined symbols: " << undefined;
  for (const char* sine : {"\nsin", "\ncos", "_sin", "_cos"})
    EXPECT_EQ(undefined.find(sine), std::string::npos) << undefined;
}

TEST(Module, IsHardened) {
  const std::string elf = output(LUMO_READELF " -W -d -l " LUMO_PLUGIN).first;
  for (const char* part : {"BIND_NOW", "GNU_RELRO", "GNU_STACK"}) EXPECT_NE(elf.find(part), std::string::npos) << part;
  for (const char* part : {"RWE", "TEXTREL"}) EXPECT_EQ(elf.find(part), std::string::npos) << part << ": writable code";
}

}  // namespace
