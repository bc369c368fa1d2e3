# Sourced by scripts/test-operations.

records=100000
records_at_once=500
records_of_a_file=1990

# Ships records from a node's rsyslog to a central one, while the series rotates, "zav-log follow" is repeatedly killed,
# and the node's rsyslog and the central one are restarted. All of it runs in the current folder.
# \param 1 the layout of the series, \param 2 the approximate size of a record in bytes
try_rsyslog() {
    local layout=$1 record_size=$2 kills=0 rotations=0 restarts=0 missing step steps=$((records / records_at_once)) live=none now port=32514
    export TZ=UTC # like the lines of json, with which the members are compared
    mkdir logs spool node central store
    until is_free "$port"; do
        port=$((port + 1))
    done
    configure node
    configure central
    trap 'kill $(jobs -p) 2>/dev/null || true' EXIT
    start central
    start node
    start_follow
    coproc writer { exec "$build/tests/operations/zav-log-record-writer" logs $((records_of_a_file * record_size)) "$layout"; }
    for step in $(seq "$steps"); do
        echo "$records_at_once" >&"${writer[1]}"
        case $((step % 20)) in
        # While records arrive, each time at another moment; it stays down for more than a rotation.
        9)
            sleep "0.0$((step / 20))"
            stop KILL "$follow"
            kills=$((kills + 1))
            ;;
        15) start_follow ;;
        esac
        case $((step * 100 / steps)) in
        30) [ -z "$node" ] || { stop TERM "$node" && node= ; } ;;
        33) [ -n "$node" ] || { start node && restarts=$((restarts + 1)); } ;;
        60) [ -z "$central" ] || { stop TERM "$central" && central= ; } ;;
        63) [ -n "$central" ] || { start central && restarts=$((restarts + 1)); } ;;
        esac
        read -r -u "${writer[0]}" last
        now=$(stat --format %i logs/records.log.0)
        [ "$now" = "$live" ] || [ "$live" = none ] || rotations=$((rotations + 1))
        live=$now
        sleep 0.1
    done
    wait_for_arrival
    arrived | LC_ALL=C sort >arrived
    missing=$((records - $(uniq arrived | wc -l)))
    echo "rsyslog: $records records of the layout $layout over $rotations rotations; zav-log follow killed and started $kills times," \
        "rsyslog stopped and started $restarts times: missing $missing, arrived twice or more $(uniq -d arrived | wc -l)."
    [ "$missing" -eq 0 ]
    if [ "$layout" = json ]; then
        compare_members
    fi
}

# Each line written must have arrived with all its members unchanged; its time must be the same point in time.
compare_members() {
    jq -cS . logs/copy | LC_ALL=C sort >written.members
    everything | jq -cS 'del(.source) | .time |= (.[:23] + .[26:] | sub("\\+00:00$"; "Z"))' | LC_ALL=C sort -u >arrived.members
    if ! cmp written.members arrived.members; then
        echo "Failed: members have changed on the way; see $PWD." >&2
        return 1
    fi
    echo "rsyslog: the members of all of them are those that were written."
}

# Adapts the configuration in integrations/ to this machine's addresses and this folder's paths.
configure() {
    {
        echo "global(workDirectory=\"$PWD/$1\")"
        sed -e "s|/var/lib/zav-log|$PWD/spool|; s|/var/log/zav-log|$PWD/store|" \
            -e "s|central.example|127.0.0.1|; s|\"2514\"|\"$port\"|" "$root/integrations/rsyslog/$1.conf"
    } >"$1.conf"
}

is_free() {
    ! (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null
}

# Starts an rsyslog and stores its process id in the variable of its name.
start() {
    rsyslogd -n -f "$PWD/$1.conf" -i "$PWD/$1.pid" >>"$1.out" 2>&1 &
    printf -v "$1" %s $!
}

start_follow() {
    sh "$root/integrations/rsyslog/zav-log-spool" spool logs/records.log. 2>>follow.err &
    follow=$!
}

stop() {
    kill -"$1" "$2"
    wait "$2" 2>/dev/null || true
}

everything() {
    find store -name '*.json' -exec cat {} +
}

# Prints the number of each record that has arrived complete, including duplicates.
arrived() {
    everything |
        LC_ALL=C sed -nE 's/^\{"time":.*"text":"record ([0-9]{8}) \\"ü\\"\\n\\tsecond line",.*"source":.*\}$/\1/p'
}

# Waits until nothing has arrived for a while, a shorter one if everything may have arrived.
wait_for_arrival() {
    local before=-1 now idle=0
    while [ "$idle" -lt 40 ]; do
        sleep 0.5
        now=$(everything | wc -l)
        idle=$((now == before ? idle + (now >= records ? 10 : 1) : 0))
        before=$now
    done
}
