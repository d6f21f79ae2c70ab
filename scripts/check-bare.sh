#!/bin/bash
# Runs the commands of README.md in a minimal Debian 12, in a chroot with a copy of the repository. The Debian packages
# come from the mirror that this machine uses. Needs root.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

step="making a minimal Debian, which only root can"
(( EUID == 0 ))
install_missing mmdebstrap
make_scratch
root=$scratch/root

step="looking for Debian 12 among this machine's package sources"
sources() {
  apt-get indextargets --format "deb \$(REPO_URI) \$(RELEASE) \$(COMPONENT)" "Created-By: Packages" "Origin: Debian" |
    grep " bookworm"
}
sources >"$scratch/sources.list" || { apt-get update -qq && sources >"$scratch/sources.list"; }
apt-config dump Acquire >"$scratch/apt.conf" # how this machine reaches them

step="making a minimal Debian"
# In a mount namespace, so that its mounts end with it even if it is interrupted.
unshare --mount \
  mmdebstrap --quiet --variant=minbase --aptopt="$scratch/apt.conf" bookworm "$root" "$scratch/sources.list"
mkdir "$root/root/lumo"
git ls-files --cached --others --exclude-standard -z | tar --null --files-from=- --create |
  tar --extract --directory="$root/root/lumo"

# Runs one command there, with processes and mounts that end with it.
bare() {
  unshare --mount --pid --fork --kill-child --mount-proc="$root/proc" chroot "$root" \
    env --ignore-environment HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin bash -c "set -eu; cd ~/lumo; $1"
}

step="looking for commands"
mapfile -t commands < <(documented_commands README.md)
for part in scripts/demo.sh scripts/test.sh "cmake --install" "-S examples/host"; do
  [[ ${commands[*]} == *"$part"* ]] || { echo "README.md has no command with $part" >&2; exit 1; }
done
for command in "${commands[@]}"; do
  step="running $command"
  echo "$command"
  seconds=$SECONDS
  bare "$command" >"$scratch/log" 2>&1 || { cat "$scratch/log"; exit 1; }
  echo "  $((SECONDS - seconds)) s"
done
echo "The commands of README.md work in a minimal Debian."
