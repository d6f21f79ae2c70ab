#!/bin/bash
# Checks that the plug-in can be installed: installs the optimised build, moves the installed folder to another path,
# runs the programs in it, and builds the example host with it. Then does the same with the Debian package, and builds
# the example host in one project with the plug-in.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing dpkg-dev file "${all_packages[@]}"
build release
make_scratch
sed -n '/^ *```text/,/^ *```$/{//!s/^ *//p}' README.md >"$scratch/expected" # what the example host prints

# Uses an installed tree: runs the programs, then builds and runs the example, once with and once without -mavx.
use() {
  local tree=$1 flags
  step="running the inspector of $tree"
  "$tree/bin/lumo-inspect" --version
  "$tree/bin/lumo-inspect" --format json --svg "$scratch/robot.svg" >/dev/null
  step="looking for the man pages of $tree"
  grep -q 'wrench' "$tree/share/man/man1/lumo-inspect.1"
  grep -q 'states' "$tree/share/man/man1/lumo-digest.1"
  grep -q 'floating' "$tree/share/man/man1/lumo-urdf.1"
  step="comparing the results of $tree"
  diff <("$tree/bin/lumo-digest" --states 100) <(build/release/bin/lumo-digest --states 100)
  diff <("$tree/bin/lumo-urdf") <(build/release/bin/lumo-urdf)
  step="using the Python module of $tree"
  # Debian's Python searches below a prefix in the folders that getsitepackages() returns.
  PYTHONPATH=$(/usr/bin/python3 -c 'import site, sys; print(*site.getsitepackages(sys.argv[1:]), sep=":")' "$tree") \
    /usr/bin/python3 -c "import lumo, os; lumo.Plugin().create(); here = os.path.dirname(lumo.__file__)
assert {'py.typed', '__init__.pyi'} <= set(os.listdir(here))"
  for flags in "" -mavx; do
    [[ -z $flags ]] || grep -qw avx /proc/cpuinfo || continue
    step="building the example host $flags against $tree"
    rm -rf "$scratch/host"
    cmake -G Ninja -S "$tree/share/doc/lumo/examples/host" -B "$scratch/host" -DCMAKE_PREFIX_PATH="$tree" \
      -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_BUILD_TYPE=Release >/dev/null
    cmake --build "$scratch/host" >/dev/null
    step="comparing what the example host $flags prints with README.md"
    "$scratch/host/host" | diff "$scratch/expected" -
  done
}

step="installing"
cmake --install build/release --prefix "$scratch/first" >/dev/null
mv "$scratch/first" "$scratch/moved"
use "$scratch/moved"

step="making the Debian package"
(cd build/release && cpack -G DEB -B "$scratch/packages" >/dev/null)
package=$(ls "$scratch"/packages/*.deb)
step="installing the Debian package"
apt-get install --simulate -qq "$package" >/dev/null # fails if a dependency is not available
dpkg-deb --extract "$package" "$scratch/root"
use "$scratch/root/usr"
dpkg-deb --field "$package" Package Version Depends
for needed in libeigen3-dev libc6 libstdc++6 libfmt9; do # every host needs Eigen, and the programs need the libraries
  step="looking for $needed in the package's dependencies"
  dpkg-deb --field "$package" Depends | grep -qwF "$needed"
done
step="looking for headers of the package outside of include/lumo"
(( $(find "$scratch"/root/usr/include -type f -not -path '*/include/lumo/*' | wc -l) == 0 ))
step="comparing the pictures in docs/ with what the inspector draws"
build/release/bin/lumo-inspect --svg "$scratch/robot.svg" >/dev/null
build/release/bin/lumo-inspect --pose zero --axes --svg "$scratch/axes.svg" >/dev/null
cmp "$scratch/robot.svg" docs/robot.svg
cmp "$scratch/axes.svg" docs/axes.svg

step="building the example host, the host in README.md and the plug-in in one project"
mkdir "$scratch/project"
sed -n '/^```cpp/,/^```$/{//!p}' README.md >"$scratch/project/readme.cpp"
cat >"$scratch/project/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.25)
project(hosts LANGUAGES CXX)
add_subdirectory($PWD lumo)
add_executable(example $PWD/examples/host/main.cpp)
add_executable(readme readme.cpp)
target_compile_definitions(example PRIVATE LUMO_PLUGIN="\$<TARGET_FILE:lumo_norvaX3>")
foreach(host example readme)
  target_link_libraries(\${host} PRIVATE lumo::interface)
  add_dependencies(\${host} lumo_norvaX3)
endforeach()
END
cmake -G Ninja -S "$scratch/project" -B "$scratch/project/build" >/dev/null
cmake --build "$scratch/project/build" --target example readme >/dev/null
step="running these hosts"
"$scratch/project/build/example" | diff "$scratch/expected" -
"$scratch/project/build/readme" | tee "$scratch/printed"
step="looking in that output for the heights and the inertia that the example prints"
(( $(grep -cFf <(grep -oE '0\.[0-9]{6}' "$scratch/expected") "$scratch/printed") == 3 ))
echo "The installed tree, the Debian package and add_subdirectory work."
