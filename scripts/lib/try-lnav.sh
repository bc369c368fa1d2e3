# Sourced by scripts/test-operations.

# Makes lnav check the samples in its format and count the demo's records, and compares with zav-log cat.
try_lnav() {
    mkdir -p home config/formats/zav_log
    cp "$root"/integrations/lnav/*.json config/formats/zav_log
    quietly lnav-format "lnav does not accept the format or one of its samples." env HOME="$PWD/home" lnav -C -I config
    quietly lnav-demo "The demo failed." "$build/examples/zav-log-demo" "$root/examples/demo.properties"

    HOME=$PWD/home lnav -n -I config \
        -c ';SELECT logger, log_level, count(*) FROM zav_log GROUP BY logger, log_level' -c ':write-csv-to -' \
        logs/* audit/* 2>lnav.err | sed 1d | sort >lnav.counts
    # One appender of the demo has a folder that does not exist, which zav-log reports.
    { zav-log cat --count --config "$root/examples/demo.properties" 2>zav-log.err || grep -q "missing" zav-log.err; } |
        counts_as_lnav >zav-log.counts
    if [ ! -s lnav.counts ] || ! diff zav-log.counts lnav.counts >&2; then
        cat lnav.err >&2
        echo "Failed: lnav counts other records (>) than zav-log cat (<)." >&2
        return 1
    fi
    echo "lnav: the samples fit, and its counts of the demo's $(awk -F, '{ n += $3 } END { print n }' lnav.counts)" \
        "records, by logger and level, are those of zav-log cat."
    try_json_in_lnav
}

# Makes lnav read lines with the layout json, including a value and the context of each.
try_json_in_lnav() {
    local read expected=300
    mkdir json
    echo "$expected" | "$build/tests/operations/zav-log-record-writer" json 10000000 json >json/last
    read=$(HOME=$PWD/home lnav -n -I config -c ";SELECT count(*) FROM zav_log_json WHERE log_level = 'info'
        AND jget(log_raw_text, '/values/number') > 0 AND jget(context, '/user') IS NOT NULL" \
        -c ':write-csv-to -' json/copy 2>lnav.err | tail -n 1)
    if [ "$read" != "$expected" ]; then
        cat lnav.err >&2
        echo "Failed: lnav read ${read:-none} of $expected lines of json." >&2
        return 1
    fi
    echo "lnav: $expected lines of json have their values and their context."
}

# Converts the table of zav-log cat --count to lnav's format.
counts_as_lnav() {
    awk 'NR == 1 {
             for (i = 2; i <= NF; ++i) level[i] = $i == "AUDIT" ? "critical" : $i == "CFG" ? "info" : tolower($i)
             next
         }
         { for (i = 2; i <= NF; ++i) count[$1 "," level[i]] += $i }
         END { for (name in count) if (count[name] > 0) print name "," count[name] }' | sort
}
