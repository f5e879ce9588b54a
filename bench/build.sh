# Sourced by the benchmarks' commands. Builds a release of trellion and the programs of this
# directory below build/bench, and leaves that directory's name in `build`.

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$top/build/bench
. "$top/scripts/need.sh"

# build_bench [PROGRAM=PACKAGE ...]: with packages, where needed, beyond the compiler. Only what is in
# `targets` is built, when there is something in it.
targets=()
build_bench() {
  need g++=g++ cmake=cmake make=make python3=python3 "$@"
  (
    cd "$top"
    cmake --preset release -B "$build" -DTRELLION_BENCH=ON
    cmake --build "$build" --parallel "$(nproc)" ${targets:+--target "${targets[@]}"}
  ) >/dev/null
}
