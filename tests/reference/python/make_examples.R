# What R makes of the examples in the docstrings of the Python package: examples.csv, one row for a
# number, with the expression of the example's names that is to give it.
#
#     Rscript make_examples.R > examples.csv        R 4.2.2, survival 3.5-3, cmprsk 2.2-11, pROC 1.18.0
library(survival)
suppressMessages(library(pROC))

shown <- function(analysis, expression, value) {
  for (i in seq_along(value)) {
    cat(sprintf("%s,\"%s[%d]\",%.15g\n", analysis, expression, i - 1, value[i]))
  }
}
cat("analysis,expression,value\n")

weeks <- c(6, 6, 6, 7, 10, 13, 16, 22, 23, 6, 9, 10, 11, 17, 19, 20, 25, 32, 32, 34, 35,
           1, 1, 2, 2, 3, 4, 4, 5, 5, 8, 8, 8, 8, 11, 11, 12, 12, 15, 17, 22, 23)
relapse <- rep(c(1, 0, 1), c(9, 12, 21))
arm <- factor(rep(c("6-MP", "placebo"), each = 21))
shown("life", "fit.arrays['summary']['median']",
      unname(quantile(survfit(Surv(weeks, relapse) ~ arm), 0.5)$quantile))
shown("life", "fit.arrays['tests']['chiSquare']", survdiff(Surv(weeks, relapse) ~ arm)$chisq)

fit <- coxph(Surv(weeks, relapse) ~ arm, control = coxph.control(eps = 1e-14, iter.max = 50))
shown("cox", "fit.arrays['coefficients']['hazardRatio']", exp(coef(fit)))
new <- data.frame(arm = c("6-MP", "placebo"))
# coxph centres a factor's column at its mean only for predictions of this kind.
centred <- (c(0, 1) - mean(arm == "placebo")) * coef(fit)
shown("cox.predict", "new.arrays['predictions']['risk']", exp(centred))
curves <- summary(survfit(fit, newdata = new), times = c(10, 20))$surv
shown("cox.predict", "new.arrays['survival']['survival']", c(curves))

pairs <- data.frame(case = rep(c(1, 0), 7), exposed = c(1, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1, 1, 0, 0),
                    pair = rep(1:7, each = 2))
matched <- clogit(case ~ exposed + strata(pair), pairs,
                  control = coxph.control(eps = 1e-14, iter.max = 50))
shown("clogit", "fit.arrays['coefficients']['oddsRatio']", exp(coef(matched)))

years <- c(1, 2, 2, 3, 4, 5, 6, 7, 8, 9, 1, 2, 3, 3, 4, 5, 7, 8, 9, 10)
end <- c("relapse", "death", "relapse", "censored", "relapse", "death", "relapse", "censored",
         "death", "censored", "death", "relapse", "death", "censored", "censored", "relapse",
         "death", "censored", "relapse", "censored")
group <- rep(c("a", "b"), each = 10)
age <- c(61, 55, 48, 70, 66, 52, 59, 45, 63, 50, 58, 67, 49, 71, 44, 62, 57, 53, 60, 47)
incidence <- cmprsk::cuminc(years, end, group, cencode = "censored")
shown("incidence", "fit.arrays['incidenceAt']['cumulativeIncidence']",
      c(cmprsk::timepoints(incidence, 5)$est[c("a relapse", "b relapse"), 1]))
shown("gray", "fit.arrays['tests']['chiSquare']",
      unname(incidence$Tests[c("death", "relapse"), "stat"]))
regression <- cmprsk::crr(years, end, cbind(age), failcode = "relapse", cencode = "censored",
                          gtol = 1e-12, maxiter = 50)
shown("finegray", "fit.arrays['coefficients']['hazardRatio']", exp(regression$coef))
# A matrix: the times of events, then a column for each row of new data.
predicted <- predict(regression, cbind(c(50, 65)))
shown("finegray.predict", "at['cumulativeIncidence']",
      c(predicted[findInterval(c(3, 6), predicted[, 1]), -1]))

# The Aalen-Johansen estimate of survival's survfit of several states.
stays <- data.frame(id = c(1, 1, 2, 2, 3, 4, 4, 5, 6), entry = c(0, 2, 0, 1, 0, 0, 3, 0, 0),
                    exit = c(2, 6, 1, 4, 5, 3, 7, 8, 4),
                    to = factor(c("ill", "dead", "ill", "dead", "dead", "ill", "censored",
                                  "censored", "dead"), c("censored", "ill", "dead")),
                    from = c("well", "ill", "well", "ill", "well", "well", "ill", "well", "well"))
states <- survfit(Surv(entry, exit, to) ~ 1, stays, id = id, istate = from)
probabilities <- summary(states, times = 5)$pstate[1, ]
names(probabilities) <- states$states
shown("states", "at['probability']", unname(probabilities[c("dead", "ill", "well")]))

shown("roc", "fit.arrays['areas']['area']",
      c(auc(roc(rep(0:1, each = 4), c(1, 2, 3, 5, 4, 6, 7, 8), quiet = TRUE))))

old <- c(494, 395, 516, 434, 476)
new <- c(512, 430, 520, 428, 500)
shown("agree", "fit.arrays['agreement']['estimate']",
      mean(new - old))
# The first principal component has the direction of Deming's line of equal variances.
direction <- prcomp(cbind(old, new))$rotation[, 1]
slope <- direction[[2]] / direction[[1]]
shown("deming", "fit.arrays['coefficients']['estimate']", c(mean(new) - slope * mean(old), slope))
