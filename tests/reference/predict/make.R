# Predictions of Cox fits for rows that the fits have not seen: predict.coxph and survfit.coxph of
# R's package survival. Run in this folder: Rscript make.R
#
# The covariates are centred at the means of all columns (nocenter = NULL), the linear predictor is
# taken against the whole sample (reference = "sample").
suppressMessages(library(survival))
library(splines)
control <- coxph.control(eps = 1e-13, toler.chol = 1e-14, iter.max = 50)
read <- function(file) read.csv(file.path("../../../data", file), stringsAsFactors = FALSE)
write <- function(x, file) {
  write.csv(format(x, digits = 15, trim = TRUE), file, row.names = FALSE, quote = FALSE, na = "")
}
# Cells of the result: row, time, limits by row and time.
predictions <- function(fit, new, times, name) {
  new <- new[seq_len(nrow(new)), ]
  write.csv(new, paste0(name, "_new.csv"), row.names = FALSE, quote = FALSE, na = "")
  lp <- predict(fit, newdata = new, type = "lp", se.fit = TRUE, reference = "sample")
  write(data.frame(row = seq_len(nrow(new)), predictor = lp$fit, error = lp$se.fit),
        paste0(name, "_risk.csv"))
  rows <- NULL
  for (i in seq_len(nrow(new))) {
    for (type in c("log-log", "log", "plain")) {
      s <- summary(survfit(fit, newdata = new[i, ], conf.type = type), times = times)
      rows <- rbind(rows, data.frame(row = i, limits = type, time = s$time, survival = s$surv,
                                     error = s$std.err, lower = s$lower, upper = s$upper))
    }
  }
  write(rows, paste0(name, "_survival.csv"))
}
lung <- read("lung.csv")
fit <- coxph(Surv(time, status) ~ age + sex + ph.ecog, lung, control = control, nocenter = NULL)
new <- data.frame(age = c(40, 62.5, 71, 80), sex = c("male", "female", "female", "male"),
                  ph.ecog = c(0, 1, 2, 3))
predictions(fit, new, c(90, 180, 365, 700), "lung")
veteran <- read("veteran.csv")
fit <- coxph(Surv(time, status) ~ karno * trt + ns(age, 3) + strata(celltype), veteran,
             ties = "breslow", control = control, nocenter = NULL)
new <- data.frame(karno = c(20, 55, 90, 70, 60), trt = c(1, 2, 2, 1, 1),
                  age = c(30, 52, 63, 85, 63),
                  celltype = c("squamous", "smallcell", "adeno", "large", "squamous"))
predictions(fit, new, c(30, 90, 150), "veteran")
