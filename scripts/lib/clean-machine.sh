# Sourced by the scripts that test on a clean machine: a Debian 12 in a folder, which debootstrap creates from this
# machine's mirror. Needs root and debootstrap.

# Creates the folder, with some packages.
# usage: make_machine FOLDER [PACKAGE...]
make_machine() {
    local folder=$1 mirror
    shift
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Codename: bookworm' 'Label: Debian' | head -n 1)
    debootstrap --variant=minbase bookworm "$folder" "$mirror"
    on_machine "$folder" apt-get update
    on_machine "$folder" apt-get install --yes --no-install-recommends "$@"
}

# Runs a command there, in its folder /work if that exists. Mounts end with the namespace; of this machine's settings
# only the proxy's are kept.
# usage: on_machine FOLDER COMMAND [ARGUMENT...]
on_machine() {
    local folder=$1
    shift
    env --ignore-environment PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
        ${http_proxy:+http_proxy="$http_proxy"} unshare --mount --fork chroot "$folder" \
        bash -euo pipefail -c 'mount -t proc proc /proc; [ ! -d /work ] || cd /work; "$@"' bash "$@"
}

remove_machine() {
    rm -rf --one-file-system "$1"
}
