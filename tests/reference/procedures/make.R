# Stepwise selection by step() of R's stats and bootstrap limits by boot.ci() of its package boot.
# Run in this folder: Rscript make.R
suppressMessages(library(survival))
library(boot)

# --- Selection: a line for each step --------------------------------------------------------------
data <- function(name) read.csv(file.path("../cox/data", paste0(name, ".csv")))
cases <- list(
  list("pbc", "Surv(time, event) ~ trt + age + female + edema + log(bili) + albumin + log(protime) + stage"),
  list("gbsg", "Surv(time, event) ~ age * hormon + factor(grade) + nodes + pgr + er + meno + size"),
  list("colon", "Surv(time, event) ~ lev + fu + sex + age + obstruct + adhere + nodes + surg"))
out <- NULL
for (case in cases) for (direction in c("backward", "forward", "both")) for (kind in c("aic", "bic")) {
  rows <- data(case[[1]])
  control <- coxph.control(eps = 1e-12, toler.chol = 1e-14, iter.max = 50)
  # step() finds the data by their name.
  assign("rows", rows, envir = globalenv())
  full <- coxph(as.formula(case[[2]]), rows, control = control)
  start <- if (direction == "forward") coxph(Surv(time, event) ~ 1, rows, control = control) else full
  k <- if (kind == "aic") 2 else log(sum(rows$event))
  made <- step(start, scope = list(lower = ~ 1, upper = formula(full)), direction = direction, k = k,
               trace = 0)
  path <- made$anova
  for (i in seq_len(nrow(path))) {
    out <- rbind(out, data.frame(data = case[[1]], direction = direction, criterion = kind,
                                 step = i - 1, change = gsub(" ", "", as.character(path$Step[i])),
                                 value = sprintf("%.15g", path$AIC[i])))
  }
}
out$formula <- sapply(out$data, function(name) cases[[match(name, sapply(cases, `[[`, 1))]][[2]])
write.table(out, "step.txt", row.names = FALSE, quote = FALSE, sep = "\t")

# --- Bootstrap limits of given replicates ---------------------------------------------------------
t <- c(2.31, 1.75, 2.02, 3.11, 1.20, 2.65, 1.94, 2.47, 0.88, 2.21, 2.90, 1.66, 2.15, 2.38, 1.81, 2.56,
       3.42, 1.49, 2.08, 2.27, 1.33, 2.72, 1.98, 2.44, 2.61, 1.58, 2.19, 2.83, 1.88, 2.35, 2.11, 1.71,
       2.52, 3.05, 1.05, 2.24, 1.90, 2.41, 2.78, 1.62)
L <- c(0.4, -1.2, 0.7, 2.9, -0.6, -1.1, 0.3, -0.9, 1.5, -2.0)
boot.out <- structure(list(t0 = 2.05, t = matrix(t), R = length(t), call = quote(boot()),
                           sim = "ordinary", stype = "i", strata = rep(1, 10),
                           weights = rep(0.1, 10), data = 1:10, statistic = function(d, i) 0),
                      class = "boot")
limits <- NULL
for (level in c(0.5, 0.8, 0.9)) {
  ci <- boot.ci(boot.out, conf = level, type = c("perc", "basic", "bca"), L = L)
  for (type in c("percent", "basic", "bca")) {
    limits <- rbind(limits, data.frame(level = level, limits = type,
                                       lower = sprintf("%.15g", ci[[type]][4]),
                                       upper = sprintf("%.15g", ci[[type]][5])))
  }
}
limits$acceleration <- sprintf("%.15g", sum(L^3) / (6 * sum(L^2)^1.5))
write.csv(limits, "limits.csv", row.names = FALSE, quote = FALSE)
