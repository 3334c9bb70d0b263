#!/bin/sh
# Extraction of two extreme tree shapes by `dcf extract` against `tar -xf` of the same tree:
# folders nested DEPTH deep with one file at the bottom, and FILES empty files in one folder.
# Both extract into WORK_DIR, which should be a memory file system (/dev/shm). Prints the median
# wall time of REPEAT runs each and the ratio; for a depth whose paths pass PATH_MAX, GNU tar
# can't extract the tree at all and only dcf is timed.
#
#   bench/tree-shapes.sh BUILD_DIR WORK_DIR [DEPTH...] [-- FILES...]
#                                      (defaults: depths 2000 10000, files 100000)
#
# BUILD_DIR is a Release build with -DDCF_BUILD_BENCH=ON holding tools/dcf/dcf and
# bench/tree_shapes.
set -eu

build=$(cd "$1" && pwd)
mkdir -p "$2"
work=$(cd "$2" && pwd)
shift 2
depths=""
while [ $# -gt 0 ] && [ "$1" != "--" ]; do depths="$depths $1"; shift; done
[ $# -gt 0 ] && shift
widths=${*:-100000}
depths=${depths:-2000 10000}
repeat=${REPEAT:-3}
dcf=$build/tools/dcf/dcf
maker=$build/bench/tree_shapes
cd "$work"
printf 'bench\n' >password

median() {
    sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'
}

# Median seconds of REPEAT runs of the command given as arguments, each into a fresh "out".
seconds() {
    for _ in $(seq "$repeat"); do
        rm -rf out && mkdir out
        start=$(date +%s.%N)
        "$@" >/dev/null 2>&1 || echo failed >&2
        end=$(date +%s.%N)
        echo "$end - $start" | bc
    done | median
}

# The same tree on disk, for tar: nested folders made one level at a time (no long paths).
deep_tree() {
    rm -rf tree && mkdir tree
    (cd tree && i=0 && while [ $i -lt "$1" ]; do mkdir d && cd d; i=$((i + 1)); done && : >f)
}
wide_tree() {
    rm -rf tree && mkdir -p tree/w
    (cd tree/w && seq 0 $(($1 - 1)) | sed 's/^/f/' | xargs touch)
}

row() {  # shape count archive tarball
    dcfTime=$(seconds "$dcf" extract -q --overwrite replace --password-file password -C out "$3")
    if [ -n "$4" ]; then
        tarTime=$(seconds tar -xf "$4" -C out)
        ratio=$(echo "scale=2; $dcfTime / $tarTime" | bc)
    else
        tarTime="fails (PATH_MAX)" ratio="-"
    fi
    printf '| %s | %s | %s | %s | %s |\n' "$1" "$2" "$dcfTime" "$tarTime" "$ratio"
}

printf '| Shape | Count | dcf extract (s) | tar -xf (s) | dcf / tar |\n'
printf '|---|---:|---:|---:|---:|\n'
for depth in $depths; do
    [ -f "deep-$depth.dcf" ] || "$maker" deep "$depth" "deep-$depth.dcf" bench
    tarball=""
    if [ $((2 * depth + 2)) -lt 4096 ]; then
        [ -f "deep-$depth.tar" ] || { deep_tree "$depth" && tar -cf "deep-$depth.tar" -C tree d; }
        tarball=deep-$depth.tar
    fi
    row "nested folders" "$depth" "deep-$depth.dcf" "$tarball"
done
for files in $widths; do
    [ -f "wide-$files.dcf" ] || "$maker" wide "$files" "wide-$files.dcf" bench
    [ -f "wide-$files.tar" ] || { wide_tree "$files" && tar -cf "wide-$files.tar" -C tree w; }
    row "files in one folder" "$files" "wide-$files.dcf" "wide-$files.tar"
done
rm -rf tree out
