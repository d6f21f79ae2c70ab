#!/bin/bash
# Builds the page build/web/robot.html, which shows the robot in a browser. The page is one file: it contains the
# plug-in, compiled to WebAssembly in build/web/lumo.js, and three.js. Installs missing packages.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing emscripten node-acorn libjs-three
export NODE_PATH=/usr/share/nodejs # for a Node.js that is not of Debian

# The header-only libraries of this machine; its C library must not be found.
folder=build/web
mkdir -p "$folder/include"
for library in eigen3/Eigen boost nlohmann fmt; do ln -sfn "/usr/include/$library" "$folder/include/"; done

sources=(web/bindings.cpp service/plugin.cpp service/KinetraRigidBodySystem.cpp models/norvaX3/norvaX3.cpp
  oxmath/oxmath.cpp tools/inspect/{Report,State,toJson}.cpp)
# As in CMakeLists.txt, products and sums are never contracted. The vector unit is not used, because clang 14 miscompiles
# the inverse dynamics for it.
flags=(-std=c++17 -O3 -ffp-contract=off -Wall -Wextra -D EIGEN_MAX_ALIGN_BYTES=16 -D EIGEN_MAX_STATIC_ALIGN_BYTES=16
  -D EIGEN_MALLOC_ALREADY_ALIGNED=0 -D FMT_HEADER_ONLY -I . -isystem "$folder/include")
step="compiling to WebAssembly"
objects=()
for source in "${sources[@]}"; do
  object=$folder/$(basename "$source" .cpp).o
  objects+=("$object")
  echo "Compiling $source"
  em++ "${flags[@]}" -c "$source" -o "$object"
done
em++ -O3 --bind "${objects[@]}" -o "$folder/lumo.js" -s SINGLE_FILE=1 -s MODULARIZE=1 -s EXPORT_NAME=lumo \
  -s DYNAMIC_EXECUTION=0 -s ENVIRONMENT=web,node -s ALLOW_MEMORY_GROWTH=1

# Replaces the references to other files by their content.
step="writing the page"
node - "$folder" <<'END'
const fs = require("fs"), [, , folder] = process.argv;
const three = "/usr/share/javascript/three/", read = (file) => fs.readFileSync(file, "utf8");
const files = {"three.js": `${three}three.min.js`, "OrbitControls.js": `${three}examples/js/controls/OrbitControls.js`,
  "lumo.js": `${folder}/lumo.js`, "robot.js": "web/robot.js", "robot.css": "web/robot.css",
  "example-log.csv": "docs/example-log.csv"};
const page = read("web/robot.html")
  .replace(/<link rel="stylesheet" href="(.*)">/g, (_, name) => `<style>\n${read(files[name])}</style>`)
  .replace(/ src="(.*)"><\/script>/g, (_, name) => `>\n${read(files[name])}</script>`);
fs.writeFileSync(`${folder}/robot.html`, page);
END
echo "Open $folder/robot.html in a browser."
