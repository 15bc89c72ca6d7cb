# The R side of the comparisons: the same jobs on the same columns as bench_jobs.
#
#   Rscript jobs.R JOB FILE COLUMNS RUNS
#
# Prints what `bench_jobs time` prints: "seconds" with the processor time of each run, "peak" with
# the most memory the process had, in bytes, and "result" lines to compare.
arguments <- commandArgs(trailingOnly = TRUE)
name <- arguments[1]
count <- as.integer(arguments[3])
runs <- as.integer(arguments[4])
rows <- file.size(arguments[2]) / 8 / count
input <- file(arguments[2], "rb")
columns <- matrix(readBin(input, "double", count * rows), rows)
close(input)

survival_package <- function() suppressMessages(library(survival))
roc_curve <- function(column) {
  pROC::roc(columns[, 1], columns[, column], levels = c(0, 1), direction = "<", quiet = TRUE)
}
life <- list(
  prepare = function() {
    survival_package()
    data.frame(time = columns[, 1], status = columns[, 2], group = columns[, 3])
  },
  run = function(data) {
    curves <- survfit(Surv(time, status) ~ group, data)
    medians <- quantile(curves, c(0.25, 0.5, 0.75))
    test <- survdiff(Surv(time, status) ~ group, data)
    c(logRank = test$chisq, median = medians$quantile[1, 2])
  })
# survdiff takes no late entry: curves and quartiles alone.
late <- list(
  prepare = function() {
    survival_package()
    data.frame(time = columns[, 1], status = columns[, 2], group = columns[, 3],
               entry = columns[, 4])
  },
  run = function(data) {
    curves <- survfit(Surv(entry, time, status) ~ group, data)
    c(median = quantile(curves, c(0.25, 0.5, 0.75))$quantile[1, 2])
  })
# The log-rank test alone.
tests <- list(
  prepare = life$prepare,
  run = function(data) c(logRank = survdiff(Surv(time, status) ~ group, data)$chisq))
cox <- list(
  prepare = function() {
    survival_package()
    list(time = columns[, 1], status = columns[, 2], X = columns[, -(1:2)])
  },
  run = function(data) {
    fit <- coxph(Surv(time, status) ~ X, data, ties = "breslow")
    c(beta = fit$coefficients[[1]], minusTwoLogLik = -2 * fit$loglik[2])
  })
# The engine's fits: with or without what coxph does besides.
hazards <- function(before, run) list(
  prepare = function() {
    survival_package()
    X <- columns[, -seq_len(before), drop = FALSE]
    list(time = columns[, 1], status = columns[, 2], third = columns[, 3], X = X)
  },
  run = function(data) {
    fit <- run(data)
    c(beta = fit$coefficients[[1]], logLik = fit$loglik[2])
  })
bare <- function(data) coxph.fit(data$X, Surv(data$time, data$status), NULL, NULL, NULL,
                                 coxph.control(), NULL, "efron", NULL)
weibull_data <- function() {
  survival_package()
  list(y = Surv(columns[, 1], columns[, 2]), X = columns[, -(1:2)])
}
roc <- list(
  prepare = function() suppressMessages(library(pROC)),
  run = function(data) {
    curve <- roc_curve(2)
    c(area = as.numeric(curve$auc), error = sqrt(var(curve, method = "delong")))
  })
# The test and the curves of every group: there is no test without the curves.
gray <- list(
  prepare = function() suppressMessages(library(cmprsk)),
  run = function(data) {
    tests <- cuminc(columns[, 1], columns[, 2], columns[, 3])$Tests
    c(type1 = tests[1, "stat"], type2 = tests[2, "stat"])
  })
jobs <- list(
  life_days = life, life_distinct = life, life_entry = late,
  addin_life_days = life, addin_life_distinct = life,
  tests_days = tests, tests_distinct = tests,
  cox_distinct = cox, cox_three = cox, cox_weeks = cox,
  hazards_fit = hazards(2, bare), hazards_hundred = hazards(2, bare),
  hazards_all = hazards(2, function(data) coxph(Surv(time, status) ~ X, data)),
  hazards_entry = hazards(3, function(data) {
    agreg.fit(data$X, Surv(data$third, data$time, data$status), NULL, NULL, NULL,
              coxph.control(), NULL, "efron", NULL)
  }),
  hazards_pairs = hazards(3, function(data) {
    coxph(Surv(time, status) ~ X + strata(third), data)
  }),
  hazards_sets = hazards(3, function(data) coxph(Surv(time, status) ~ X + strata(third), data)),
  hazards_discrete = hazards(3, function(data) {
    coxph(Surv(time, status) ~ X + strata(third), data, ties = "exact")
  }),
  param_fit = list(
    prepare = weibull_data,
    run = function(data) {
      fit <- survreg(y ~ X, data, dist = "extreme")
      c(logLik = fit$loglik[2])
    }),
  # What a whole fit takes for each of its iterations.
  param_iteration = list(
    prepare = weibull_data,
    run = function(data) c(share = 1 / survreg(y ~ X, data, dist = "extreme")$iter)),
  incidence = list(
    prepare = function() suppressMessages(library(cmprsk)),
    run = function(data) {
      curves <- cuminc(columns[, 1], columns[, 2])
      # The second event type, at the middle one of the distinct times.
      at <- sort(columns[, 1])[floor(rows / 2) + 1]
      c(incidence = timepoints(curves["1 2"], at)$est[1])
    }),
  gray = gray, gray_curves = gray, incidence_engine = gray,
  finegray = list(
    prepare = function() suppressMessages(library(cmprsk)),
    run = function(data) {
      fit <- crr(columns[, 1], columns[, 2], columns[, -(1:2)], gtol = 1e-10)
      c(beta = fit$coef[[1]], error = sqrt(fit$var[1, 1]))
    }),
  concordance = list(
    prepare = survival_package,
    run = function(data) {
      score <- columns[, -(1:2)] %*% c(0.5, -0.25, 1)
      fit <- concordancefit(Surv(columns[, 1], columns[, 2]), score, reverse = TRUE,
                            std.err = FALSE)
      c(concordance = fit$concordance)
    }),
  bootstrap = list(
    prepare = function() NULL,
    run = function(data) {
      limits <- apply(columns, 2, quantile, c(0.025, 0.975))
      variances <- apply(columns, 2, var)
      c(mean = colMeans(columns)[1], lower = limits[1, 1])
    }),
  roc_rounded = roc, roc_distinct = roc,
  roc_pair = list(
    prepare = function() suppressMessages(library(pROC)),
    run = function(data) c(covariance = cov(roc_curve(2), roc_curve(3), method = "delong"))),
  # No package: the formulas, as one writes them.
  bland_altman = list(
    prepare = function() NULL,
    run = function(data) {
      difference <- columns[, 2] - columns[, 1]
      means <- (columns[, 1] + columns[, 2]) / 2
      bias <- mean(difference)
      deviation <- sd(difference)
      bias_limits <- bias + c(-1, 1) * qt(0.975, rows - 1) * deviation / sqrt(rows)
      limits <- bias + c(-1, 1) * qnorm(0.975) * deviation
      c(first = bias, second = deviation)
    }))

job <- jobs[[name]]
if (is.null(job)) quit(status = 3)
data <- job$prepare()
result <- NULL
timed <- function(repetitions) {
  invisible(gc())
  before <- proc.time()
  for (k in seq_len(repetitions)) result <<- suppressWarnings(job$run(data))
  sum((proc.time() - before)[c("user.self", "sys.self")]) / repetitions
}
seconds <- timed(1)
if (seconds < 20) {
  # The clock moves in steps of milliseconds.
  repetitions <- 1
  while (timed(repetitions) * repetitions < 0.2) repetitions <- 2 * repetitions
  seconds <- vapply(seq_len(runs), function(k) timed(repetitions), 0)
}
if ("share" %in% names(result)) {
  seconds <- seconds * result[["share"]]
  result <- NULL
}
cat("seconds", sprintf("%.9g", seconds), "\n")
peak <- grep("^VmHWM", readLines("/proc/self/status"), value = TRUE)
cat("peak", sprintf("%.0f", as.numeric(gsub("[^0-9]", "", peak)) * 1024), "\n")
for (each in names(result)) cat(sprintf("result %s %.15g\n", each, result[[each]]))
