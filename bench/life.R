# Times R's survfit and survdiff on the raw columns that life_against_r made.
# Usage: Rscript life.R FILE ROWS. Prints processor seconds (the shortest of five runs), the log-rank
# statistic and the median of the first group.
suppressMessages(library(survival))
arguments <- commandArgs(trailingOnly = TRUE)
rows <- as.integer(arguments[2])
input <- file(arguments[1], "rb")
columns <- matrix(readBin(input, "double", 3 * rows), rows)
close(input)
data <- data.frame(time = columns[, 1], status = columns[, 2], group = columns[, 3])
seconds <- Inf
for (repetition in 1:5) {
  invisible(gc())
  taken <- system.time({
    curves <- survfit(Surv(time, status) ~ group, data)
    medians <- quantile(curves, c(0.25, 0.5, 0.75))
    test <- survdiff(Surv(time, status) ~ group, data)
  })
  seconds <- min(seconds, taken[["user.self"]] + taken[["sys.self"]])
}
cat(sprintf("%.6f %.15g %.15g\n", seconds, test$chisq, medians$quantile[1, 2]))
