#!/usr/bin/env bash
# Whole-process export benchmarks: W1 (10-minute demo take at 240 fps with fingers and two
# props, binary and ASCII), W1-BVH (the same kind of motion from a generated BVH file) and W2
# (the demo take for one hour), through the reference host, beside assimp's export of the same
# BVH file and the zlib floor of W1's key arrays. Prints one table; every ratio comes from
# this run.
#
#   bench/run-export-bench.sh [--skip-w2] [--frames N]
#
# Needs the release build (host and plug-in) and the default build's bench tools:
#   cmake --preset release && cmake --build --preset release
#   cmake --build --preset default --target bench_bvh zlib_floor
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
host=${ZAVO_BENCH_HOST:-$root/build/release/tools/zavo-fbx-export/zavo-fbx-export}
tools=${ZAVO_BENCH_TOOLS:-$root/build/default/bench}
work=${ZAVO_BENCH_DIR:-${TMPDIR:-/tmp}/zavo-export-bench}
frames=144000
run_w2=1
while [ $# -gt 0 ]; do
    case $1 in
        --skip-w2) run_w2=0 ;;
        --frames) frames=$2; shift ;;
        *) echo "usage: $0 [--skip-w2] [--frames N]" >&2; exit 2 ;;
    esac
    shift
done
mkdir -p "$work"
demo=(--demo --demo-rate 240 --demo-fingers --demo-props 2 --preset skeleton)

# measure NAME COMMAND...: wall seconds, CPU seconds and peak resident MB into $work/NAME.time;
# standard output into $work/NAME.out.
measure() {
    local name=$1
    shift
    /usr/bin/time -f "%e %U %S %M" -o "$work/$name.time" "$@" >"$work/$name.out" 2>"$work/$name.err" ||
        { echo "$name failed:" >&2; cat "$work/$name.err" >&2; exit 1; }
}
ours() { measure "$1" "$host" --settings "$work/settings.ini" --deterministic "${@:2}"; }
wall() { awk '{print $1}' "$work/$1.time"; }
cpu() { awk '{print $2 + $3}' "$work/$1.time"; }
peak() { awk '{printf "%.0f", $4 / 1024}' "$work/$1.time"; }
keys() { sed -n 's/.* \([0-9]*\) keys,.*/\1/p' "$work/$1.out" | tail -1; }

[ -s "$work/w1.bvh" ] || "$tools/bench_bvh" "$work/w1.bvh" "$frames" 240

ours w1 "${demo[@]}" --demo-frames "$frames" --format binary "$work/w1.fbx"
read -r floor_wall floor_cpu < <("$tools/zlib_floor" "$work/w1.fbx")
ours w1-ascii "${demo[@]}" --demo-frames "$frames" --format ascii "$work/w1-ascii.fbx"
ours w1-bvh "$work/w1.bvh" --format binary "$work/w1-bvh.fbx"
measure assimp-bvh assimp export "$work/w1.bvh" "$work/assimp.fbx"
measure assimp-bvh-ascii assimp export "$work/w1.bvh" "$work/assimp-ascii.fbx" -ffbxa
[ $run_w2 = 1 ] && ours w2 "${demo[@]}" --demo-frames $((frames * 6)) --format binary "$work/w2.fbx"
rm -f "$work"/*.fbx

row() {  # NAME LABEL FLOOR_WALL FLOOR_CPU ASSIMP
    local n=$1 k
    k=$(keys "$n")
    awk -v label="$2" -v w="$(wall "$n")" -v c="$(cpu "$n")" -v m="$(peak "$n")" -v k="$k" \
        -v fw="$3" -v fc="$4" -v aw="${5:+$(wall "$5")}" -v ac="${5:+$(cpu "$5")}" 'BEGIN {
        printf "| %s | %.2f | %.2f | %s | %.1f M | %.1f M |", label, w, c, m, k / 1e6, k / w / 1e6
        printf " %s | %s |\n", (fw ? sprintf("%.2f / %.2f", w / fw, c / fc) : "-"),
               (aw ? sprintf("%.2f / %.2f", w / aw, c / ac) : "-")
    }'
}
echo "| Case | Wall s | CPU s | Peak MB | Keys | Keys/s (wall) | x floor (wall / CPU) | x assimp (wall / CPU) |"
echo "| --- | --- | --- | --- | --- | --- | --- | --- |"
printf "| zlib floor of W1 | %.2f | %.2f | | | | | |\n" "$floor_wall" "$floor_cpu"
row w1 "W1 binary" "$floor_wall" "$floor_cpu" assimp-bvh
row w1-ascii "W1 ASCII" "" "" assimp-bvh-ascii
row w1-bvh "W1-BVH binary" "" "" assimp-bvh
for a in assimp-bvh assimp-bvh-ascii; do
    printf "| %s | %.2f | %.2f | %s | | | | |\n" "assimp W1-BVH${a#assimp-bvh}" \
        "$(wall $a)" "$(cpu $a)" "$(peak $a)"
done
[ $run_w2 = 1 ] && row w2 "W2 binary" "" "" ""
exit 0
