#!/bin/bash
# Builds the page build/web/robot.html, which shows the robot in a browser. The page is one file: it contains the
# plug-in, compiled to WebAssembly in build/web/lumo.js, and three.js. Installs missing packages.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing emscripten node-acorn libjs-three
export NODE_PATH=/usr/share/nodejs # for a Node.js that is not of Debian

# The header-only libraries of this machine are used, but not its C library.
folder=build/web
mkdir -p "$folder/include"
for library in eigen3/Eigen boost nlohmann; do ln -sfn "/usr/include/$library" "$folder/include/"; done

# As in CMakeLists.txt, products and sums are never contracted. The vector unit is not used, because clang 14
# miscompiles the inverse dynamics for it.
step="compiling to WebAssembly"
echo "Compiling to WebAssembly"
em++ -std=c++17 -O3 -ffp-contract=off -Wall -Wextra -I . -isystem "$folder/include" \
  -D EIGEN_MAX_ALIGN_BYTES=16 -D EIGEN_MAX_STATIC_ALIGN_BYTES=16 -D EIGEN_MALLOC_ALREADY_ALIGNED=0 \
  web/bindings.cpp service/{plugin,KinetraRigidBodySystem}.cpp models/norvaX3/norvaX3.cpp oxmath/oxmath.cpp \
  tools/inspect/{Report,State,toJson}.cpp -o "$folder/lumo.js" --bind -s SINGLE_FILE=1 -s MODULARIZE=1 \
  -s EXPORT_NAME=lumo -s DYNAMIC_EXECUTION=0 -s ENVIRONMENT=web,node -s ALLOW_MEMORY_GROWTH=1

step="writing the page"
node - web docs "$folder" /usr/share/javascript/three{,/examples/js/controls} <<'END'
// Replaces the references to other files by their content.
const fs = require("fs"), folders = process.argv.slice(2);
const read = (name) => fs.readFileSync(folders.map((folder) => `${folder}/${name}`).find(fs.existsSync), "utf8");
fs.writeFileSync("build/web/robot.html", read("robot.html")
  .replace(/<link rel="stylesheet" href="(.*)">/, (_, name) => `<style>\n${read(name)}</style>`)
  .replace(/ src="(.*)"><\/script>/g, (_, name) => `>\n${read(name)}</script>`));
END
echo "Open $folder/robot.html in a browser."
