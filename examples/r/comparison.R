# Compares survival in the lung cancer data by sex, from R. From the root of the tree:
#
#   (cd examples/r && PKG_CPPFLAGS=-I../.. PKG_LIBS="-L../../build/release/lib -lsurvival" \
#     R CMD SHLIB calls.c)
#   LD_LIBRARY_PATH=build/release/lib Rscript examples/r/comparison.R data/lung.csv

dyn.load("examples/r/calls.so")
yes <- -1L
no <- 0L # a flag: -1 is true, and 1 would be false

lung <- read.csv(commandArgs(TRUE)[1])
n <- nrow(lung)
stratum <- ifelse(lung$sex == "male", 2, 1)
sizes <- c(sum(stratum == 1), sum(stratum == 2))

# .C copies every argument and returns the copies in a list, which is where the results are. It
# takes them as they are: a count must be integer (228L) and a column double, or the library
# reads one as the other.
sorted <- .C("reorganize", time = as.double(lung$time), n = n, status = as.double(lung$status),
             weight = rep(1, n), stratum = stratum, sizes = as.double(sizes), strata = 2L,
             skip = no, maxTime = 0, code = 0L)
if (sorted$code %in% c(-1L, -2L)) stop("refused with code ", sorted$code)

# The library's matrices are column-major from 1, as R's are.
loaded <- .C("loadTimes", n = n, nTimes = n, strata = 2L, times = sorted$time,
             grid = matrix(0, 3 * 2 + 1, n))
grid <- loaded$grid
offset <- 0L
for (s in 1:2) {
  m <- sizes[s]
  life <- .C("kaplanMeier", n, s, offset, n, 2L, m, sorted$time, sorted$status, sorted$weight,
             intervals = matrix(0, m + 1, 2), table = matrix(0, m + 2, 12), rows = 0L, grid = grid)
  grid <- life$grid
  offset <- offset + m
}
tests <- .C("lifeTests", grid, loaded$n, n, 2L, 0.05, result = matrix(0, 3, 4))$result

cat(sprintf("Comparison over %d times\n", loaded$n))
cat(sprintf("%-18s", ""), sprintf("%14s", c("chi-square", "critical", "p-value")), "\n", sep = "")
for (i in 1:3) {
  name <- c("log-rank", "Gehan-Breslow", "Tarone-Ware")[i]
  cat(sprintf("%-18s", name), sprintf("%14.6f", tests[i, 1:3]), "\n", sep = "")
}
