#!/bin/bash
# Checks that the plug-in works with another math library: builds it with the one in tests/fixtures/othermath, runs the
# tests of the plug-in and of the tools, and builds a host with the installed files.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing "${all_packages[@]}"
make_scratch
step="configuring with another math library"
cmake --preset release -B build/othermath -DLUMO_OXMATH="$PWD/tests/fixtures/othermath"
step="building with another math library"
cmake --build build/othermath
step="testing with another math library"
for folder in plugin tools; do
  ctest --test-dir "build/othermath/tests/$folder" --output-on-failure --no-tests=error -j "$(nproc)"
done

# A host without the target oxmath must be told so. With it, find_package may be called twice.
step="installing with another math library"
cmake --install build/othermath --prefix "$scratch/installed" >/dev/null
cat >"$scratch/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.25)
project(host LANGUAGES CXX)
if(WITH_MATH)
  add_library(oxmath SHARED IMPORTED)
  set_target_properties(oxmath PROPERTIES
    IMPORTED_LOCATION $PWD/build/othermath/lib/libmath3d.so
    INTERFACE_INCLUDE_DIRECTORIES $PWD/tests/fixtures/othermath
    INTERFACE_COMPILE_DEFINITIONS LUMO_OXMATH_HEADER=<math3d/pose.h>)
endif()
find_package(lumo REQUIRED)
find_package(lumo REQUIRED)
add_executable(host host.cpp)
target_link_libraries(host PRIVATE lumo::interface)
target_compile_definitions(host PRIVATE LUMO_PLUGIN="\${lumo_PLUGIN}")
END
cat >"$scratch/host.cpp" <<END
#include <host/Plugin.hpp>
int main() {
  const auto robot = lumo::Plugin(LUMO_PLUGIN).create();
  robot->setRootPose(OX::Math::transformFromPosition6D(OX::Math::Position6D(0, 0, 1, 0, 0, 0)));
  return robot->getRootPose().third.offset == 1 ? 0 : 1;
}
END
configure() { cmake -G Ninja -S "$scratch" -B "$scratch/host" -DCMAKE_PREFIX_PATH="$scratch/installed" "$@"; }
step="looking for the message that a host without a math library gets"
if configure >"$scratch/log" 2>&1; then exit 1; fi
tr -s " \n" " " <"$scratch/log" | grep -q "define the target oxmath before find_package"
step="building a host with a math library of its own"
configure -DWITH_MATH=ON >/dev/null
cmake --build "$scratch/host" >/dev/null
"$scratch/host/host"
echo "The plug-in works with another math library."
