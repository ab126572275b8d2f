#!/bin/sh
# Installs the programs to compare with, as root on Debian 12; those for node go to $BENCH_PEERS, outside the sources.
set -eu
packages="csvkit gnumeric miller python3-openpyxl python3-pandas python3-xlsxwriter sqlite3"
command -v npm >/dev/null || packages="$packages nodejs npm"
# shellcheck disable=SC2086
DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $packages
folder=${BENCH_PEERS:-${TMPDIR:-/tmp}/bench-peers}
mkdir -p "$folder"
cd "$folder"
[ -e package.json ] || echo '{"private": true}' >package.json
npm install --no-audit --no-fund @duckdb/node-api@1.5.5-r.5 nodejs-polars@0.26.1 nodejs-polars-linux-x64-gnu@0.26.1 \
    xlsx@0.18.5
