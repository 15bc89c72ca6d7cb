#!/bin/sh
# Times the ROC table of 1,000,000 rows with DeLong's error of the area, and the comparison of two
# such tests, against R's pROC in the same run; once with values in thousandths and once with
# values that are nearly all distinct. Fails where table and error take 1 second or more, where R
# is faster, or where the two disagree. Seconds are those of the processor: both run on one thread,
# and the machine may have other work.
#
# Usage: bench/roc_against_r.sh [PROGRAM [ROWS]]
set -eu
here=$(cd "$(dirname "$0")" && pwd)
program=${1:-$here/../build/release/bin/roc_against_r}
rows=${2:-1000000}

if ! command -v Rscript >/dev/null 2>&1 ||
   ! Rscript -e 'quit(status = !requireNamespace("pROC", quietly = TRUE))' >/dev/null 2>&1; then
  echo "skipped: R with its pROC package is not here"
  exit 0
fi
columns=$(mktemp)
trap 'rm -f "$columns"' EXIT INT TERM
failed=0
for rounded in 1 0; do
  "$program" make "$rows" "$rounded" "$columns"
  set -- $("$program" run "$rows" "$rounded") $(Rscript "$here/roc.R" "$columns" "$rows")
  echo "$rows $rounded $*" | awk '
    function size(x) { return x < 0 ? -x : x }
    function agree(what, ours, theirs) {
      printf "  %s %.12g, R %.12g\n", what, ours, theirs
      if (size(ours - theirs) <= 1e-9 * size(theirs)) return 1
      print "  they differ"
      return 0
    }
    {
      kind = $2 == 1 ? "thousandths" : "distinct values"
      printf "%d rows, %s: table and error %.3f s, R %.3f s: %.1f times as fast\n", \
             $1, kind, $3, $8, $8 / $3
      printf "  comparison of two tests %.3f s, R %.3f s: %.1f times as fast\n", $6, $11, $11 / $6
      good = agree("area", $4, $9) + agree("error", $5, $10) + agree("covariance", $7, $12)
      if ($1 <= 1000000 && $3 >= 1) { print "  1 second or more"; exit 1 }
      if ($8 < $3 || $11 < $6) { print "  slower than R"; exit 1 }
      if (good < 3) exit 1
    }' || failed=1
done
exit $failed
