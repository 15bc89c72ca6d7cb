# What R makes of the data sets in data: peers_r.csv, one row for a number, the quantities named as
# those of make_peers.py.
#
#     Rscript make_peers.R FOLDER_OF_DATA > peers_r.csv        R 4.2.2, survival 3.5-3, cmprsk 2.2-11
library(survival)

shown <- function(quantity, value, numbered = length(value) > 1) {
  names <- if (numbered) paste(quantity, seq_along(value) - 1) else quantity
  cat(sprintf("R,%s,%.15g\n", names, unname(value)), sep = "")
}
data <- commandArgs(TRUE)[1]
lung <- read.csv(file.path(data, "lung.csv"))[c("time", "status", "age", "sex", "ph.ecog")]
lung <- na.omit(lung)
lung$male <- as.numeric(lung$sex == "male")
leukemia <- read.csv(file.path(data, "leukemia.csv"))
veteran <- read.csv(file.path(data, "veteran.csv"))
pbc <- read.csv(file.path(data, "pbc.csv"))
cat("peer,quantity,value\n")

arm <- survfit(Surv(weeks, relapse) ~ 1, leukemia[leukemia$treatment == "6-MP", ])
shown("median", quantile(arm, 0.5, conf.int = FALSE))
at <- summary(arm, times = c(6, 10, 22, 23))
shown("survival", at$surv)
shown("survival lower", at$lower)
shown("survival upper", at$upper)
mean <- summary(arm, rmean = 20)$table
shown("restricted mean", mean[["rmean"]])
shown("restricted mean variance", mean[["se(rmean)"]]^2)
flat <- survfit(Surv(1:4, rep(1, 4)) ~ 1)
shown("flat median", quantile(flat, 0.5, conf.int = FALSE))
shown("log-rank", survdiff(Surv(weeks, relapse) ~ treatment, leukemia)$chisq)
shown("log-rank of four", survdiff(Surv(time, status) ~ celltype, veteran)$chisq)

tight <- coxph.control(eps = 1e-14, iter.max = 50)
fit <- coxph(Surv(time, status) ~ age + ph.ecog + male, lung, control = tight)
shown("cox coef", coef(fit))
shown("cox se", sqrt(diag(vcov(fit))))
shown("cox log-likelihood", fit$loglik[2])
shown("cox concordance", fit$concordance[["concordance"]])
new <- lung[1:3, ]
shown("cox linear predictor", predict(fit, new))
shown("cox survival at 180", c(summary(survfit(fit, newdata = new), times = 180)$surv))
for (transform in c("km", "rank", "identity")) {
  shown(paste("cox zph", transform), cox.zph(fit, transform)$table[1:3, "chisq"])
}
shown("cox robust se", sqrt(diag(vcov(coxph(Surv(time, status) ~ age + ph.ecog + male, lung,
                                            robust = TRUE, control = tight)))))
shown("cox default first coef", coef(fit)[1], FALSE)

incidence <- cmprsk::cuminc(pbc$time, pbc$status)
at <- cmprsk::timepoints(incidence, c(365, 1826, 3650))
shown("incidence of death", at$est["1 2", ])
shown("variance of the incidence of death", at$var["1 2", ])
small <- cmprsk::cuminc(1:6, c(1, 2, 0, 1, 2, 0))
shown("incidence variance", cmprsk::timepoints(small, c(1, 2, 4, 6))$var[1, ])
covariates <- cbind(pbc$age, log(pbc$bili))
regression <- cmprsk::crr(pbc$time, pbc$status, covariates, failcode = 2, gtol = 1e-12,
                          maxiter = 50)
shown("subdistribution coef", regression$coef)
shown("subdistribution se", sqrt(diag(regression$var)))
# A matrix: the times of events, then a column for each row of new data.
predicted <- predict(regression, covariates[1:3, ])
for (day in c(365, 3650)) {
  shown(paste("incidence at", day), predicted[findInterval(day, predicted[, 1]), -1])
}
pbc$end <- factor(pbc$status, 0:2, c("censored", "transplant", "death"))
pbc$row <- seq_len(nrow(pbc))
weighted <- finegray(Surv(time, end) ~ ., pbc, etype = "death")
regression <- coxph(Surv(fgstart, fgstop, fgstatus) ~ age + log(bili), weighted, weights = fgwt,
                    cluster = row, control = tight)
shown("subdistribution coef by finegray", coef(regression))
shown("subdistribution se by finegray", sqrt(diag(vcov(regression))))
