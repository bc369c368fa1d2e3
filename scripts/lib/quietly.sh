# Sourced by the scripts; they set "root" to the project's folder.

# Prints the path of the step's log file.
log_of() {
    echo "$root/build/logs/$1.log"
}

# Runs a command; only if it fails, shows its output and the advice.
# usage: quietly STEP ADVICE COMMAND [ARGUMENT...]
# A function used as COMMAND must return its failures itself: "set -e" has no effect in it.
quietly() {
    local log advice=$2 status=0
    log=$(log_of "$1")
    shift 2
    mkdir -p "$(dirname "$log")"
    "$@" >"$log" 2>&1 || status=$?
    if [ "$status" -ne 0 ]; then
        {
            cat "$log"
            echo
            echo "Failed: $*"
            echo "$advice"
            echo "Its output is above and in $log."
        } >&2
    fi
    return "$status"
}

# Configures and builds one of the presets in CMakePresets.json.
# usage: build_preset PRESET [-DVARIABLE=VALUE...] [ARGUMENT OF THE BUILD...]
build_preset() {
    quietly "build-$1" "If $root/build/$1 is from another place or compiler, remove that folder and try again." \
        configure_and_build "$@"
}

configure_and_build() {
    local preset=$1 variables=()
    shift
    while [[ ${1:-} == -D* ]]; do
        variables+=("$1")
        shift
    done
    (cd "$root" && cmake --preset "$preset" "${variables[@]}") && cmake --build "$root/build/$preset" "$@"
}
