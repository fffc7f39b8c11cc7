#!/usr/bin/env bash
# Load and fault runs of the program under lighttpd, as tools/serve runs it on 127.0.0.1:
#   load.sh PROGRAM FIXTURE_TREE_TOOL ROOT [REQUESTS [CONCURRENCY [FAULT_REQUESTS]]]  (2000 16 1000)
# REQUESTS mixed requests (one in ten hostile), CONCURRENCY at a time, then FAULT_REQUESTS of the
# current time while its grid file is rewritten in place and renamed in: every answer status 200
# with a PNG that pngcheck accepts, and no process of the program left once the server stopped.
set -euo pipefail
program=$(realpath "$1") root=$3 requests=${4:-2000} concurrency=${5:-16} faults=${6:-1000}
"$2"
setsid "$(dirname "$0")/../../tools/serve" "$program" "$root" > "$root/serve.out" 2>/dev/null &
serve=$!
trap 'kill -9 -- "-$serve" 2>/dev/null || true' EXIT
for _ in $(seq 200); do base=$(head -n 1 "$root/serve.out") && [ -n "$base" ] && break; sleep 0.1; done
# One request: "valid SECONDS" or "invalid SECONDS".
ask() {
  local out w
  out=$(mktemp -p "$root")
  w=$(curl -s --max-time 60 -o "$out" -w '%{http_code} %{content_type} %{time_total}' "${base}cgi-bin/rdr_sfc_pty_img?$1" || true)
  [[ $w == "200 image/png "* ]] && pngcheck -q "$out" > /dev/null 2>&1 && echo "valid ${w##* }" || echo "invalid ${w##* }"
  rm -f "$out"
}
export -f ask
export base root
# Sends the queries on standard input; prints the tally; fails on an invalid answer.
run() {
  local start=$SECONDS
  xargs -d '\n' -n 1 -P "$concurrency" bash -c 'ask "$0"' > "$root/$1.results"
  local n invalid
  n=$(wc -l < "$root/$1.results") invalid=$(grep -c '^invalid' "$root/$1.results" || true)
  awk '{ print $2 * 1000 }' "$root/$1.results" | sort -n | awk -v n="$n" -v name="$1" -v s=$((SECONDS - start)) -v bad="$invalid" '
    NR == int(n / 2) + 1 { p50 = $1 } NR == int(n * 0.99) + 1 { p99 = $1 }
    END { printf "%s: %d requests in %d s: %d invalid; latency p50 %.0f ms, p99 %.0f ms\n", name, n, s, bad, p50, p99 }'
  [ "$invalid" = 0 ]
}
# The judge must be able to say no: the page is no picture.
curl -s -o "$root/page" "$base" && ! pngcheck -q "$root/page" > /dev/null 2>&1 || { echo "the judge took the page for a picture"; exit 1; }

products=(RNSN RNSN1 RNSN2 RNEX AREA TW HSR RN15X) sizes=(200 300 450 600 800)
layers=("" "&gis=T" "&zoom_level=2&zoom_x=3300000&zoom_y=4400000" "&aws=8&zoom_level=3&zoom_x=2200000&zoom_y=2200000"
  "&aws=1&zoom_level=1&zoom_x=2000000&zoom_y=2000000&griddisp=1&legend=0" "&x1=20&y1=30&x2=80&y2=100&rnexdisp=2")
hostile=("obs=RNSN&tm=202401151205&size=99999999999" "obs=RNSN&tm=202401151205&size=300&map=../x" "&&&&=&=&obs=&size=300"
  "obs=TW&size=300&tm=2024011512051111111111111111111111111111" "obs=RNEX&tm=202401151205&size=-5"
  "obs=HSR&tm=202401151205&size=300&zoom_level=1&zoom_x=abc&zoom_y=-1")
ok=0
for ((i = 0; i < requests; i++)); do
  if ((i % 10 == 9)); then echo "${hostile[i / 10 % 6]}"; else
    printf 'obs=%s&tm=2024011512%02d&size=%d%s\n' "${products[i % 8]}" $((5 * (i / 8 % 12))) "${sizes[i / 3 % 5]}" "${layers[i / 5 % 6]}"; fi
done | run load || ok=1

# The grid file of the program's now (the clock rounded down to 5 minutes) less some minutes; the
# slot before stays, so a reader that finds the current file too small steps back to it.
now_grid() { date -d "@$(($(date +%s) / 300 * 300 - $1))" +"$root/DATA/RDR/OBS/%Y%m/%d/RDR_SFC_PTY_%Y%m%d%H%M.bin.gz"; }
big=$root/DATA/RDR/OBS/202401/15/RDR_SFC_PTY_202401151200.bin.gz small=$root/other-size.bin.gz
mkdir -p "$(dirname "$(now_grid 300)")" && cp "$big" "$(now_grid 300)"
replace() {  # in place in four pieces (readers may see any prefix), then renamed in, in turn
  local rounds=0 path piece
  while [ ! -e "$root/stop" ]; do
    path=$(now_grid 0)
    mkdir -p "$(dirname "$path")"
    if ((rounds % 2)); then cp "$small" "$root/next.gz" && mv "$root/next.gz" "$path"; else
      piece=$(($(stat -c %s "$big") / 4 + 1))
      : > "$path"
      for k in 0 1 2 3; do dd if="$big" of="$path" bs=$piece skip=$k seek=$k count=1 conv=notrunc status=none; sleep 0.002; done
    fi
    rounds=$((rounds + 1))
  done
  echo "the grid file was replaced $rounds times"
}
rm -f "$root/stop"
replace &
replacer=$!
for ((i = 0; i < faults; i++)); do echo "obs=${products[i % 8]}&size=${sizes[i / 8 % 3]}$( ((i % 4)) || echo '&gis=T')"; done | run fault || ok=1
touch "$root/stop" && wait "$replacer"

kill -TERM -- "-$serve" && wait "$serve" || ok=1
left=0
for p in /proc/[0-9]*; do [ "$(readlink "$p/exe" 2>/dev/null)" != "$program" ] || left=$((left + 1)); done
echo "after the server stopped: $left processes of the program left"
((ok == 0 && left == 0)) && echo "load and fault runs: every answer a valid PNG" || { echo "load and fault runs: FAILED"; exit 1; }
