# The text that every program of examples/ prints, from R's survival alone.
#   Rscript make_expected.R ../../data/lung.csv > lung.txt       (R 4.2.2, survival 3.5-3)
# Curves, log-rank test, quartiles and the Cox fit are the package's. The two weighted tests, and
# the mean with its error, which stop at the last time before the cut, are summed here.
suppressMessages(library(survival))
lung <- read.csv(commandArgs(TRUE)[1])
lung$male <- as.integer(lung$sex == "male")
alpha <- 0.05

cells <- function(x) paste(ifelse(is.na(x), sprintf("%14s", "-"), sprintf("%14.6f", x)), collapse = "")
heading <- function(first, names) cat(sprintf("%-18s", first), sprintf("%14s", names), "\n", sep = "")
row <- function(name, x) cat(sprintf("%-18s", name), cells(x), "\n", sep = "")

# Kaplan-Meier ----
cat(sprintf("Survival by sex: %d patients, code 0, last time %.0f\n", nrow(lung), max(lung$time)))
for (sex in c("female", "male")) {
  d <- lung[lung$sex == sex, ]
  fit <- survfit(Surv(time, status) ~ 1, d, conf.type = "plain", conf.int = 1 - alpha)
  cat(sprintf("\n%s: %d patients, %d times\n", sex, nrow(d), length(fit$time)))
  heading("time", c("at risk", "deaths", "censored", "survival", "std error"))
  cat(sprintf("%-18.0f%14.0f%14.0f%14.0f%14.6f%14.6f\n", fit$time, fit$n.risk, fit$n.event, fit$n.censor,
              fit$surv, fit$surv * fit$std.err), sep = "")
  heading("falls to", c("time", "lower", "upper"))
  # Brookmeyer and Crowley's limits are where the plain limits of the curve cross the level.
  for (level in c(0.25, 0.5, 0.75)) {
    q <- quantile(fit, 1 - level)
    row(sprintf("survival %.2f", level), c(q$quantile, q$lower, q$upper))
  }
  # Cut: the curve does not reach 0 and the times end in censorings only.
  stopifnot(tail(fit$n.event, 1) == 0, tail(fit$surv, 1) > 0)
  r <- length(fit$time)
  cut <- 0
  for (k in 1:(r - 1)) if (fit$n.event[k + 1] == 0 && fit$time[k] > cut) cut <- fit$time[k + 1]
  end <- c(fit$time[-1], Inf)            # each step runs to the next time
  step <- ifelse(end < cut, fit$surv * (end - fit$time), 0)
  mean <- fit$time[1] + sum(step)
  left <- rev(cumsum(rev(step)))         # area from each time on
  part <- ifelse(end < cut & fit$n.risk > fit$n.event,
                 left^2 * fit$n.event / ((fit$n.risk - fit$n.event) * fit$n.risk), 0)
  error <- sqrt(sum(part) * nrow(d) / (nrow(d) - 1))
  z <- qnorm(1 - alpha / 2)
  heading("", c("mean", "std error", "lower", "upper", "cut"))
  row("restricted", c(mean, error, max(0, mean - z * error), mean + z * error, cut))
}

# Chi-square with one degree of freedom from the first sex's weighted observed less expected deaths.
weighted <- function(weight) {
  u <- 0; v <- 0
  for (t in unique(lung$time[lung$status == 1])) {
    risk <- lung$time >= t; N <- sum(risk); n <- sum(risk & lung$male == 0)
    dead <- lung$time == t & lung$status == 1; D <- sum(dead); d <- sum(dead & lung$male == 0)
    u <- u + weight(N) * (d - D * n / N)
    if (N > 1) v <- v + weight(N)^2 * D * (N - D) / (N - 1) * n / N * (1 - n / N)
  }
  u^2 / v
}
logrank <- survdiff(Surv(time, status) ~ sex, lung)$chisq
stopifnot(all.equal(logrank, weighted(function(N) 1)))
chi <- c(logrank, weighted(identity), weighted(sqrt))
cat(sprintf("\nComparison over %d times\n", length(unique(lung$time))))
heading("", c("chi-square", "critical", "p-value"))
for (i in 1:3) row(c("log-rank", "Gehan-Breslow", "Tarone-Ware")[i],
                   c(chi[i], qchisq(1 - alpha, 1), pchisq(chi[i], 1, lower.tail = FALSE)))

# Cox ----
d <- na.omit(lung[, c("time", "status", "age", "male", "ph.ecog")])
fitted <- function(limit, eps) suppressWarnings(coxph(Surv(time, status) ~ age + male + ph.ecog, d, ties = "breslow",
  control = coxph.control(iter.max = limit, eps = eps, toler.chol = 1e-14)))
fit <- fitted(50, 1e-13)
# Newton's steps until the log-likelihood changes by less than the tolerance of 1e-9.
loglik <- sapply(0:12, function(limit) fitted(limit, 1e-300)$loglik[2])
iterations <- which(abs(diff(loglik)) < 1e-9)[1]
cat(sprintf("\nCox regression: %d patients, %d censored, %d distinct times, %d iterations\n", fit$n,
            sum(d$status == 0), length(unique(d$time)), iterations))
heading("", c("coefficient", "std error", "chi-square", "p-value", "hazard ratio", "lower", "upper"))
s <- summary(fit, conf.int = 1 - alpha)
for (name in names(coef(fit))) {
  c1 <- s$coefficients[name, ]; c2 <- s$conf.int[name, ]
  row(name, c(c1["coef"], c1["se(coef)"], c1["z"]^2, c1["Pr(>|z|)"], c1["exp(coef)"], c2[3], c2[4]))
}
heading("model", c("without", "fitted"))
p <- c(0, 3)
deviance <- -2 * fit$loglik
row("events", rep(fit$nevent, 2))
row("covariates", p)
row("-2 log L", deviance)
row("AIC", deviance + 2 * p)
row("SBC", deviance + log(fit$nevent) * p)
heading("", c("df", "chi-square", "p-value"))
row("likelihood ratio", s$logtest[c(2, 1, 3)])
row("score", s$sctest[c(2, 1, 3)])
row("Wald", c(3, fit$wald.test, pchisq(fit$wald.test, 3, lower.tail = FALSE)))
# What the programs show of outputs that they did not ask for: each becomes 0.
cat("not asked for: 0 0 0\n")
