#!/usr/bin/env bash
# Runs the three script benchmarks in Kerrin's language and in Lua 5.4 side by side and prints
# each time and the ratio Kerrin / Lua.
#
# Method: each program runs REPEAT times and the median wall time counts; the start-up time of
# each interpreter (a script that only quits, an empty Lua file), measured the same way, is taken
# off. Sizes are chosen so that each Kerrin run takes about a second or more on a small machine.
#
# Usage: run-script-bench.sh KERRIN BENCH_DIR
set -euo pipefail
kerrin=$(realpath "$1")
source_dir=$(realpath "$2")
repeat=${REPEAT:-3}
lua=${LUA:-lua5.4}
if ! command -v "$lua" > /dev/null; then
  echo "run-script-bench: $lua is missing (Debian package lua5.4)" >&2
  exit 1
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# name size expected-output
benches=(
  "b1-loop 30000000 60030000"
  "b2-fib 35 9227465"
  "b3-strings 2000000"
)

# Median wall time in seconds of a command, over $repeat runs; the output must match $expect.
median() {
  local expect=$1
  shift
  local times=()
  for ((i = 0; i < repeat; i++)); do
    local start end out
    start=$(date +%s.%N)
    out=$("$@")
    end=$(date +%s.%N)
    if [ -n "$expect" ] && [ "$out" != "$expect" ]; then
      echo "run-script-bench: $* printed '$out', expected '$expect'" >&2
      exit 1
    fi
    times+=("$(awk -v a="$start" -v b="$end" 'BEGIN { printf "%.6f", b - a }')")
  done
  printf '%s\n' "${times[@]}" | sort -g | sed -n "$(((repeat + 1) / 2))p"
}

echo 'quit;' > startup.script
: > startup.lua
kerrin_start=$(median "" "$kerrin" -i startup.script)
lua_start=$(median "" "$lua" startup.lua)
printf 'start-up: kerrin %.3f s, lua %.3f s (taken off below)\n' "$kerrin_start" "$lua_start"
printf '%-12s %10s %10s %10s %8s\n' benchmark size kerrin/s lua/s ratio

for entry in "${benches[@]}"; do
  read -r name size expect <<< "$entry"
  sed "s/\bN\b/$size/" "$source_dir/$name.script" > "$name.script"
  k=$(median "${expect:-}" "$kerrin" -i "$name.script")
  l=$(median "${expect:-}" "$lua" "$source_dir/$name.lua" "$size")
  awk -v n="$name" -v s="$size" -v k="$k" -v ks="$kerrin_start" -v l="$l" -v ls="$lua_start" \
    'BEGIN { k -= ks; l -= ls; printf "%-12s %10s %10.3f %10.3f %8.2f\n", n, s, k, l, k / l }'
done
