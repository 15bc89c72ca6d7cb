# Makes survreg.csv: fits of the veteran data by the R package survival where the textbook and the
# library's models are one: right-censored Weibull and log-normal fits, and events only for the
# exponential law. Covariates karno and age.
#
# loglik is on the time scale (it includes the Jacobian of the logarithm of events); se.scale is the
# standard error of the scale itself. loglik.null has the intercept (and the scale) only.
#
# Usage: Rscript make_survreg.R ../../../data/veteran.csv > survreg.csv
suppressMessages(library(survival))
veteran <- read.csv(commandArgs(TRUE)[1])
tight <- survreg.control(rel.tolerance = 1e-14, maxiter = 200)
row <- function(name, data) {
  fit <- survreg(Surv(time, status) ~ karno + age, data, dist = name, control = tight)
  se <- sqrt(diag(vcov(fit)))
  scaled <- name != "exponential"
  cells <- c(coef(fit), if (scaled) fit$scale else 1, se[1:3], if (scaled) se[4] * fit$scale else 0,
             fit$loglik[2], fit$loglik[1])
  cat(c(name, nrow(data), formatC(cells, digits = 15, format = "g", flag = "#")), sep = ",")
  cat("\n")
}
cat("distribution,n,intercept,karno,age,scale,se.intercept,se.karno,se.age,se.scale,loglik,loglik.null\n")
row("exponential", veteran[veteran$status == 1, ])
row("weibull", veteran)
row("lognormal", veteran)
