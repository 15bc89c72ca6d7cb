#!/bin/sh
# Whole Cox fits against R's coxph on the same data in the same run: n = 1000, 3000 and 10000 rows,
# 10 covariates, Breslow ties, no ties.
#
#   bench/cox_against_r.sh [BENCHMARK-PROGRAM]     default build/release/bin/cox_bench
set -eu
here=$(cd "$(dirname "$0")" && pwd)
program=${1:-$here/../build/release/bin/cox_bench}
if ! command -v Rscript >/dev/null 2>&1 ||
   ! Rscript -e 'quit(status = !requireNamespace("survival", quietly = TRUE))' >/dev/null 2>&1; then
  echo "skipped: R with the package survival is not installed"
  exit 0
fi
if [ ! -x "$program" ]; then
  echo "no benchmark program at $program: build the release preset first" >&2
  exit 1
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
Rscript "$here/cox_against_r.R" prepare "$work"
COX_BENCH_DATA=$work "$program" --benchmark_filter='WholeFit/n:.*survival:0' \
  --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
  --benchmark_out="$work/fits.json" --benchmark_out_format=json >/dev/null
Rscript "$here/cox_against_r.R" compare "$work"
