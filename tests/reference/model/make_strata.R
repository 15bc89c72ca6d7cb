# The designs of proportional-hazards models with interactions of strata(), as coxph fits them: Rscript
# make_strata.R in this folder (R 4.2 with survival), after make.R.
#
#   strata_formulas.txt    id, formula
#   strata_design_ID.csv   model.matrix of the fit
library(survival)
data <- read.csv("data.csv", stringsAsFactors = FALSE)
data$trt <- factor(data$trt, levels = c("placebo", "low", "high"))
data$y <- with(data, Surv(time, status > 0))
formulas <- c("~ age * strata(site)", "~ age:strata(site) + strata(site)", "~ trt * strata(sex)",
              "~ age + trt:strata(sex) + strata(sex)", "~ age * trt * strata(sex)",
              "~ (age + bmi + strata(sex))^2", "~ age * strata(sex) + strata(site)",
              "~ age + C(dose) + age:strata(site) + strata(site)")
for (j in seq_along(formulas)) {
  text <- paste("y", gsub("C(", "factor(", formulas[j], fixed = TRUE))
  x <- model.matrix(coxph(as.formula(text), data, iter.max = 0))
  x[] <- sprintf("%.17g", x)
  colnames(x) <- paste0("c", seq_len(ncol(x)))
  write.csv(x, sprintf("strata_design_%02d.csv", j), row.names = FALSE, quote = FALSE)
}
writeLines(sprintf("%02d\t%s", seq_along(formulas), formulas), "strata_formulas.txt")
