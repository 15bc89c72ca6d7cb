# Times R's survreg on the columns that param_against_r made.
# Usage: Rscript param.R FILE ROWS COVARIATES. Prints
#   seconds of a whole fit divided by its iterations,
#   seconds that one iteration more adds (the fit without its set-up, stopped after 1 and after 12
#   iterations),
#   the log-likelihood of the fit.
# Each is processor time, the shortest of three runs.
suppressMessages(library(survival))
arguments <- commandArgs(trailingOnly = TRUE)
rows <- as.integer(arguments[2])
p <- as.integer(arguments[3])
input <- file(arguments[1], "rb")
columns <- matrix(readBin(input, "double", (2 + p) * rows), rows)
close(input)
response <- Surv(columns[, 1], columns[, 2])
X <- columns[, -(1:2), drop = FALSE]

shortest <- function(job) {
  seconds <- Inf
  for (repetition in 1:3) {
    invisible(gc())
    taken <- system.time(result <- suppressWarnings(job()))
    seconds <- min(seconds, taken[["user.self"]] + taken[["sys.self"]])
  }
  list(seconds = seconds, result = result)
}

whole <- shortest(function() survreg(response ~ X, dist = "extreme"))
# From far off, so that every one of the iterations moves.
started <- c(-6, rep(0, p), 1)
upTo <- function(iterations) {
  shortest(function() {
    survreg.fit(cbind(1, X), unclass(response), NULL, rep(0, rows), started,
                survreg.control(maxiter = iterations, rel.tolerance = 1e-300),
                dist = survreg.distributions$extreme, nstrat = 1, strata = 0)
  })
}
one <- upTo(1)
many <- upTo(12)
added <- (many$seconds - one$seconds) / (many$result$iter - one$result$iter)
cat(sprintf("%.6f %.6f %.15g\n", whole$seconds / whole$result$iter, added,
            whole$result$loglik[2]))
