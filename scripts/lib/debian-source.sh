# Sourced by the scripts that build from the sources of Debian's packages.

# Gets the sources of a Debian package into the current folder, from the mirrors of the machine's binary packages; the
# machine's own lists of packages and sources are not changed. The current folder must be empty. Further arguments are
# options of "apt-get source". The mirror of security updates comes last: if the release has the same version, it may lack
# the files.
get_debian_source() {
    mkdir -p lists/partial cache/archives/partial
    apt-get indextargets --format 'deb-src $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' 'Component: main' | LC_ALL=C sort -ru >sources.list
    if [ ! -s sources.list ]; then
        echo "The machine's package lists name no Debian mirror. Please run: apt-get update" >&2
        return 1
    fi
    local apt_get=(apt-get -o Dir::Etc::SourceList="$PWD/sources.list" -o Dir::Etc::SourceParts=/dev/null
        -o Dir::State::Lists="$PWD/lists" -o Dir::Cache="$PWD/cache" -o APT::Sandbox::User="$(id -un)")
    "${apt_get[@]}" update
    "${apt_get[@]}" source "$@"
}
