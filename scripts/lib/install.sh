# Sourced by the scripts in the parent folder.
source "$root/scripts/lib/quietly.sh"

# Installs those of the given Debian packages that are missing; without arguments it does nothing.
install_missing() {
    local package missing=() as_root=()
    if ! command -v dpkg-query >/dev/null; then
        echo "This is no Debian machine. Please see to these packages yourself: $*" >&2
        return
    fi
    for package in "$@"; do
        if [ "$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null)" != installed ]; then
            missing+=("$package")
        fi
    done
    if [ ${#missing[@]} -eq 0 ]; then
        return
    fi
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "Missing packages. Please run as root: apt-get install ${missing[*]}" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    quietly install "Could not install: ${missing[*]}. Is the package mirror in reach?" install_packages
}

# Reads the variables of its caller.
install_packages() {
    "${as_root[@]}" apt-get update &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
            apt-get install --yes --no-install-recommends "${missing[@]}"
}

# Calls a script of this folder that creates another folder, unless that exists.
# usage: provide FOLDER SCRIPT [ARGUMENT OF THE SCRIPT...]
provide() {
    local folder=$1 script=$2
    shift 2
    if [ ! -e "$folder" ]; then
        quietly "$script" "Could not make $folder. Is the package mirror in reach?" \
            "$root/scripts/lib/$script" "$folder" "$@"
    fi
}
