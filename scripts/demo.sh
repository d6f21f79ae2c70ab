#!/bin/bash
# Installs missing packages, builds the optimised plug-in and the inspector, and shows the robot in the greeting pose.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

install_missing
build release lumo_norvaX3 lumo-inspect

step="inspecting the robot"
echo
build/release/bin/lumo-inspect
echo
echo "The plug-in is build/release/lib/lumo/norvaX3.so."
