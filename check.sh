#!/bin/sh
# Checks what ./test.sh leaves open, and installs what is missing for it.
# Usage: ./check.sh [OPTION...] [STEP...]     all steps, or those named:
#   format     every source is formatted as .clang-format says
#   scripts    shellcheck finds nothing in the scripts
#   gcc        everything is built by g++ without a warning; what has changed also without precompiled headers
#   tidy       clang-tidy finds nothing in app/base, store and core, and in what else has changed
#   sanitize   the tests of app/base, store, core and exchange pass under the address and undefined behaviour sanitizers
# Steps that are too long for every day, run when they are named or with --long:
#   faults     failing disks, power failures, 10,000 kills and several programs at once, all that there is to try
#              (QUILLON_KILLS, QUILLON_CRASH_DISKS, QUILLON_STEPS_AT_ONCE and QUILLON_SEED change it)
#   fuzz       every fuzzer for ten minutes (QUILLON_FUZZ_SECONDS and QUILLON_SEED change it)
#   input      Japanese is typed into the windows with a real input method, under a display in memory
# Options:
#   --base REVISION   what changed since this revision counts as changed; without it, what the last ten commits
#                     changed, of which tidy reads the five tests that changed last, and gcc twenty sources
#   --all             tidy reads everything, and gcc builds everything without precompiled headers, too
#   --sanitize-all    sanitize runs all tests
#   --long            adds the steps faults, fuzz and input
# Every step is run, whatever became of those before it. What a step said stays in build/check/STEP.log.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
cd "$root"
logs=build/check
most_tests=5
most_sources=20

usage()
{
    sed -n '2,/^set -eu$/s/^# \{0,1\}//p' "$root/check.sh" | sed '$d'
}

# The history may belong to somebody else, as in a container.
history()
{
    git -c safe.directory='*' "$@"
}

all_steps="format scripts gcc tidy sanitize"
steps=
base=
everything=no
sanitize_all=no
long=no
while [ $# -gt 0 ]; do
    case $1 in
        --help | -h)
            usage
            exit 0 ;;
        --base)
            if [ $# -lt 2 ] || ! history rev-parse --verify --quiet "$2^{commit}" >/dev/null; then
                echo "check.sh: --base needs a revision" >&2
                exit 2
            fi
            base=$2
            shift ;;
        --all) everything=yes ;;
        --sanitize-all) sanitize_all=yes ;;
        --long) long=yes ;;
        format | scripts | gcc | tidy | sanitize | faults | fuzz | input) steps="$steps $1" ;;
        *)
            echo "check.sh: unknown word '$1'" >&2
            usage >&2
            exit 2 ;;
    esac
    shift
done

# All sources, whether they are known to git or not.
sources()
{
    find app bench core exchange store tests tools ui -name '*.cpp' -o -name '*.h'
}

format()
{
    sources | xargs clang-format --dry-run -Werror
}

scripts()
{
    find . -path ./build -prune -o -path ./workspace -prune -o -name '*.sh' -exec shellcheck .ci/run {} +
}

# Paths that changed, the newest first: what is not committed yet, then commit by commit.
changed_paths()
{
    history diff --name-only HEAD
    history ls-files --others --exclude-standard
    if [ -n "$base" ]; then
        history diff --name-only "$base" HEAD
    else
        history log --max-count=10 --name-only --format=
    fi
}

# The test of each path on the input. That of a header is the source of its name, or the first that includes it.
# Less the folders of tests that are read as a whole, and the tests of Windows alone, which are not compiled here.
tests_of()
{
    while read -r path; do
        case $path in
            tests/*.cpp) test=$path ;;
            tests/*.h)
                test=${path%.h}.cpp
                [ -f "$test" ] || test=$(grep -rlF --include='*.cpp' "#include \"$path\"" tests | head -n 1) ;;
            *) continue ;;
        esac
        [ ! -f "$test" ] || echo "$test"
    done | awk '!/^tests\/(support|old_files)\// && !/\/test_windows_/ && !seen[$0]++'
}

# The source of each path on the input, less the tests. That of a header is the source of its name, or the first that
# includes it.
sources_of()
{
    while read -r path; do
        case $path in
            tests/*) continue ;;
            *.cpp) source=$path ;;
            *.h)
                source=${path%.h}.cpp
                [ -f "$source" ] || source=$(grep -rlF --include='*.cpp' "#include \"$path\"" \
                    app bench core exchange store tools ui | head -n 1) ;;
            *) continue ;;
        esac
        [ ! -f "$source" ] || echo "$source"
    done | awk '!seen[$0]++'
}

# The tests are compiled without precompiled headers by tidy.
gcc()
{
    cmake --preset gcc && cmake --build --preset gcc || return
    if [ $everything = yes ]; then
        tools/includes.sh
        return
    fi
    history rev-parse --verify --quiet HEAD >/dev/null || return 0
    changed_paths | sources_of >"$logs/sources"
    changed=$(wc -l <"$logs/sources")
    if [ -z "$base" ] && [ "$changed" -gt $most_sources ]; then
        sed -i "$most_sources q" "$logs/sources"
        echo "$most_sources of $changed changed sources without precompiled headers" >"$logs/note"
    fi
    # shellcheck disable=SC2046  # a list of words
    [ "$changed" = 0 ] || tools/includes.sh $(cat "$logs/sources")
}

tidy()
{
    {
        sources | grep -v '^tests/' | xargs -n 1 dirname
        echo tests/support
        echo tests/old_files
    } | sort -u >"$logs/folders"
    : >"$logs/tests"
    if [ $everything = yes ]; then
        sources | grep '^tests/.*\.cpp$' |
            grep -v -e "^tests/support/" -e "^tests/old_files/" -e "/test_windows_" >"$logs/tests"
    else
        if history rev-parse --verify --quiet HEAD >/dev/null; then
            changed_paths >"$logs/changed"
        else
            : >"$logs/changed"
            echo "there is no history that tells what has changed" >"$logs/note"
        fi
        # Everything stands on these floors, whatever changed.
        grep -E '^(app/base|store|core)(/|$)' "$logs/folders" >"$logs/always"
        grep -E '\.(cpp|h)$' "$logs/changed" | xargs -r -n 1 dirname | sort -u | grep -Fx -f "$logs/folders" >>"$logs/always" || :
        sort -u "$logs/always" >"$logs/folders"
        tests_of <"$logs/changed" >"$logs/tests"
        changed=$(wc -l <"$logs/tests")
        # A change of everything does not fit into the time of a build server.
        if [ -z "$base" ] && [ "$changed" -gt $most_tests ]; then
            sed -i "$most_tests q" "$logs/tests"
            echo "$most_tests of $changed changed tests read" >"$logs/note"
        fi
    fi
    # shellcheck disable=SC2046  # lists of words
    tools/tidy.sh $(cat "$logs/folders" "$logs/tests")
}

sanitize()
{
    cmake --preset asan || return
    if [ $sanitize_all = yes ]; then
        cmake --build --preset asan && ctest --preset asan
    else
        cmake --build --preset asan --target tests_base tests_store tests_core tests_exchange &&
            ctest --preset asan -L '^(base|store|core|exchange)$'
    fi
}

# What the tests of faults counted stands in the log.
faults()
{
    cmake --preset dev && cmake --build --preset dev --target tests_faults || return
    QUILLON_FAULTS_LONG=1 QUILLON_KILLS="${QUILLON_KILLS:-10000}" \
        QUILLON_STEPS_AT_ONCE="${QUILLON_STEPS_AT_ONCE:-4000}" QTEST_FUNCTION_TIMEOUT=86400000 \
        ctest --preset dev -L '^faults$' --timeout 86400 --verbose
}

# What a fuzzer learns stays in build/fuzz/corpus, what it finds wrong in build/fuzz/found.
fuzz()
{
    cmake --preset fuzz && cmake --build --preset fuzz || return
    mkdir -p build/fuzz/found
    status=0
    for known in tests/fuzz/corpus/*; do
        name=$(basename "$known")
        mkdir -p "build/fuzz/corpus/$name"
        echo "== $name"
        LSAN_OPTIONS=suppressions=tests/support/leaks.supp QT_QPA_PLATFORM=offscreen QUILLON_COPIES=off \
            "build/fuzz/$name" -max_total_time="${QUILLON_FUZZ_SECONDS:-600}" -timeout=20 -rss_limit_mb=4096 \
            -print_final_stats=1 -verbosity=0 -artifact_prefix="build/fuzz/found/$name-" \
            ${QUILLON_SEED:+-seed="$QUILLON_SEED"} "build/fuzz/corpus/$name" "$known" || status=1
    done
    return $status
}

# What is missing and cannot be installed is named by both scripts.
input()
{
    sh packaging/install-packages.sh display input-method || return
    cmake --preset dev && cmake --build --preset dev --target test_input_method && tests/input-method/run.sh
}

# Adds up the processor time in what the shell's `times` wrote about the processes it has waited for.
seconds_in()
{
    awk 'NR == 2 {
        for (i = 1; i <= 2; ++i) {
            split($i, part, "m")
            sum += part[1] * 60 + part[2]
        }
        printf "%d\n", sum
    }' "$1"
}

[ $long = no ] || all_steps="$all_steps faults fuzz input"
sh packaging/install-packages.sh build test bench asan check
mkdir -p "$logs"

failed=
for step in ${steps:-$all_steps}; do
    printf '%-9s' "$step"
    started=$(date +%s)
    rm -f "$logs/note"
    times >"$logs/before"
    result=ok
    ("$step") >"$logs/$step.log" 2>&1 || result=FAILED
    times >"$logs/after"
    note=
    [ ! -f "$logs/note" ] || note="; $(cat "$logs/note")"
    printf '%-6s %5d s, %d s of processor time%s\n' "$result" $(($(date +%s) - started)) \
        $(($(seconds_in "$logs/after") - $(seconds_in "$logs/before"))) "$note"
    if [ $result != ok ]; then
        failed="$failed $step"
        sed "s/^/    /" "$logs/$step.log"
    fi
done
if [ -n "$failed" ]; then
    echo "check.sh failed:$failed" >&2
    exit 1
fi
