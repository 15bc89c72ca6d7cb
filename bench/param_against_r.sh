#!/bin/sh
# Times one log-likelihood with gradient and second derivatives of a Weibull model (1,000,000 rows,
# 10 covariates) against what R's survreg spends per iteration on the same data in the same run: a
# whole fit divided by its iterations, both in processor time. Fails where that is less than 5 times
# as long, or where the log-likelihoods of the fits disagree. Shows as well what one iteration more
# adds to survreg, without its set-up.
#
# Usage: bench/param_against_r.sh [PROGRAM [ROWS [COVARIATES]]]
set -eu
here=$(cd "$(dirname "$0")" && pwd)
program=${1:-$here/../build/release/bin/param_against_r}
rows=${2:-1000000}
covariates=${3:-10}

if ! command -v Rscript >/dev/null 2>&1 ||
   ! Rscript -e 'quit(status = !requireNamespace("survival", quietly = TRUE))' >/dev/null 2>&1; then
  echo "skipped: R with its survival package is not here"
  exit 0
fi
columns=$(mktemp)
trap 'rm -f "$columns"' EXIT INT TERM
"$program" make "$rows" "$covariates" "$columns"
set -- $("$program" run "$rows" "$covariates") $(Rscript "$here/param.R" "$columns" "$rows" "$covariates")
echo "$rows $covariates $*" | awk '{
  printf "%d rows, %d covariates: %.4f s, R %.4f s an iteration: %.1f times as fast\n", \
         $1, $2, $3, $5, $5 / $3
  printf "  one iteration more adds %.4f s to R: %.1f times as fast\n", $6, $6 / $3
  printf "  log-likelihood of the fit %.10g, R %.10g\n", $4, $7
  difference = ($4 - $7) / $7
  if (difference < 0) difference = -difference
  if (difference > 1e-9) { print "  the log-likelihoods differ"; exit 1 }
  if ($5 / $3 < 5) { print "  less than 5 times as fast"; exit 1 }
}'
