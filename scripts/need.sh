# Sourced by the project's commands.

# need [--no-upgrade] PROGRAM=PACKAGE ...: installs the Debian packages of the programs (or, with a
# "/", the files) that are missing, in one go. With --no-upgrade it rather ends than change a package
# that is there. Where there is no apt-get it lists what is missing, and ends when that is a program:
# files may be elsewhere, and CMake says what it does not find.
need() {
  local missing=() programs=() entry keep=
  if [ "$1" = --no-upgrade ]; then
    keep=1
    shift
  fi
  for entry in "$@"; do
    local wanted=${entry%%=*}
    if [[ $wanted == */* ]]; then
      [ -e "$wanted" ] || missing+=("${entry#*=}")
    elif ! command -v "$wanted" >/dev/null 2>&1; then
      missing+=("${entry#*=}")
      programs+=("$wanted")
    fi
  done
  [ ${#missing[@]} -eq 0 ] && return
  if ! command -v apt-get >/dev/null 2>&1; then
    echo "Not found, by their names in Debian: ${missing[*]}. There is no apt-get to install them" >&2
    [ ${#programs[@]} -eq 0 ] && return
    exit 1
  fi
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null 2>&1; then
      echo "Missing: ${missing[*]}. As root:" >&2
      echo "  apt-get update && apt-get install ${missing[*]}" >&2
      exit 1
    fi
    as_root=(sudo)
  fi
  echo "Installing ${missing[*]}" >&2
  # Lists at hand go with what is installed; newer ones often ask for upgrades.
  with_apt_get "$keep" "${missing[@]}" && return
  "${as_root[@]}" apt-get update >&2 && with_apt_get "$keep" "${missing[@]}" && return
  echo "They could not be installed${keep:+ with all other packages left as they are}. As root:" >&2
  echo "  apt-get update && apt-get install ${missing[*]}" >&2
  exit 1
}

# with_apt_get KEEP PACKAGE ...: installs packages as need says, by the lists at hand.
with_apt_get() {
  local keep=$1 plan options=(-y --no-install-recommends)
  shift
  plan=$(apt-get -s "${options[@]}" install "$@" 2>/dev/null) || return
  if [ -n "$keep" ] && grep -Eq '^(Inst [^ ]+ \[|Remv )' <<<"$plan"; then return 1; fi
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get "${options[@]}" install "$@" >&2
}

# build PRESET: configures and builds below build/PRESET.
build() {
  cmake --preset "$1" && cmake --build --preset "$1" --parallel "$(nproc)"
}

# tidy PRESET [OPTION ...]: has clang-tidy look over the programs' sources, as they are built in
# build/PRESET: there, several may be one.
tidy() {
  sed -n 's/^ *"file": "\(.*\)",\?$/\1/p' "build/$1/compile_commands.json" |
    grep -vF -e "$PWD/tests/" -e "$PWD/fuzz/" -e "$PWD/build/$1/tests/" -e "$PWD/build/$1/fuzz/" |
    xargs -d '\n' -n 1 -P "$(nproc)" clang-tidy -p "build/$1" --quiet "${@:2}" 2>/dev/null
}
