# Sourced by the scripts that run Windows programs.

# A Wine prefix private to the project, in build/wine: without a display, a browser, .NET, menu entries, a debugger or
# debug output, unless requested by a variable.
export WINEPREFIX=$root/build/wine WINEARCH=win64 WINEDEBUG=${ZAV_LOG_WINEDEBUG:--all}
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe,winedbg.exe=d"
unset DISPLAY WAYLAND_DISPLAY

# Starts the processes that Wine itself needs, once for all programs that follow, which then start quickly. They end
# with the script.
start_wine() {
    mkdir -p "$WINEPREFIX"
    trap 'wineserver --kill || true' EXIT
    wineserver --persistent
    quietly wine "Wine does not start. If $WINEPREFIX is from another version, remove it." \
        wine wineboot --init </dev/null
}
