#!/bin/sh
# Checks what ./test.sh leaves open, and installs what is missing for it.
# Usage: ./check.sh [OPTION...] [STEP...]     all steps, or those named:
#   format     every source is formatted as .clang-format says
#   scripts    shellcheck finds nothing in the scripts
#   gcc        everything is built by g++ without a warning, and without precompiled headers
#   tidy       clang-tidy finds nothing in the program, its tools and benchmarks, nor in the tests that changed
#   sanitize   the tests of app/base, store and core pass under the address and undefined behaviour sanitizers
# Options:
#   --base REVISION   what changed since this revision counts as changed; without it, the last ten commits
#   --all             tidy reads all tests
#   --sanitize-all    sanitize runs all tests
#   --long            reserved for runs that are too long for every day; there are none yet, so it changes nothing
# Every step is run, whatever became of those before it. What a step said stays in build/check/STEP.log.
set -eu

root=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
cd "$root"
logs=build/check

usage()
{
    sed -n '2,/^set -eu$/s/^# \{0,1\}//p' "$root/check.sh" | sed '$d'
}

all_steps="format scripts gcc tidy sanitize"
steps=
base=
every_test=no
sanitize_all=no
while [ $# -gt 0 ]; do
    case $1 in
        --help | -h)
            usage
            exit 0 ;;
        --base)
            if [ $# -lt 2 ] || ! git rev-parse --verify --quiet "$2^{commit}" >/dev/null; then
                echo "check.sh: --base needs a revision" >&2
                exit 2
            fi
            base=$2
            shift ;;
        --all) every_test=yes ;;
        --sanitize-all) sanitize_all=yes ;;
        --long) ;;
        format | scripts | gcc | tidy | sanitize) steps="$steps $1" ;;
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
    find app bench core store tests tools ui -name '*.cpp' -o -name '*.h'
}

format()
{
    sources | xargs clang-format --dry-run -Werror
}

scripts()
{
    find . -path ./build -prune -o -path ./workspace -prune -o -name '*.sh' -exec shellcheck .ci/run {} +
}

gcc()
{
    cmake --preset gcc && cmake --build --preset gcc
}

# The oldest revision that counts as unchanged: ten commits ago, or the first commit there is.
unchanged()
{
    if [ -n "$base" ]; then
        echo "$base"
    else
        git rev-list --max-count=11 HEAD | tail -n 1
    fi
}

# Tests that changed or of which a header changed that no source of its name belongs to.
changed_tests()
{
    if [ $every_test = yes ]; then
        sources | grep '^tests/.*\.cpp$'
        return
    fi
    if ! git rev-parse --verify --quiet HEAD >/dev/null; then
        echo "git does not tell here what has changed; --all reads all tests." >&2
        return 1
    fi
    {
        git diff --name-only --diff-filter=d "$(unchanged)" -- tests
        git ls-files --others --exclude-standard -- tests
    } | while read -r path; do
        case $path in
            *.cpp) echo "$path" ;;
            *.h)
                if [ -f "${path%.h}.cpp" ]; then
                    echo "${path%.h}.cpp"
                else
                    grep -rlF --include='*.cpp' "#include \"$path\"" tests | head -n 1
                fi ;;
        esac
    done | sort -u
}

tidy()
{
    folders=$(sources | grep -v '^tests/' | xargs -n 1 dirname | sort -u)
    tests=$(changed_tests) || return
    # shellcheck disable=SC2086  # lists of words
    tools/tidy.sh $folders $tests
}

sanitize()
{
    cmake --preset asan || return
    if [ $sanitize_all = yes ]; then
        cmake --build --preset asan && ctest --preset asan
    else
        cmake --build --preset asan --target tests_base tests_store tests_core &&
            ctest --preset asan -L '^(base|store|core)$'
    fi
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

sh packaging/install-packages.sh build test bench asan check
mkdir -p "$logs"

failed=
for step in ${steps:-$all_steps}; do
    printf '%-9s' "$step"
    started=$(date +%s)
    times >"$logs/before"
    result=ok
    ("$step") >"$logs/$step.log" 2>&1 || result=FAILED
    times >"$logs/after"
    printf '%-6s %5d s, %d s of processor time\n' "$result" $(($(date +%s) - started)) \
        $(($(seconds_in "$logs/after") - $(seconds_in "$logs/before")))
    if [ $result != ok ]; then
        failed="$failed $step"
        sed "s/^/    /" "$logs/$step.log"
    fi
done
if [ -n "$failed" ]; then
    echo "check.sh failed:$failed" >&2
    exit 1
fi
