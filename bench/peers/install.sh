#!/bin/sh
# Installs the peers: Debian 12 packages (as root) and one npm package into a folder outside the sources.
set -e
apt-get install -y --no-install-recommends time miller sqlite3 python3-pandas nodejs npm
dir=${BENCH_PEERS:-${TMPDIR:-/tmp}/bench-peers}
mkdir -p "$dir" && cd "$dir"
[ -f package.json ] || npm init -y >/dev/null
npm install @duckdb/node-api@1.5.5-r.5
