# Sourced by the project's commands.

# need PROGRAM=PACKAGE ...: installs the Debian packages of the programs (or, with a "/", the files)
# that are missing, in one go.
need() {
  local missing=() entry
  for entry in "$@"; do
    local wanted=${entry%%=*}
    if [[ $wanted == */* ]]; then
      [ -e "$wanted" ] || missing+=("${entry#*=}")
    else
      command -v "$wanted" >/dev/null 2>&1 || missing+=("${entry#*=}")
    fi
  done
  [ ${#missing[@]} -eq 0 ] && return
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null 2>&1; then
      echo "Missing: ${missing[*]}. As root: apt-get install ${missing[*]}" >&2
      exit 1
    fi
    as_root=(sudo)
  fi
  echo "Installing ${missing[*]}" >&2
  {
    "${as_root[@]}" apt-get update &&
      "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}"
  } >&2
}

# build PRESET: configures and builds below build/PRESET.
build() {
  cmake --preset "$1" && cmake --build --preset "$1" --parallel "$(nproc)"
}

# tidy PRESET [OPTION ...]: has clang-tidy look over the programs' sources, as they are built in
# build/PRESET.
tidy() {
  find src pdf batch tools -name '*.cpp' -print0 |
    xargs -0 -n 1 -P "$(nproc)" clang-tidy -p "build/$1" --quiet "${@:2}" 2>/dev/null
}
