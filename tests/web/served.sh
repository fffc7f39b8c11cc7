#!/usr/bin/env bash
# The program and the viewer page as tools/serve serves them on the fixture tree: curl fetches a
# picture, the page and its configuration; headless Chromium drives the page (when npm ci has run
# in tests/web, as tools/test does). Ctrl-C, and a TERM to the script alone, leave nothing behind.
#   served.sh PROGRAM FIXTURE_TREE_TOOL ROOT SCREENSHOT_DIR
set -euo pipefail
program=$1 root=$3 shots=$4
web=$(cd "$(dirname "$0")" && pwd)
scratch=$root/serve-tmp serve=
fail() { echo "FAIL: $*" >&2; exit 1; }
trap '[ -z "$serve" ] || kill -9 -- "-$serve" 2>/dev/null || true' EXIT
"$2"

# tools/serve in a process group of its own, refreshing the configuration every second; its
# first line is the page's address.
start() {
  mkdir -p "$scratch"
  RDR_SERVE_REFRESH=1 TMPDIR=$scratch setsid env --default-signal=INT "$web/../../tools/serve" "$program" "$root" > "$root/serve.out" 2>/dev/null &
  serve=$!
  for _ in $(seq 200); do base=$(head -n 1 "$root/serve.out") && [ -n "$base" ] && return; sleep 0.1; done
  fail "tools/serve printed no address"
}
# Status and type of a GET; the body goes to $root/body.
get() { curl -sS --max-time 20 -o "$root/body" -w '%{http_code} %{content_type}' "$base$1"; }
# SIGNAL group|script: afterwards nothing of the group lives and the scratch folder is gone.
stop() {
  [ "$(get '' | cut -d' ' -f1)" = 200 ] || fail "no page before SIG$1"
  if [ "$2" = group ]; then kill "-$1" -- "-$serve"; else kill "-$1" "$serve"; fi
  wait "$serve" || fail "tools/serve ended with status $? on SIG$1"
  sleep 0.5
  ! pgrep -g "$serve" > /dev/null || fail "a process of tools/serve outlived SIG$1"
  [ -z "$(ls -A "$scratch")" ] || fail "the scratch folder is left after SIG$1"
  serve=
}

start
# lighttpd takes the program's own status line as the status; the picture is 335 x 380.
[ "$(get 'cgi-bin/rdr_sfc_pty_img?obs=RN15X&tm=202401151230&size=300')" = "200 image/png" ] || fail "the picture"
[ "$(od -An -tu1 -j16 -N8 "$root/body" | tr -s ' ')" = " 0 0 1 79 0 0 1 124" ] || fail "the picture's size"
[ "$(get '')" = "200 text/html; charset=utf-8" ] && grep -q '<script src="viewer.js"' "$root/body" || fail "the page"
# The first catalogue entry of a code counts and a code the query cannot carry is left out; the
# 100-byte file at 12:35 is no time; the colour file's classes slide with the month.
[ "$(get viewer-config.json)" = "200 application/json" ] || fail "the configuration"
config=$(cat "$root/body")
for part in '"refresh": 1,' '"titleHeight": 20, "legendWidth": 35,' \
  $'"maps": {\n    "HR": {"nx": 100, "ny": 120, "xo": 50, "yo": 60},\n    "EW": {"nx": 200, "ny": 100, "xo": 0, "yo": 0}\n  },' \
  '{"code": "RN15X", "title": "AWS 강수(15분)*4", "unit": "mm/h"' '"bounds": [0.1, 0.5, 1, 2, 5, 10, 20, 100]' \
  $'[-14, -11, -8, -5, -2, 1, 4, 7],\n      [-14' \
  $'"times": ["202401151200", "202401151205", "202401151210", "202401151220", "202401151225", "202401151230"]\n}'; do
  [[ $config == *"$part"* ]] || fail "the configuration lacks: $part"
done
if [ -d "$web/node_modules/playwright-core" ]; then
  grid=$root/DATA/RDR/OBS/202401/15/RDR_SFC_PTY_2024011512
  node "$web/browser_viewer.js" "$base" "$shots" "${grid}30.bin.gz" "${grid}40.bin.gz" || fail "the page in a browser"
else
  echo "the browser part is skipped: no tests/web/node_modules (npm ci in tests/web)"
fi
stop INT group
start
stop TERM script
echo "served: every check held"
