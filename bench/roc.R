# Times pROC's curve with DeLong's variance, and its covariance of two areas, on the raw columns
# that roc_against_r made.
# Seconds are those of the processor.
# Usage: Rscript roc.R FILE ROWS. Prints the seconds of curve and variance (the shortest of three
# runs), the area, its standard error, the seconds of two curves with their covariance, and the
# covariance.
suppressMessages(library(pROC))
arguments <- commandArgs(trailingOnly = TRUE)
rows <- as.integer(arguments[2])
input <- file(arguments[1], "rb")
columns <- matrix(readBin(input, "double", 3 * rows), rows)
close(input)
curve <- function(column) {
  roc(columns[, 1], columns[, column], levels = c(0, 1), direction = "<", quiet = TRUE)
}
shortest <- function(run) {
  seconds <- Inf
  for (repetition in 1:3) {
    invisible(gc())
    seconds <- min(seconds, sum(system.time(run())[c("user.self", "sys.self")]))
  }
  seconds
}
curve_seconds <- shortest(function() {
  first <<- curve(2)
  variance <<- var(first, method = "delong")
})
comparison_seconds <- shortest(function() {
  covariance <<- cov(curve(2), curve(3), method = "delong")
})
cat(sprintf("%.6f %.15g %.15g %.6f %.15g\n", curve_seconds, as.numeric(auc(first)),
            sqrt(variance), comparison_seconds, covariance))
