# Sourced by .ci/run and scripts/nightly, after install.sh: a long list of checks, each with its name, its command and
# the time that it took.

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

# Builds a preset and runs its tests; shows the number of tests, and all of the output only if one fails.
# usage: test_preset PRESET [-DVARIABLE=VALUE...]
test_preset() {
    local preset=$1
    build_preset "$@"
    quietly "test-$preset" "A test failed; the end of the output says which." \
        ctest --test-dir "build/$preset" --output-on-failure --parallel "$(nproc)"
    grep 'tests passed' "$(log_of "test-$preset")"
}
