# Sourced by scripts/test-operations. The system's log daemons receive lines of the library, each with private folders
# /dev and /run.

records_of_a_batch=5000

# Runs a function of this file, in the current folder, as root in a new mount namespace. If the machine does not allow
# that, says so and continues.
# usage: in_own_system FUNCTION
in_own_system() {
    local unshare=(unshare --mount)
    [ "$(id -u)" -eq 0 ] || unshare+=(--user --map-root-user)
    if ! "${unshare[@]}" true 2>/dev/null; then
        echo "SKIPPED: $1. This machine allows no mount namespaces." >&2
        return
    fi
    root=$root build=$build "${unshare[@]}" bash -euo pipefail -c "source \"\$root/scripts/lib/try-system-logs.sh\"; enter; $1"
}

enter() {
    local device
    mkdir dev
    mount -t tmpfs -o mode=755 none dev
    for device in null zero random urandom; do
        : >"dev/$device"
        mount --bind "/dev/$device" "dev/$device"
    done
    ln -s /proc/self/fd dev/fd
    mount --rbind dev /dev
    mount -t tmpfs none /run
    trap 'kill $(jobs -p) 2>/dev/null || true' EXIT
}

# Waits until a command succeeds, as long as the daemon runs.
# usage: await COMMAND [ARGUMENT...]
await() {
    local tries=0
    until "$@"; do
        if ! kill -0 "$daemon" 2>/dev/null || [ $((++tries)) -gt 600 ]; then
            echo "Failed: \"$*\" does not come true; see $PWD." >&2
            return 1
        fi
        sleep 0.1
    done
}

# Makes the writer log two batches, and restarts the daemon between them.
# usage: log_two_batches LARGEST_RECORD
log_two_batches() {
    local failed
    start_daemon
    coproc writer { exec "$build/tests/operations/zav-log-system-writer" app.properties "$1"; }
    local writer_process=$writer_PID input=${writer[1]}
    echo $records_of_a_batch >&"$input"
    read -r -u "${writer[0]}" failed
    await has_arrived $((records_of_a_batch + 1))
    kill "$daemon"
    wait "$daemon" || true
    start_daemon
    echo $records_of_a_batch >&"$input"
    read -r -u "${writer[0]}" failed
    exec {input}>&-
    wait "$writer_process"
    await has_arrived $((2 * (records_of_a_batch + 1) + 2))
    if [ "$failed" -ne 0 ]; then
        echo "Failed: $failed records were reported as failed." >&2
        return 1
    fi
}

# usage: compare WRITTEN ARRIVED WHAT_IS_SO_IF_THEY_ARE_EQUAL
compare() {
    if [ ! -s "$1" ] || ! cmp "$1" "$2"; then
        echo "Failed: what has arrived is not what was written; see $PWD/$1 and $2." >&2
        return 1
    fi
    echo "$3"
}

try_syslog() {
    cat >app.properties <<'END'
logger.root.level = INFO
appender.syslog = SyslogAppender
appender.syslog.ident = shop
appender.syslog.facility = local3
appender.syslog.layout = json
appender.daemon = SyslogAppender
appender.daemon.ident = shop-2
appender.daemon.facility = daemon
appender.daemon.level = ERROR
appender.copy = SimpleFileAppender
appender.copy.dir = .
appender.copy.file = copy
appender.copy.layout = json
END
    cat >rsyslog.conf <<END
global(workDirectory="$PWD" maxMessageSize="256k")
module(load="imuxsock" sysSock.use="off")
input(type="imuxsock" socket="/dev/log")
template(name="line" type="string" string="%programname% %syslogfacility-text%.%syslogseverity-text%%msg%\\n")
if \$programname != "rsyslogd" then action(type="omfile" file="$PWD/arrived" template="line")
END
    start_daemon() {
        rsyslogd -n -f "$PWD/rsyslog.conf" -i "$PWD/rsyslog.pid" >>rsyslog.out 2>&1 &
        daemon=$!
        await test -S /dev/log
    }
    has_arrived() {
        [ -e arrived ] && [ "$(wc -l <arrived)" -ge "$1" ]
    }
    log_two_batches 102400
    LC_ALL=C sort arrived >arrived.sorted
    sed 's/^/shop local3.info /' copy | LC_ALL=C sort >written.sorted
    compare written.sorted arrived.sorted \
        "syslog: rsyslog got each of $(wc -l <copy) records as it was written, one of 100 KB and those of forked children among them; it was started anew meanwhile."
}

try_journald() {
    local configuration=/etc/systemd/journald.conf
    cat >app.properties <<'END'
logger.root.level = INFO
appender.journal = JournaldAppender
appender.copy = SimpleFileAppender
appender.copy.dir = .
appender.copy.file = copy
appender.copy.layout = json
END
    printf '[Journal]\nStorage=volatile\nRateLimitIntervalSec=0\nReadKMsg=no\nForwardToSyslog=no\nRuntimeMaxUse=1G\n' >journald.conf
    mount --bind journald.conf $configuration
    mkdir -p /run/log/journal /run/systemd/journal
    start_daemon() {
        rm -f /run/systemd/journal/io.systemd.journal # the last one that it creates
        /lib/systemd/systemd-journald >>journald.out 2>&1 &
        daemon=$!
        await test -S /run/systemd/journal/io.systemd.journal
    }
    entries() {
        journalctl --sync
        journalctl --directory /run/log/journal --output json --all --no-pager SYSLOG_IDENTIFIER=zav-log-system-writer
    }
    has_arrived() {
        entries >entries 2>journalctl.err && [ "$(wc -l <entries)" -ge "$1" ]
    }
    log_two_batches 4000000
    jq -cS '[.text, 6, .logger, .file, .line, .thread, .values.number, .values."user.id", .values."user-id", .context.user]' \
        copy | LC_ALL=C sort >written.members
    # A text with a control character, ASCII only here, is shown as an array of bytes.
    jq -cS 'def text: if type == "array" then implode else . end;
            [(.MESSAGE | text), (.PRIORITY | tonumber), .LOGGER, .CODE_FILE, (.CODE_LINE | tonumber), (.TID | tonumber),
             (.NUMBER | tonumber), (.USER_ID | tonumber), (.USER_ID_ | tonumber), (.USER | text)]' \
        entries | LC_ALL=C sort >arrived.members
    compare written.members arrived.members \
        "The journal: each of $(wc -l <copy) records has arrived with its fields, one of 4 MB and those of forked children among them; journald was started anew meanwhile."
}
