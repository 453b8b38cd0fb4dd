#!/usr/bin/env bash
# A private PostgreSQL cluster for the tests' third run: "start STATE BINDIR" makes a cluster in
# a fresh temporary folder and starts it on a unix socket of that folder only (no TCP), as an
# unprivileged user; "stop STATE" stops it and removes the folder. STATE is a file of the build
# tree that names the folder, so the tests find the socket. Nothing of the machine's own
# PostgreSQL is read or changed.
set -euo pipefail

action=$1
state=$2

# The server refuses to run as root; an unprivileged account that every system has serves.
as_owner() {
    if [ "$(id -u)" -eq 0 ]; then
        setpriv --reuid=nobody --regid=nogroup --clear-groups -- "$@"
    else
        "$@"
    fi
}

stop() {
    [ -f "$state" ] || return 0
    local dir
    dir=$(cat "$state")
    if [ -d "$dir/data" ]; then
        as_owner "$bindir/pg_ctl" -D "$dir/data" -m immediate -w stop >/dev/null 2>&1 || true
    fi
    rm -rf -- "$dir"
    rm -f -- "$state"
}

case "$action" in
start)
    bindir=$3
    echo "$bindir" >"$state.bin"
    stop
    dir=$(mktemp -d /tmp/pondar-pg.XXXXXX)
    chmod 755 "$dir"
    [ "$(id -u)" -eq 0 ] && chown nobody:nogroup "$dir"
    echo "$dir" >"$state"
    as_owner "$bindir/initdb" -D "$dir/data" -U pondar --auth=trust -E UTF8 --locale=C.UTF-8 \
        --no-sync >"$dir/initdb.log" 2>&1 || { cat "$dir/initdb.log" >&2; exit 1; }
    # Speed over durability: the cluster lives only as long as the test run.
    as_owner "$bindir/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w -t 60 start -o \
        "-c listen_addresses='' -c unix_socket_directories='$dir' -c fsync=off \
         -c synchronous_commit=off -c full_page_writes=off -c max_connections=200" \
        >/dev/null || { cat "$dir/server.log" >&2; exit 1; }
    ;;
stop)
    bindir=$(cat "$state.bin" 2>/dev/null || true)
    stop
    rm -f -- "$state.bin"
    ;;
*)
    echo "usage: $0 start STATE BINDIR | stop STATE" >&2
    exit 2
    ;;
esac
