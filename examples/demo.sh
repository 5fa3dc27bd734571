#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs `headsetmgmt serve` and, against it, `headsetmgmt phone` with each bench of this folder, and
# shows both sides. Succeeds only if every accessory was configured and every report arrived.
#
# Usage: examples/demo.sh PROGRAM
set -euo pipefail

program=$(realpath "$1")
cd "$(dirname "${BASH_SOURCE[0]}")"

record=$(mktemp)
server=
end_server() {
    if [ -n "$server" ]; then
        kill "$server" 2>/dev/null || true
        wait "$server" || true
        server=
    fi
}
trap 'end_server; rm -f "$record"' EXIT

"$program" serve --port 0 --documents documents >"$record" &
server=$!
for _ in $(seq 200); do
    if grep -q '^listening on ' "$record" || ! kill -0 "$server" 2>/dev/null; then
        break
    fi
    sleep 0.05
done
url=$(sed -n 's|^listening on \(http://[^/]*\)/.*|\1|p' "$record")
if [ -z "$url" ]; then
    printf 'demo: the server did not start\n'
    exit 1
fi
printf 'A server listens on %s\n' "$url"

result=0
accessories=0
for bench in benches/*.json; do
    printf '\n== A phone with %s ==\n' "$bench"
    "$program" phone --bench "$bench" --give-up-after 3 \
        --config-url "$url/defaultheadsetconfig.json" --inventory-url "$url/inventory" || result=1
    accessories=$((accessories + $(grep -c '"type":' "$bench")))
done
end_server

printf '\n== What the server saw ==\n'
cat "$record"
reports=$(grep -c '^report to /inventory: ' "$record" || true)
if [ "$reports" -ne "$accessories" ]; then
    printf 'demo: %s accessories, but %s reports\n' "$accessories" "$reports"
    result=1
fi
exit "$result"
