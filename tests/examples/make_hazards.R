# The texts that examples/cpp/hazards.cpp and spans.cpp print, from R's survival alone.
#   Rscript make_hazards.R ../../data          (R 4.2.2, survival 3.5-3; writes hazards.txt, spans.txt)
suppressMessages(library(survival))
folder <- commandArgs(TRUE)[1]

sink("hazards.txt")
lung <- read.csv(file.path(folder, "lung.csv"))
fit <- coxph(Surv(time, status) ~ age + sex + ph.ecog, lung)  # Efron's ties
cat(sprintf("%d patients, %d deaths\n", fit$n, fit$nevent))
test <- function(name, chiSquare, df)
  cat(sprintf("%-18s%12.4f%6d%14.6f\n", name, chiSquare, as.integer(df),
              pchisq(chiSquare, df, lower.tail = FALSE)))
s <- summary(fit)
cat(sprintf("%-18s%14s%14s%14s\n", "covariate", "coefficient", "std error", "hazard ratio"))
cat(sprintf("%-18s%14.6f%14.6f%14.6f\n", c("age", "sex=male", "ph.ecog"), coef(fit),
            sqrt(diag(vcov(fit))), exp(coef(fit))), sep = "")
test("likelihood ratio", 2 * diff(fit$loglik), 3)
test("score", fit$score, 3)
test("Wald", fit$wald.test, 3)
cat(sprintf("concordance %.6f, std error %.6f\n", s$concordance[1], s$concordance[2]))
cat("proportional hazards?\n")
z <- cox.zph(fit, transform = "km")$table
for (i in 1:4) test(c("age", "sex", "ph.ecog", "all")[i], z[i, "chisq"], z[i, "df"])
woman <- survfit(fit, newdata = data.frame(age = 60, sex = "female", ph.ecog = 0))
days <- c(180, 360, 720)
cat(sprintf("survival after %.0f days %.6f\n", days, summary(woman, times = days)$surv), sep = "")
sink()

sink("spans.txt")
leukemia <- read.csv(file.path(folder, "leukemia.csv"))
for (ties in c("efron", "breslow")) {
  fit <- coxph(Surv(weeks, relapse) ~ I(treatment == "placebo"), leukemia, ties = ties)
  cat(sprintf("coefficient %.6f, std error %.6f, log-likelihood %.6f\n", coef(fit),
              sqrt(vcov(fit)), fit$loglik[2]))
}
sink()
