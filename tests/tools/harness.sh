# Sourced by the tests of the command zav-log: bash TEST PROGRAM [EMULATOR]. Each works in a folder of its own.

program=("${@:2}" "$1")
work=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$work"' EXIT
cd "$work"
failures=0

fail() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

finish() {
    [ "$failures" -eq 0 ] || exit 1
}

zav_log() {
    "${program[@]}" "$@"
}

# Runs the program and compares: expect EXIT_CODE ARGUMENT... <<< OUTPUT. Standard error goes to the file "err".
expect() {
    local code=$1 expected actual status=0
    shift
    expected=$(cat)
    actual=$(zav_log "$@" 2>err) || status=$?
    [ "$status" -eq "$code" ] || fail "zav-log $*: exit code $status instead of $code; $(cat err)"
    [ "$actual" = "$expected" ] || fail "zav-log $*: $(diff <(echo "$expected") <(echo "$actual"))"
}

# expect_error TEXT: what the last "expect" had on standard error must hold this.
expect_error() {
    grep -qF -- "$1" err || fail "no '$1' on standard error, but: $(cat err)"
}
