# Ridge regressions of proportional hazards: coxph with ridge() of R's package survival.
# Run in this folder: Rscript make_ridge.R > ridge.csv
suppressMessages(library(survival))
cases <- list(list("lung", c("age", "male", "ecog"), "efron", FALSE),
              list("lung", c("age", "male", "ecog"), "breslow", FALSE),
              list("ovarian", c("age", "rx", "residual"), "efron", FALSE),
              list("larynx", c("stage2", "stage3", "stage4", "age"), "efron", FALSE),
              list("heart", c("age", "year", "surgery", "transplant"), "efron", TRUE))
cat("data,ties,theta,scale,column,coef,error,logLikelihood,effective,chiSquare\n")
for (case in cases) for (theta in c(0.5, 20)) for (scale in c(TRUE, FALSE)) {
  data <- read.csv(file.path("../cox/data", paste0(case[[1]], ".csv")))
  y <- if (case[[4]]) "Surv(start, time, event)" else "Surv(time, event)"
  text <- paste0(y, " ~ ridge(", paste(case[[2]], collapse = ", "), ", theta = ", theta,
                 ", scale = ", scale, ")")
  fit <- coxph(as.formula(text), data, ties = case[[3]],
               control = coxph.control(eps = 1e-14, iter.max = 100, outer.max = 50,
                                       toler.chol = 1e-15))
  for (j in seq_along(case[[2]])) {
    cat(case[[1]], case[[3]], theta, scale, case[[2]][j],
        formatC(c(coef(fit)[j], sqrt(fit$var[j, j]), fit$loglik[2], sum(fit$df),
                  2 * diff(fit$loglik)), digits = 17, format = "g"), sep = ",")
    cat("\n")
  }
}
