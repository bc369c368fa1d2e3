# Sourced by .ci/run and scripts/nightly, after install.sh: runs a long list of checks, each with its title, command and
# duration.

# usage: step TITLE COMMAND [ARGUMENT...]
step() {
    local title=$1 start=$SECONDS
    shift
    echo
    echo "=== $title ($(date +%T))"
    echo "+ $*"
    "$@"
    echo "= $((SECONDS - start)) s"
}

# Runs the tests that were built in a folder below build/; shows their number, and all of the output only if one fails.
# usage: run_tests FOLDER [OPTION OF CTEST...]
run_tests() {
    local folder=$1
    shift
    quietly "test-$folder" "A test failed; the end of the output says which." \
        ctest --test-dir "build/$folder" --output-on-failure "$@"
    grep 'tests passed' "$(log_of "test-$folder")"
}

# Builds a preset and runs its tests.
test_preset() {
    build_preset "$1"
    run_tests "$1" --parallel "$((2 * $(nproc)))" # most tests mostly wait
}
