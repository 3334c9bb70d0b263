#!/bin/sh
# Creating an archive of a folder that holds a compressible file and a random one, by
# `dcf create` (deflating on as many workers as it takes, up to 4) against `gzip -6` of the same bytes (no encryption) and
# `7zz a -tzip -mem=AES256 -mx=5` of the same folder. Prints wall time, throughput and peak
# resident memory, and the CPU time (user + system, all threads), the median of REPEAT runs each (7zz runs once unless REPEAT_7ZIP says more).
#
#   bench/create-vs-gzip-7zip.sh BUILD_DIR WORK_DIR [TEXT_MIB [RANDOM_MIB]]   (default 256 64)
#
# BUILD_DIR is a Release build with -DDCF_BUILD_BENCH=ON holding tools/dcf/dcf and
# bench/extract_image (which makes the text). WORK_DIR receives the inputs (kept for later
# runs) and the archives. Each archive is checked: dcf and 7zz by extracting, gzip by testing.
set -eu

build=$(cd "$1" && pwd)
work=$2
text=${3:-256}
random=${4:-64}
repeat=${REPEAT:-3}
repeat7=${REPEAT_7ZIP:-1}
dcf=$build/tools/dcf/dcf
maker=$build/bench/extract_image
mkdir -p "$work/tree"
cd "$work"
printf 'bench\n' >password

[ -f "tree/text-$text.log" ] || "$maker" data "$text" "tree/text-$text.log"
[ -f "tree/random-$random.bin" ] || head -c "$((random << 20))" /dev/urandom >"tree/random-$random.bin"
total=$((text + random))

median() {
    sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'
}

# Runs the command given as arguments under GNU time; appends "seconds kib cpu-seconds" to the
# file $timing.
timed() {
    /usr/bin/time -f '%e %M %U %S' -o "$timing.one" "$@"
    awk '{ print $1, $2, $3 + $4 }' "$timing.one" >>"$timing"
}

timing=dcf.times
: >"$timing"
for _ in $(seq "$repeat"); do
    timed "$dcf" create -q --overwrite replace --password-file password out.dcf tree
done
rm -rf check
"$dcf" extract -q --password-file password -C check out.dcf
cmp "tree/text-$text.log" "check/tree/text-$text.log"
cmp "tree/random-$random.bin" "check/tree/random-$random.bin"
rm -rf check

timing=gzip.times
: >"$timing"
for _ in $(seq "$repeat"); do
    timed sh -c 'exec cat "$1" "$2" | gzip -6 >out.gz' gzip "tree/text-$text.log" "tree/random-$random.bin"
done
gzip -t out.gz

timing=7zip.times
: >"$timing"
for _ in $(seq "$repeat7"); do
    rm -f out.zip
    timed sh -c 'exec 7zz a -tzip -mem=AES256 -mx=5 -pbench out.zip tree >/dev/null'
done
7zz t -pbench out.zip >/dev/null

row() {
    seconds=$(cut -d' ' -f1 "$2.times" | median)
    kib=$(cut -d' ' -f2 "$2.times" | median)
    cpu=$(cut -d' ' -f3 "$2.times" | median)
    size=$(stat -c %s "$3")
    dcfSeconds=$(cut -d' ' -f1 dcf.times | median)
    dcfCpu=$(cut -d' ' -f3 dcf.times | median)
    awk -v name="$1" -v s="$seconds" -v k="$kib" -v t="$total" -v b="$size" -v d="$dcfSeconds" \
        -v c="$cpu" -v dc="$dcfCpu" \
        'BEGIN { printf "| %s | %.2f s | %.0f MiB/s | %.2fx | %.2f s | %.2fx | %.1f MiB | %.1f MiB |\n",
                 name, s, t / s, s / d, c, c / dc, k / 1024, b / 1048576 }'
}

printf '| Program | Wall time | Rate | Wall / dcf | CPU time | CPU / dcf | Peak RSS | Output |\n'
printf '|---|---:|---:|---:|---:|---:|---:|---:|\n'
row "dcf create" dcf out.dcf
row "gzip -6" gzip out.gz
row "7zz a -tzip -mem=AES256 -mx=5" 7zip out.zip
