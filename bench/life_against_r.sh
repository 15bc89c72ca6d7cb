#!/bin/sh
# Times the analysis of 1,000,000 rows in three groups, from raw columns to the log-rank test,
# against R's survfit and survdiff in the same run, by processor time; once with times of whole
# days and once with times that are nearly all distinct. Fails where R takes less than 5 times as
# long, where the two disagree, or where 200 bytes a row or more are in use at the peak: the
# caller's arrays and everything the library allocates.
#
# Usage: bench/life_against_r.sh [PROGRAM [ROWS]]
set -eu
here=$(cd "$(dirname "$0")" && pwd)
program=${1:-$here/../build/release/bin/life_against_r}
rows=${2:-1000000}

if ! command -v Rscript >/dev/null 2>&1 ||
   ! Rscript -e 'quit(status = !requireNamespace("survival", quietly = TRUE))' >/dev/null 2>&1; then
  echo "skipped: R with its survival package is not here"
  exit 0
fi
columns=$(mktemp)
trap 'rm -f "$columns"' EXIT INT TERM
failed=0
for days in 1 0; do
  "$program" make "$rows" "$days" "$columns"
  set -- $("$program" run "$rows" "$days") $(Rscript "$here/life.R" "$columns" "$rows")
  echo "$rows $days $*" | awk '{
    kind = $2 == 1 ? "whole days" : "distinct times"
    ratio = $7 / $3
    printf "%d rows, %s: %.3f s, R %.3f s: %.1f times as fast, %.0f bytes a row\n", \
           $1, kind, $3, $7, ratio, $6
    printf "  log-rank %.10g, R %.10g; median of group 1 %.10g, R %.10g\n", $4, $8, $5, $9
    difference = $4 - $8
    if (difference < 0) difference = -difference
    if (difference > 1e-8 * $8) { print "  the log-rank statistics differ"; exit 1 }
    if (ratio < 5) { print "  less than 5 times as fast"; exit 1 }
    if ($6 >= 200) { print "  200 bytes a row or more"; exit 1 }
  }' || failed=1
done
exit $failed
