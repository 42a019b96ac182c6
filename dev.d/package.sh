# The Debian packages, in build/packages, and their test.
packages=$build/packages

# pack PRESET: what its build offers.
pack() {
  echo "packing $1, log in build/$1-packages.log"
  (cd "$build/$1" && quietly "$build/$1-packages.log" cpack -B "$packages")
}

# The agent in 32 bit is packed for two systems.
make_packages() {
  local architecture
  rm -rf "$packages"
  compile release lparams_agent lparams_server lparamsctl package_files || return 1
  pack release || return 1
  for architecture in i386 amd64; do
    quietly "$build/release-32.log" cmake -S "$root" --preset release-32 \
      -DLPARAMS_32BIT_ARCHITECTURE="$architecture" || return 1
    compile release-32 lparams_agent lparams_server package_files || return 1
    pack release-32 || return 1
  done
  rm -rf "$packages/_CPack_Packages"
}

# What Debian's own checker finds fault with.
check_packages() {
  quietly "$build/lintian.log" lintian --allow-root --fail-on error,warning "$packages"/*.deb
}

# A Debian 12 with nothing of this machine, from the mirror that it has its own packages from; made
# once. Prints why there is none.
clean_root() {
  local place=$build/clean-root downloads=$build/downloads mirror wanted
  wanted=$(IFS=, && echo "${clean_root_packages[*]}")
  [[ $(cat "$place/.has" 2>/dev/null) != "$wanted" ]] || return 0
  ((EUID == 0)) || {
    echo 'only root can make a clean Debian'
    return 1
  }
  # shellcheck disable=SC2016  # apt's own variables
  mirror=$(apt-get indextargets --format '$(REPO_URI) $(CODENAME) $(COMPONENT)' \
    'Created-By: Packages' | awk '$2 == "bookworm" && $3 == "main" { print $1; exit }')
  [[ $mirror ]] || {
    echo 'this machine has its packages from no mirror of Debian 12'
    return 1
  }
  unshare --mount --pid --fork true 2>/dev/null || {
    echo 'nothing can be booted without mounts and processes of its own'
    return 1
  }
  rm -rf "$place"
  mkdir -p "$downloads"
  debootstrap --variant=minbase --cache-dir="$downloads" --include="$wanted" bookworm "$place" \
    "$mirror" </dev/null >"$build/clean-root.log" 2>&1 || {
    echo "a clean Debian cannot be made: $(tail -n 1 "$build/clean-root.log")"
    rm -rf "$place"
    return 1
  }
  rm -rf "$place"/var/cache/apt/archives/*.deb
  echo "$wanted" >"$place/.has"
}

# test_packages_there MAKER: installs, upgrades and removes the packages in a clean Debian, which that
# process is making.
test_packages_there() {
  local maker=$1 status=0 log=$build/packages-test.log
  wait "$maker" || {
    result skipped packages "$(tail -n 1 "$build/no-clean-root")"
    return
  }
  echo "testing the packages, log in build/packages-test.log (after $SECONDS s)"
  "$root/tests/packaging/packages_test.py" "$build/clean-root" "$packages" </dev/null >"$log" 2>&1 ||
    status=$?
  case $status in
    0) result passed packages ;;
    77) result skipped packages "$(tail -n 1 "$log")" ;;
    *)
      cat "$log"
      result failed packages
      ;;
  esac
}

# Manages a fleet with the programs and the collection of the packages.
test_fleet() {
  local package place=$build/fleet log=$build/fleet-test.log
  need "${fleet_packages[@]}"
  echo 'managing a fleet, log in build/fleet-test.log'
  rm -rf "$place"
  for package in "$packages"/lparams-{agent_*_amd64,client_*,ansible_*}.deb; do
    dpkg-deb -x "$package" "$place"
  done
  if quietly "$log" "$root/tests/fleet/run.py" --agents 10 --bin "$place/usr/lib/lparams" \
    --client "$place/usr/bin/lparamsctl" --collections "$place/usr/share/ansible/collections"; then
    result passed fleet
  else
    result failed fleet
  fi
}

# Looks at the catalogue's page in a browser.
test_page() {
  local log=$build/page-test.log
  need "${browser_packages[@]}"
  echo 'looking at the page, log in build/page-test.log'
  if quietly "$log" "$root/tests/packaging/browser_test.py" "$packages"; then
    result passed page
  else
    result failed page
  fi
}
