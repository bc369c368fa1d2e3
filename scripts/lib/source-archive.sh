# Sourced by the scripts that distribute the sources, after install.sh.

version=$(sed -n 's/^#define ZAV_LOG_VERSION_[A-Z]* \([0-9]*\)$/\1/p' "$root/src/log/Version.h" | paste -sd.)

# The files tracked by git, as they are in the folder, without debian/; if there is no git, everything except build
# results. The same sources give identical archives.
# usage: write_source_archive FILE.tar.gz
write_source_archive() {
    local time
    time=${SOURCE_DATE_EPOCH:-$(git -C "$root" log -1 --format=%ct 2>/dev/null || date +%s)}
    (cd "$root" && { git ls-files -z 2>/dev/null || find . -path ./build -prune -o -type f -printf '%P\0'; }) |
        grep --null-data --invert-match '^debian/' | LC_ALL=C sort --zero-terminated |
        tar --create --directory "$root" --null --verbatim-files-from --files-from - --owner=0 --group=0 --numeric-owner \
            --mtime="@$time" --transform "s,^,zav-log-$version/,S" | gzip -9n >"$1"
}
