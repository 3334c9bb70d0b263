#!/bin/sh
# Extraction of one compressible file by `dcf extract` against `gzip -dc` of the same data
# compressed with `gzip -6`, both writing their output to a file in the same folder.
# Prints wall time, throughput and peak resident memory, the median of REPEAT runs each.
#
#   bench/extract-vs-gzip.sh BUILD_DIR WORK_DIR [SIZE_MIB...]     (default sizes: 64 256 1024)
#
# BUILD_DIR is a Release build with -DDCF_BUILD_BENCH=ON holding tools/dcf/dcf and
# bench/extract_image. WORK_DIR receives the inputs (kept for later runs) and the outputs.
set -eu

build=$(cd "$1" && pwd)
work=$2
shift 2
sizes=${*:-64 256 1024}
repeat=${REPEAT:-3}
dcf=$build/tools/dcf/dcf
maker=$build/bench/extract_image
mkdir -p "$work"
cd "$work"
printf 'bench\n' >password

# The median of the lines on standard input.
median() {
    sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'
}

# Runs the command given as arguments under GNU time; appends "seconds kib" to the file $timing.
timed() {
    /usr/bin/time -f '%e %M' -o "$timing.one" "$@"
    cat "$timing.one" >>"$timing"
}

printf '| Size | dcf extract | gzip -dc | dcf / gzip speed | dcf peak RSS | gzip peak RSS |\n'
printf '|---:|---:|---:|---:|---:|---:|\n'
for size in $sizes; do
    raw=data-$size.raw
    [ -f "$raw" ] || "$maker" data "$size" "$raw"
    [ -f "$raw.dcf" ] || "$maker" image "$raw" "$raw.dcf" bench
    [ -f "$raw.gz" ] || gzip -6 -c "$raw" >"$raw.gz"

    timing=dcf-$size.times
    : >"$timing"
    for _ in $(seq "$repeat"); do
        rm -rf out
        timed "$dcf" extract -q --overwrite replace --password-file password -C out "$raw.dcf"
    done
    cmp "$raw" out/data.bin

    timing=gzip-$size.times
    : >"$timing"
    for _ in $(seq "$repeat"); do
        rm -f out.gunzip
        timed sh -c 'exec gzip -dc "$1" >out.gunzip' gzip "$raw.gz"
    done
    cmp "$raw" out.gunzip

    dcfSeconds=$(cut -d' ' -f1 "dcf-$size.times" | median)
    gzipSeconds=$(cut -d' ' -f1 "gzip-$size.times" | median)
    dcfKib=$(cut -d' ' -f2 "dcf-$size.times" | median)
    gzipKib=$(cut -d' ' -f2 "gzip-$size.times" | median)
    awk -v size="$size" -v d="$dcfSeconds" -v g="$gzipSeconds" -v dk="$dcfKib" -v gk="$gzipKib" \
        'BEGIN { printf "| %d MiB | %.2f s (%.0f MiB/s) | %.2f s (%.0f MiB/s) | %.2fx | %.1f MiB | %.1f MiB |\n",
                 size, d, size / d, g, size / g, g / d, dk / 1024, gk / 1024 }'
    rm -rf out out.gunzip
done
