#!/usr/bin/env bash
# Boots a systemd as process 1 of namespaces of its own, until it ends or this script is ended. It sees
# nothing of the machine's settings, users, services and network. Prints the number that systemd's
# process has outside.
#
# Needs root's rights on mounts, namespaces and control groups. Usage:
#   boot.sh machine BUILD_DIR  the machine's programs and libraries, with the agent of BUILD_DIR and its
#                              units where a package would put them
#   boot.sh root ROOT PACKAGES another system; it sees the directory PACKAGES, and ROOT is not changed
set -euo pipefail

arguments=("${@:1:3}")
source=$2
packages=${3-}
tests=$(dirname "$(readlink -f "$0")")
namespaces=(--pid --fork --kill-child --mount --uts --ipc --net --cgroup)

# Two systemds must not share a control group. The mount shows those of this very place.
outside() {
  room=$(mktemp -d)
  groups=$room/groups
  group=$groups/lparams-$$
  trap 'umount -l "$room" 2>/dev/null || true; rmdir "$room"' EXIT
  mount -t tmpfs -o mode=755 tmpfs "$room"
  mkdir "$groups" "$room/root"
  mount -t cgroup2 cgroup2 "$groups"
  mkdir "$group"
  leave() {
    local i
    echo $$ >"$groups/cgroup.procs"
    for ((i = 0; i < 100; ++i)); do # until the last process is gone
      find "$group" -depth -type d -exec rmdir {} + 2>/dev/null && break
      sleep 0.1
    done
    umount -l "$room"
    rmdir "$room"
  }
  trap leave EXIT
  trap 'kill -KILL "$system" 2>/dev/null; wait "$system" || true; exit 1' TERM
  echo $$ >"$group/cgroup.procs"
  STAGE=inside WHERE=$room/root unshare "${namespaces[@]}" "$0" "${arguments[@]}" &
  system=$!
  wait "$system"
}

# The directories of the machine's programs, over which changes are kept in memory.
machine_directories() {
  local link
  mount -t tmpfs -o mode=755 tmpfs "$PWD"
  cd "$PWD" # what is mounted there now
  mkdir -p .old .usr dev etc proc root run sys tmp usr var/lib
  mount -t tmpfs -o mode=755 tmpfs .usr
  mkdir .usr/changes .usr/work
  mount -t overlay -o lowerdir=/usr,upperdir=.usr/changes,workdir=.usr/work overlay usr
  for link in bin sbin lib lib32 lib64 libx32; do
    [[ ! -L /$link ]] || cp -a "/$link" .
  done
}

root_directories() {
  local place=$PWD
  mount -t tmpfs -o mode=755 tmpfs "$place"
  cd "$place"
  mkdir changes work all
  mount -t overlay -o "lowerdir=$source,upperdir=changes,workdir=work" overlay all
  cd all
  mkdir -p .old packages
  mount --bind "$packages" packages
  mount -o remount,bind,ro packages
}

file_systems() {
  local node
  mount -t proc proc proc
  mount --bind proc/sys proc/sys
  mount -o remount,bind,ro proc/sys # the kernel's variables are everybody's
  mount -t sysfs -o ro sysfs sys
  mount -t cgroup2 cgroup2 sys/fs/cgroup
  mount -t tmpfs -o mode=755 tmpfs run
  mount -t tmpfs -o mode=1777 tmpfs tmp
  mount -t tmpfs -o mode=755 tmpfs dev
  mkdir dev/pts dev/shm
  mount -t devpts -o newinstance,ptmxmode=0666 devpts dev/pts
  ln -s pts/ptmx dev/ptmx
  for node in null zero full random urandom tty; do cp -a "/dev/$node" dev/; done
}

machine_contents() {
  cp /etc/ld.so.cache etc/
  printf '%s\n' root:x:0:0::/root:/bin/sh lparams:x:900:900::/:/bin/false \
    member:x:901:901::/:/bin/sh stranger:x:902:902::/:/bin/sh >etc/passwd
  printf '%s\n' root:x:0: lparams:x:900: member:x:901: stranger:x:902: >etc/group
  printf '%s\n' 'passwd: files' 'group: files' >etc/nsswitch.conf
  tr -d - </proc/sys/kernel/random/uuid >etc/machine-id
  mkdir usr/lib/lparams
  cp "$source"/{lparams_agent,lparams_server.so} usr/lib/lparams/
  cp "$source/lparamsctl" usr/bin/
  cp "$tests"/../../packaging/lparams-agent.socket usr/lib/systemd/system/
  for unit in lparams-{agent,apply}.service; do
    sed 's:@prefix@:/usr:' "$tests/../../packaging/$unit.in" >"usr/lib/systemd/system/$unit"
  done
}

root_contents() {
  echo gateway >etc/hostname
  rm -f etc/machine-id
  tr -d - </proc/sys/kernel/random/uuid >etc/machine-id
}

case ${STAGE-} in
  '')
    STAGE=outside exec unshare --mount --cgroup --propagation private "$0" "${arguments[@]}"
    ;;
  outside) outside ;;
  inside)
    read -r process _ </proc/self/stat # of the /proc from outside
    cd "$WHERE"
    "$1_directories"
    file_systems
    "$1_contents"
    pivot_root . .old
    umount -l /.old
    echo "$process"
    exec env -i container=other PATH=/usr/sbin:/usr/bin \
      /lib/systemd/systemd --log-target=journal --unit=basic.target >/dev/null 2>&1
    ;;
esac
