#!/usr/bin/env bash
# handover_test.sh WRITER PLC ENGINE: gives a recording to InfluxDB, PostgreSQL or Prometheus and
# compares what is there with what was recorded. WRITER makes the recording, PLC exports it.
#
# The recording: P.count, ULINT 0 to 999 at intervals of 1 s from 2026-11-21T06:00:00Z; P.real with
# 0.5 n, but nan, inf and -inf at the end; P.large with 2^53+1 as LINT and 2^64-1 as ULINT (P.huge);
# P.text with quotes, line ends and other signs; a label and a source that need escapes; P.list of
# three elements; P.fast, three values in one ms. P.count is stale at the end, and the recording ends
# with a gap. So there are 1001 + 1003 + 3 + 3 + 3 + 1 values and 7 + 3 gaps; to Prometheus go 2010
# numbers, P.fast being one and P.text none, and 1002 + 1004 + 5 x 2 times whether they are good.
set -euo pipefail
writer=$1 plc=$2 engine=$3
folder=$(mktemp -d)
pids=()
before_end=:
finish() {
    "$before_end"
    for pid in "${pids[@]}"; do
        kill "$pid" 2>/dev/null && wait "$pid" || true
    done
    rm -rf "$folder"
}
trap finish EXIT

expect() { # NAME WANTED FOUND
    [ "$2" = "$3" ] && return
    printf '%s:\n  wanted: %s\n  found:  %s\n' "$1" "$2" "$3" >&2
    exit 1
}
free_port() { # none of those that the system gives to whoever asks for any
    python3 - <<'PYTHON'
import random, socket
while True:
    port = random.randint(10240, 32767)
    try:
        with socket.socket() as probe:
            probe.bind(("", port))
        break
    except OSError:
        pass
print(port)
PYTHON
}
export_as() { # FORMAT FILE
    "$plc" log --export "$folder/a.sqlite" --format "$1" --output "$2" >/dev/null
}
"$writer" "$folder/a.sqlite"

test_influx() {
    local http rpc lines=$folder/lines
    export_as influx "$lines"
    http=$(free_port) rpc=$(free_port)
    cat >"$folder/influx.conf" <<TEXT
reporting-disabled = true
bind-address = "127.0.0.1:$rpc"
[meta]
  dir = "$folder/meta"
[data]
  dir = "$folder/data"
  wal-dir = "$folder/wal"
[http]
  bind-address = "127.0.0.1:$http"
  log-enabled = false
TEXT
    influxd -config "$folder/influx.conf" >"$folder/influx.log" 2>&1 &
    pids+=($!)
    local url=http://127.0.0.1:$http i
    for ((i = 0; i < 600; ++i)); do
        curl --silent --fail "$url/ping" >/dev/null && break
        sleep 0.1
    done
    ask() { # QUERY: the values of the only row, in CSV, without name, tags and time
        curl --silent --fail --get "$url/query" --header 'Accept: application/csv' --data-urlencode db=plc \
            --data-urlencode epoch=ns --data-urlencode "q=$1" | tail -n +2 | cut -d, -f4-
    }
    curl --silent --fail "$url/query" --data-urlencode 'q=CREATE DATABASE plc' >/dev/null
    expect 'answer to the lines' 204 "$(curl --silent --output "$folder/answer" --write-out '%{http_code}' \
        "$url/write?db=plc" --data-binary "@$lines")"
    expect 'points' 2024 "$(ask 'SELECT count(quality) FROM plc_value')"
    expect 'count and sum' 1000,499500 "$(ask "SELECT count(integer), sum(integer) FROM plc_value WHERE label = 'P.count'")"
    expect 'what is stale' 1 "$(ask "SELECT count(quality) FROM plc_value WHERE label = 'P.count' AND quality = 'stale'")"
    expect 'reals' 1000,249750 "$(ask "SELECT count(real), sum(real) FROM plc_value WHERE label = 'P.real'")"
    expect 'no numbers' nan,inf,-inf "$(ask "SELECT text FROM plc_value WHERE label = 'P.real' AND text != ''" | paste -sd,)"
    expect 'large integer' 9007199254740993 "$(ask "SELECT integer FROM plc_value WHERE label = 'P.large' AND quality = 'good'")"
    expect 'huge integer' 18446744073709551615 "$(ask "SELECT text FROM plc_value WHERE label = 'P.huge' AND quality = 'good'")"
    expect 'list' 1,-2,3 "$(ask "SELECT integer FROM plc_value WHERE label = 'P.list[1]*3' GROUP BY element" | sed 's/.*,//;/^$/d;/integer/d' | paste -sd,)"
    expect 'changes within 1 ms' 3 "$(ask "SELECT count(integer) FROM plc_value WHERE label = 'P.fast'")"
    expect 'text' "$(printf 'say "1,2=3"\\ \n\303\274\342\202\254')" "$(curl --silent --fail --get "$url/query" --data-urlencode db=plc \
        --data-urlencode "q=SELECT text FROM plc_value WHERE label = 'P.text' AND quality = 'good'" |
        python3 -c 'import json, sys; print(json.load(sys.stdin)["results"][0]["series"][0]["values"][0][1])')"
    expect 'names with escapes' 7 "$(ask "SELECT integer FROM plc_value WHERE label = 'odd, = name' AND quality = 'good'")"
}

test_postgresql() {
    local script=$folder/copy.sql
    as=()
    programs=$(ls -d /usr/lib/postgresql/*/bin | tail -1)
    export_as postgresql "$script"
    if [ "$(id -u)" -eq 0 ]; then
        as=(runuser -u postgres --)
        chmod 711 "$folder"
    fi
    mkdir "$folder/server"
    [ ${#as[@]} -eq 0 ] || chown postgres "$folder/server"
    chmod 644 "$script"
    (
        cd "$folder/server"
        "${as[@]}" "$programs/initdb" -D "$folder/server/data" -E UTF8 --locale=C.UTF-8 --auth=trust --no-sync >/dev/null
        "${as[@]}" "$programs/pg_ctl" -D "$folder/server/data" -l "$folder/server/log" -w \
            -o "-k $folder/server -c listen_addresses='' -c fsync=off" start >/dev/null
    )
    stop_server() {
        (cd / && "${as[@]}" "$programs/pg_ctl" -D "$folder/server/data" -m immediate stop >/dev/null)
    }
    before_end=stop_server
    ask() {
        (cd / && "${as[@]}" psql -h "$folder/server" -d postgres --no-psqlrc --tuples-only --no-align --quiet \
            --set ON_ERROR_STOP=1 "$@")
    }
    ask -f "$script"
    expect 'rows' 2024 "$(ask -c 'SELECT count(*) FROM plc_value')"
    expect 'count and sum' '1000|499500' "$(ask -c "SELECT count(integer), sum(integer) FROM plc_value WHERE label = 'P.count'")"
    expect 'what is stale' 1 "$(ask -c "SELECT count(*) FROM plc_value WHERE label = 'P.count' AND quality = 'stale'")"
    expect 'reals' '1000|249750' "$(ask -c "SELECT count(real), sum(real) FROM plc_value WHERE label = 'P.real' AND abs(real) < 'Infinity'")"
    expect 'no numbers' 'NaN,Infinity,-Infinity' "$(ask -c "SELECT string_agg(real::text, ',' ORDER BY time) FROM plc_value WHERE label = 'P.real' AND real IN ('NaN', 'Infinity', '-Infinity')")"
    expect 'large integer' 9007199254740993 "$(ask -c "SELECT integer FROM plc_value WHERE label = 'P.large' AND quality = 'good'")"
    expect 'huge integer' 18446744073709551615 "$(ask -c "SELECT integer FROM plc_value WHERE label = 'P.huge' AND quality = 'good'")"
    expect 'list' '1,-2,3' "$(ask -c "SELECT string_agg(integer::text, ',' ORDER BY element) FROM plc_value WHERE label = 'P.list[1]*3'")"
    expect 'changes within 1 ms' 3 "$(ask -c "SELECT count(integer) FROM plc_value WHERE label = 'P.fast'")"
    expect 'text' "$(printf 'say "1,2=3"\\ \n\303\274\342\202\254')" "$(ask -c "SELECT text FROM plc_value WHERE label = 'P.text' AND quality = 'good'")"
    expect 'names with escapes' 7 "$(ask -c "SELECT integer FROM plc_value WHERE label = 'odd, = name' AND quality = 'good'")"
    expect 'time' '2026-11-21 06:00:00.000' "$(ask -c "SELECT to_char(min(time) AT TIME ZONE 'UTC', 'YYYY-MM-DD HH24:MI:SS.MS') FROM plc_value")"
    expect 'gaps at the end' t "$(ask -c "SELECT bool_and(last = 'gap') FROM (SELECT DISTINCT ON (label) quality AS last FROM plc_value ORDER BY label, time DESC, (quality = 'gap') DESC) AS ends")"
}

test_prometheus() {
    local metrics=$folder/metrics dump=$folder/dump
    export_as openmetrics "$metrics"
    promtool tsdb create-blocks-from openmetrics --quiet "$metrics" "$folder/blocks" >"$folder/log" 2>&1 || {
        cat "$folder/log" >&2
        exit 1
    }
    mkdir "$folder/blocks/wal" # without it the blocks are not read
    promtool tsdb dump "$folder/blocks" >"$dump"
    expect 'samples' 4026 "$(wc -l <"$dump")"
    values() { grep --fixed-strings "label=\"$1\"" "$dump" | grep --fixed-strings "\"$2\"" | awk '{ print $(NF - 1) }'; }
    expect 'count and sum' '1000 499500' "$(values P.count plc_value | awk '{ n += 1; s += $1 } END { print n, s }')"
    expect 'what is known' '1000 of 1002' "$(values P.count plc_good | awk '{ n += 1; s += $1 } END { print s " of " n }')"
    expect 'reals' '1000 249750' "$(values P.real plc_value | grep --invert-match -i '[ni]' | awk '{ n += 1; s += $1 } END { print n, s }')"
    expect 'no numbers' 'NaN +Inf -Inf' "$(values P.real plc_value | grep -i '[ni]' | paste -sd' ')"
    expect 'list' '1 -2 3' "$(values 'P.list[1]*3' plc_value | paste -sd' ')"
    expect 'the last change within 1 ms' 3 "$(values P.fast plc_value)"
    expect 'names with escapes' 7 "$(values 'odd, = name' plc_value)"
    export_as prometheus "$folder/exposition"
    promtool check metrics <"$folder/exposition"
    expect 'nothing is known any more' 0 "$(grep '^plc_good' "$folder/exposition" | awk '{ s += $NF } END { print s }')"
}

"test_$engine"
