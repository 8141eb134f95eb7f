#!/usr/bin/env bash
# Builds the device's third-party runtime once, for powerpc-linux-gnu, into a
# prefix outside the source tree:
#   - libprotobuf 3.21.12 (shared, no protoc), from Debian's protobuf sources;
#   - GoogleTest and GoogleMock (static), from Debian's /usr/src/googletest.
# The prefix is $MGMTMSG_TARGET_CACHE, else $HOME/.cache/mgmtmsg/powerpc-linux-gnu.
# A stamp in the prefix makes later runs a no-op; every run prints the prefix
# as its last line of standard output. Runs as root, with no standard input.
set -euo pipefail

readonly TRIPLE=powerpc-linux-gnu
readonly PROTOBUF_VERSION=3.21.12
readonly PROTOBUF_VERSION_NUMBER=3021012
readonly JOBS=2
HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly HERE
readonly TOOLCHAIN=$HERE/$TRIPLE.cmake
readonly PREFIX=${MGMTMSG_TARGET_CACHE:-$HOME/.cache/mgmtmsg/$TRIPLE}
readonly STAMP=$PREFIX/.target-deps.stamp
readonly WORK=$PREFIX/.work
readonly PACKAGES=("g++-$TRIPLE" qemu-user dpkg-dev cmake make pkg-config protobuf-compiler googletest
  xz-utils)

log() { echo "target-deps: $*" >&2; }
die() {
  log "error: $*"
  exit 1
}

ensure_packages() {
  local missing=() pkg
  for pkg in "${PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}\n' "$pkg" 2>/dev/null | grep -q 'ok installed' || missing+=("$pkg")
  done
  ((${#missing[@]})) || return 0
  log "installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -q </dev/null
  apt-get install -y -q --no-install-recommends "${missing[@]}" </dev/null
}

# What the prefix was built from; a different recipe rebuilds it.
recipe() {
  echo "protobuf $PROTOBUF_VERSION"
  echo "googletest $(dpkg-query -W -f='${Version}' googletest)"
  echo "gcc $($TRIPLE-gcc -dumpfullversion)"
  sha256sum "$HERE/target-deps.sh" "$TOOLCHAIN" | cut -d' ' -f1
}

# Prints "URI<TAB>SUITE<TAB>COMPONENTS<TAB>SIGNED-BY" for each enabled binary
# entry of the machine's apt sources, one-line (*.list) and deb822 (*.sources).
machine_entries() {
  local list parts f
  eval "$(apt-config shell list Dir::Etc::SourceList/f parts Dir::Etc::SourceParts/d)"
  local one_line=() deb822=()
  [[ -f $list ]] && one_line+=("$list")
  for f in "$parts"/*.list; do [[ -f $f ]] && one_line+=("$f"); done
  for f in "$parts"/*.sources; do [[ -f $f ]] && deb822+=("$f"); done
  ((${#one_line[@]} == 0)) || awk '
    { sub(/#.*/, "") }
    $1 != "deb" { next }
    {
      i = 2; signed = ""
      if ($2 ~ /^\[/) {
        for (; i <= NF; i++) {
          if ($i ~ /signed-by=/) { signed = $i; sub(/.*signed-by=/, "", signed); sub(/\]$/, "", signed) }
          if ($i ~ /\]$/) { i++; break }
        }
      }
      comps = ""
      for (k = i + 2; k <= NF; k++) comps = comps (comps == "" ? "" : " ") $k
      if (NF >= i + 2) printf "%s\t%s\t%s\t%s\n", $i, $(i + 1), comps, signed
    }' "${one_line[@]}"
  ((${#deb822[@]} == 0)) || awk '
    function flush(   nu, ns, u, s, uri, suite) {
      if (types ~ /(^| )deb( |$)/ && enabled != "no") {
        nu = split(uris, uri, " "); ns = split(suites, suite, " ")
        for (u = 1; u <= nu; u++) for (s = 1; s <= ns; s++)
          printf "%s\t%s\t%s\t%s\n", uri[u], suite[s], comps, signed
      }
      types = uris = suites = comps = signed = enabled = field = ""
    }
    FNR == 1 { flush() }
    /^#/ { next }
    /^[ \t]*$/ { flush(); next }
    /^[ \t]/ { if (field == "signed-by") signed = "(inline key)"; next }
    {
      field = tolower(substr($0, 1, index($0, ":") - 1))
      value = substr($0, index($0, ":") + 1)
      gsub(/^[ \t]+|[ \t]+$/, "", value); gsub(/[ \t]+/, " ", value)
      if (field == "types") types = value
      else if (field == "uris") uris = value
      else if (field == "suites") suites = value
      else if (field == "components") comps = value
      else if (field == "signed-by") signed = (value == "" ? "(inline key)" : value)
      else if (field == "enabled") enabled = tolower(value)
    }
    END { flush() }' "${deb822[@]}"
}

# The Debian archive's own entries: suites of this release (bookworm,
# bookworm-updates, bookworm-security, ...) trusted through Debian's archive
# keyring. Written as deb-src stanzas of a private deb822 source list.
write_debian_sources() {
  local codename uri suite comps signed found=0
  codename=$(sed -n 's/^VERSION_CODENAME="\{0,1\}\([^"]*\)"\{0,1\}$/\1/p' /etc/os-release)
  [[ -n $codename ]] || die "no VERSION_CODENAME in /etc/os-release"
  while IFS=$'\t' read -r uri suite comps signed; do
    [[ $suite == "$codename" || $suite == "$codename"-* ]] || continue
    [[ -z $signed || $(basename "$signed") == debian-archive-* ]] || continue
    printf 'Types: deb-src\nURIs: %s\nSuites: %s\nComponents: %s\n' "$uri" "$suite" "$comps"
    [[ -z $signed ]] || printf 'Signed-By: %s\n' "$signed"
    echo
    found=1
  done < <(machine_entries | sort -u)
  ((found)) || die "no Debian $codename archive entry in the machine's apt sources"
}

# The highest of the Debian versions read on standard input, one a line.
highest_version() {
  local best="" version
  while read -r version; do
    if [[ -z $best ]] || dpkg --compare-versions "$version" gt "$best"; then best=$version; fi
  done
  echo "$best"
}

# Fetches and unpacks Debian's protobuf 3.21.12 sources into $WORK/protobuf.
fetch_protobuf() {
  local apt_dir=$WORK/apt
  mkdir -p "$apt_dir/sources.list.d" "$apt_dir/lists/partial" "$apt_dir/cache/archives/partial"
  : >"$apt_dir/sources.list"
  write_debian_sources >"$apt_dir/sources.list.d/debian-src.sources"
  local apt_opts=(
    -o "Dir::Etc::SourceList=$apt_dir/sources.list"
    -o "Dir::Etc::SourceParts=$apt_dir/sources.list.d"
    -o "Dir::State::Lists=$apt_dir/lists"
    -o "Dir::Cache=$apt_dir/cache"
    -o APT::Sandbox::User=root
    -o Acquire::Languages=none
  )
  log "fetching source indexes from the machine's Debian archive entries"
  apt-get "${apt_opts[@]}" -q update </dev/null >&2 || die "apt-get update of the private deb-src list failed"
  local release
  for release in "$apt_dir"/lists/*Release; do
    grep -q '^Origin: Debian$' "$release" || die "$(basename "$release") is not from the Debian archive"
  done

  local version
  version=$(apt-cache "${apt_opts[@]}" showsrc protobuf | sed -n 's/^Version: //p' |
    grep -E "^([0-9]+:)?${PROTOBUF_VERSION//./\\.}-" | highest_version) || true
  [[ -n $version ]] || die "Debian's archive offers no protobuf $PROTOBUF_VERSION source package"
  log "fetching protobuf $version source package"
  (cd "$WORK" && apt-get "${apt_opts[@]}" -q source "protobuf=$version" </dev/null >&2) ||
    die "apt-get source protobuf=$version failed"
  mv "$WORK/protobuf-$PROTOBUF_VERSION" "$WORK/protobuf"
  grep -q "GOOGLE_PROTOBUF_VERSION $PROTOBUF_VERSION_NUMBER\$" \
    "$WORK/protobuf/src/google/protobuf/stubs/common.h" ||
    die "unpacked protobuf sources are not version $PROTOBUF_VERSION"
}

# Configures, builds and installs one CMake project for the target.
build_and_install() {
  local name=$1 source=$2
  shift 2
  log "building $name"
  cmake -S "$source" -B "$WORK/build-$name" -G "Unix Makefiles" \
    -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN" -DMGMTMSG_TARGET_PREFIX="$PREFIX" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O2 -DNDEBUG" \
    -DCMAKE_INSTALL_PREFIX="$PREFIX" -DCMAKE_INSTALL_LIBDIR=lib "$@" >&2
  cmake --build "$WORK/build-$name" -j "$JOBS" >&2
  cmake --install "$WORK/build-$name" >&2
}

build_all() {
  rm -rf "${PREFIX:?}/include" "${PREFIX:?}/lib" "$WORK" "$STAMP"
  mkdir -p "$WORK"
  fetch_protobuf
  build_and_install protobuf "$WORK/protobuf" \
    -DBUILD_SHARED_LIBS=ON -Dprotobuf_BUILD_TESTS=OFF -Dprotobuf_BUILD_CONFORMANCE=OFF \
    -Dprotobuf_BUILD_EXAMPLES=OFF -Dprotobuf_BUILD_PROTOC_BINARIES=OFF \
    -Dprotobuf_BUILD_LIBPROTOC=OFF -Dprotobuf_WITH_ZLIB=OFF
  build_and_install googletest /usr/src/googletest \
    -DBUILD_SHARED_LIBS=OFF -DBUILD_GMOCK=ON -DINSTALL_GTEST=ON
  rm -rf "$WORK"
}

main() {
  ensure_packages
  local protoc
  protoc=$(protoc --version)
  [[ $protoc == "libprotoc $PROTOBUF_VERSION" ]] ||
    die "the host's protoc is '$protoc', not the target runtime's version $PROTOBUF_VERSION"
  mkdir -p "$PREFIX"
  exec 9>"$PREFIX/.lock"
  flock 9
  local want
  want=$(recipe)
  if [[ ! -f $STAMP || $(<"$STAMP") != "$want" ]]; then
    local start=$SECONDS
    build_all
    echo "$want" >"$STAMP"
    log "built in $((SECONDS - start)) s"
  fi
  echo "$PREFIX"
}

main "$@"
