#!/bin/bash
# Checks the page build/web/robot.html: builds it, checks the script by types and by a linter, and tests the page in
# Chromium against lumo-inspect. Saves pictures of the page in build/web.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing chromium chromium-driver python3-selenium fonts-dejavu-core eslint node-typescript "${all_packages[@]}"
scripts/web.sh
build release lumo_norvaX3 lumo-inspect lumo_python

step="checking the types of the script"
echo "declare const THREE: any; declare const lumo: () => Promise<any>;" >build/web/globals.d.ts
tsc --noEmit --checkJs --strict --noImplicitAny false --noUnusedLocals --noUnusedParameters --target es2021 \
  --lib es2021,dom,dom.iterable web/robot.js build/web/globals.d.ts
step="running the linter"
rules="no-shadow: 2, no-var: 2, prefer-const: 2, eqeqeq: 2, semi: 2, quotes: 2, max-len: [2, 120]"
NODE_PATH=/usr/share/nodejs eslint --format unix --no-eslintrc --parser-options=ecmaVersion:2019 \
  --rule "{$rules}" web/robot.js

step="testing the page"
/usr/bin/python3 tests/web/page.py
echo "The page computes the plug-in's bits. Its pictures are in build/web."
