#!/usr/bin/env bash
# dcf against the tools a user would pick instead, on data this script makes, in one run:
#
#   bench/compare.sh BUILD_DIR [WORK_DIR]
#
# BUILD_DIR is a Release build with -DDCF_BUILD_BENCH=ON that holds tools/dcf/dcf and
# bench/extract_image. WORK_DIR (default /dev/shm/dcf-compare) must be a tmpfs: the inputs, the
# archives and every extraction target live there, so that no disk (this machine's discards on
# delete) drowns the programs. The inputs stay there for later runs; nothing goes into git.
#
# Trees: BIG, a 256 MiB log-like text and 64 MiB of random bytes; SMALL, 20,000 text files of
# 1 to 8 KiB in 400 folders. Jobs: sealing (dcf create of one empty file), creating and
# extracting each tree. dcf seals with a password and a recipient key and extracts with the
# password. Each program of a job runs ROUNDS times (default 3), the programs taking turns in
# each round; the table has the median wall and CPU (user + system) times and the largest peak
# RSS (GNU time); the targets are judged by wall time. Each dcf job then runs once on 1 and once
# on 8 threads (-T), for the peak memory at both ends. Every dcf archive is compared with its
# tree after extraction. The table, with the date, the processor and the load average before
# and after, is printed and appended to bench/RESULTS.md.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "${1:?usage: bench/compare.sh BUILD_DIR [WORK_DIR]}" && pwd)
work=${2:-/dev/shm/dcf-compare}
rounds=${ROUNDS:-3}
dcf=$build/tools/dcf/dcf
maker=$build/bench/extract_image
results=${RESULTS:-$here/RESULTS.md}

for tool in "$dcf" "$maker"; do
    [[ -x $tool ]] || { echo "compare: $tool is missing; build dcf and extract_image" >&2; exit 1; }
done
for tool in /usr/bin/time tar gzip pigz 7zz; do
    command -v "$tool" >/dev/null || { echo "compare: $tool is missing; run scripts/setup.sh" >&2; exit 1; }
done
mkdir -p "$work"
if [[ $(stat -f -c %T "$work") != tmpfs ]]; then
    echo "compare: $work is not on a tmpfs; give a folder under /dev/shm" >&2
    exit 1
fi
cd "$work"
load_before=$(cut -d' ' -f1-3 /proc/loadavg)

# --- Inputs -----------------------------------------------------------------------------------
printf 'bench\n' >password
[[ -f key.pubkey ]] || "$dcf" keygen --name bench --out key >/dev/null
if [[ ! -f big/.done ]]; then
    rm -rf big && mkdir big
    "$maker" data 256 big/text.log
    head -c $((64 << 20)) /dev/urandom >big/random.bin
    touch big/.done
fi
if [[ ! -f small/.done ]]; then
    rm -rf small && mkdir small
    # Log-like lines, 1 to 8 KiB per file, 50 files in each of 400 folders.
    awk 'BEGIN {
        srand(19)
        for (d = 0; d < 400; d++) {
            dir = sprintf("small/d%03d", d)
            system("mkdir -p " dir)
            for (f = 0; f < 50; f++) {
                path = sprintf("%s/f%02d.log", dir, f)
                size = 1024 + int(rand() * 7169)
                text = ""
                while (length(text) < size) {
                    text = text sprintf("%06d %08x user=%d action=%s status=ok\n",
                                        length(text), int(rand() * 4294967295),
                                        int(rand() * 50), rand() < 0.5 ? "read" : "write")
                }
                printf "%s", substr(text, 1, size) > path
                close(path)
            }
        }
    }'
    touch small/.done
fi
mkdir -p empty && : >empty/nothing

# --- Running ----------------------------------------------------------------------------------
median() {
    sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'
}

# run JOB NAME COMMAND...: one timed run; appends "seconds kib cpu-seconds" to times/JOB.NAME.
run() {
    local job=$1 name=$2
    shift 2
    /usr/bin/time -f '%e %M %U %S' -o times/one "$@" >/dev/null
    awk '{ print $1, $2, $3 + $4 }' times/one >>"times/$job.$name"
}

fresh() {
    rm -rf target && mkdir target
}

# job NAME PROGRAM...: each PROGRAM names a function that runs once; ROUNDS rounds, in turn.
job() {
    local name=$1
    shift
    for ((round = 1; round <= rounds; round++)); do
        for program in "$@"; do
            "$program" "$name"
        done
    done
}

rm -rf times && mkdir times

# The dcf runs are recorded as $dcf_name, with the options in dcf_threads.
dcf_name=dcf
dcf_threads=()
dcf_seal() { run "$1" "$dcf_name" "$dcf" create -q "${dcf_threads[@]}" --overwrite replace \
    --password-file password --recipient key.pubkey seal.dcf empty; }
dcf_create() { run "$1" "$dcf_name" "$dcf" create -q "${dcf_threads[@]}" --overwrite replace \
    --password-file password --recipient key.pubkey "$1.dcf" "$1"; }
pigz_create() { run "$1" pigz sh -c "tar -cf - $1 | pigz -6 -p2 >$1.tar.gz"; }
gzip_create() { run "$1" gzip sh -c "tar -cf - $1 | gzip -6 >$1.gzip.tar.gz"; }
zip_create() { rm -f "$1.zip"; run "$1" 7zz 7zz a -tzip -mem=AES256 -mx=5 -pbench "$1.zip" "$1"; }

dcf_extract() { fresh; run "$1" "$dcf_name" "$dcf" extract -q "${dcf_threads[@]}" \
    --password-file password -C target "${1%-x}.dcf"; }
zip_extract() { fresh; run "$1" 7zz 7zz x -pbench -otarget "${1%-x}.zip"; }
targz_extract() { fresh; run "$1" tar-xzf tar -xzf "${1%-x}.tar.gz" -C target; }
tar_extract() { fresh; run "$1" tar-x tar -xf "${1%-x}.tar" -C target; }
cp_extract() { fresh; run "$1" cp-r cp -r "${1%-x}" target; }

# The dcf archive against its tree, once its timings are taken.
check() {
    fresh
    "$dcf" extract -q --password-file password -C target "$1.dcf"
    diff -r "$1" "target/$1" >/dev/null || { echo "compare: $1.dcf does not give $1 back" >&2; exit 1; }
}

job seal dcf_seal
for tree in big small; do
    job "$tree" dcf_create pigz_create gzip_create zip_create
    tar -cf "$tree.tar" "$tree"
    job "$tree-x" dcf_extract zip_extract targz_extract tar_extract cp_extract
    check "$tree"
done
# Peak memory at both ends of the thread range, one run of each dcf job.
for threads in 1 8; do
    dcf_name=dcf-T$threads
    dcf_threads=(-T "$threads")
    dcf_seal seal
    for tree in big small; do
        dcf_create "$tree"
        dcf_extract "$tree-x"
    done
done
rm -rf target
load_after=$(cut -d' ' -f1-3 /proc/loadavg)

# --- Table ------------------------------------------------------------------------------------
seconds() { cut -d' ' -f1 "times/$1.$2" | median; }
cpu_seconds() { cut -d' ' -f3 "times/$1.$2" | median; }
# The largest of the lines "seconds kib cpu-seconds" on standard input, in MiB.
largest_mib() { cut -d' ' -f2 | sort -n | tail -1 | awk '{ printf "%.1f", $1 / 1024 }'; }
peak_mib() { largest_mib <"times/$1.$2"; }
# all_peak NAME: the largest peak RSS of the runs recorded as NAME in any job.
all_peak() { cat times/*."$1" | largest_mib; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }
# over JOB A B: the median time of A over that of B in JOB.
over() { ratio "$(seconds "$1" "$2")" "$(seconds "$1" "$3")"; }
# target TEXT MEASURED UNIT OP LIMIT: a row of the targets, met when MEASURED OP LIMIT holds.
target() {
    local verdict
    verdict=$(awk -v m="$2" -v op="$4" -v l="$5" \
        'BEGIN { ok = op == "<=" ? m <= l : m >= l; print ok ? "met" : "NOT met" }')
    printf '| %s | %s%s | %s |\n' "$1" "$2" "$3" "$verdict"
}

table() {
    printf '\n## %s UTC, %s, %s CPUs, load %s before, %s after\n\n' \
        "$(date -u '+%Y-%m-%d %H:%M')" "$(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2 | sed 's/^ //')" \
        "$(nproc)" "$load_before" "$load_after"
    printf '`bench/compare.sh`, median of %s alternating runs, inputs and targets on a tmpfs.\n\n' "$rounds"
    printf '| Job | Program | Wall time | Its wall / dcf | CPU time | Its CPU / dcf | Peak RSS |\n'
    printf '|---|---|---:|---:|---:|---:|---:|\n'
    local job program dcfTime dcfCpu
    for entry in "seal:dcf" "big:dcf pigz gzip 7zz" "big-x:dcf 7zz tar-xzf tar-x cp-r" \
        "small:dcf pigz gzip 7zz" "small-x:dcf tar-x tar-xzf cp-r 7zz"; do
        job=${entry%%:*}
        dcfTime=$(seconds "$job" dcf)
        dcfCpu=$(cpu_seconds "$job" dcf)
        for program in ${entry#*:}; do
            printf '| %s | %s | %s s | %s | %s s | %s | %s MiB |\n' "$(label "$job")" \
                "$(name "$job" "$program")" "$(seconds "$job" "$program")" \
                "$(ratio "$(seconds "$job" "$program")" "$dcfTime")" \
                "$(cpu_seconds "$job" "$program")" \
                "$(ratio "$(cpu_seconds "$job" "$program")" "$dcfCpu")" "$(peak_mib "$job" "$program")"
        done
    done
    local peak
    peak=$(cat times/*.dcf* | largest_mib)
    printf '\ndcf peak RSS over all jobs: %s MiB on 1 thread, %s MiB by default, %s MiB on 8 threads.\n' \
        "$(all_peak dcf-T1)" "$(all_peak dcf)" "$(all_peak dcf-T8)"
    printf '\n| Target | Measured | |\n|---|---:|---|\n'
    target 'sealing at most 0.2 s' "$(seconds seal dcf)" ' s' '<=' 0.2
    # "faster than": the other's time over dcf's; "within": dcf's over the other's.
    target 'BIG create at least 1.5x faster than tar c \| pigz -6 -p2' "$(over big pigz dcf)" x '>=' 1.5
    target 'BIG create at least 15x faster than 7zz a zip-AES' "$(over big 7zz dcf)" x '>=' 15
    target 'BIG extract at least 2x faster than 7zz x' "$(over big-x 7zz dcf)" x '>=' 2
    target 'BIG extract within 2x of tar -x' "$(over big-x dcf tar-x)" x '<=' 2
    target 'SMALL create faster than tar c \| pigz -6 -p2' "$(over small pigz dcf)" x '>=' 1
    target 'SMALL extract within 1.5x of tar -x' "$(over small-x dcf tar-x)" x '<=' 1.5
    target 'dcf peak memory at most 32 MiB in every job, on 1 to 8 threads' "$peak" ' MiB' '<=' 32
}

label() {
    case "$1" in
        seal) echo 'Sealing' ;;
        big) echo 'BIG create' ;;
        big-x) echo 'BIG extract' ;;
        small) echo 'SMALL create' ;;
        small-x) echo 'SMALL extract' ;;
    esac
}

name() {
    case "$1:$2" in
        seal:dcf) echo 'dcf create (one empty file)' ;;
        big:dcf | small:dcf) echo 'dcf create (password + recipient)' ;;
        *:pigz) echo 'tar c \| pigz -6 -p2' ;;
        *:gzip) echo 'tar c \| gzip -6' ;;
        big:7zz | small:7zz) echo '7zz a (zip-AES)' ;;
        *:dcf) echo 'dcf extract' ;;
        *:7zz) echo '7zz x' ;;
        *:tar-xzf) echo 'tar -xzf' ;;
        *:tar-x) echo 'tar -x (plain tar)' ;;
        *:cp-r) echo 'cp -r' ;;
    esac
}

table | tee -a "$results"
