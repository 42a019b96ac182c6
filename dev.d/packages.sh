# Debian packages by what they are for. The tests are part of every configuration, so GoogleTest is
# needed to build.
build_packages=(g++ g++-multilib cmake ninja-build googletest
  libasio-dev libcli11-dev librapidxml-dev libxxhash-dev libutfcpp-dev nlohmann-json3-dev
  lowdown python3)
fleet_packages=(ansible-core python3 python3-voluptuous yamllint)
test_packages=(bash-completion binutils locales man-db pkg-config python3 python3-seccomp strace systemd valgrind zsh
  "${fleet_packages[@]}")
package_packages=(debootstrap dpkg-dev lintian man-db python3)
# Of the clean Debian that `./dev package --test` makes, beside what every Debian has.
# cffi-backend is a package that cryptography names by what it provides, which debootstrap cannot find.
clean_root_packages=(systemd systemd-sysv dbus man-db bash-completion lib32stdc++6
  g++-multilib pkg-config ansible-core python3-cffi-backend)
# What it looks at the pages with.
browser_packages=(chromium chromium-driver python3-selenium)
prove_packages=(clang clang-tidy cppcheck e2fsprogs libclang-rt-14-dev lld llvm mount shellcheck)
style_packages=(clang-format python3 shellcheck)
tidy_packages=(clang-tidy)
bench_packages=(python3 pkg-config util-linux libbenchmark-dev libglib2.0-dev nlohmann-json3-dev
  libboost-dev libpugixml-dev libyang2-dev libsystemd-dev dbus-daemon)

# need PACKAGE...: installs those that are missing.
need() {
  local missing=() package as_root=(env DEBIAN_FRONTEND=noninteractive)
  for package; do
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed* ]] ||
      missing+=("$package")
  done
  ((${#missing[@]})) || return 0
  echo "installing ${missing[*]}"
  ((EUID == 0)) || as_root=(sudo "${as_root[@]}")
  quietly "$build/packages.log" "${as_root[@]}" apt-get update
  quietly "$build/packages.log" "${as_root[@]}" \
    apt-get install -y --no-install-recommends "${missing[@]}"
}
