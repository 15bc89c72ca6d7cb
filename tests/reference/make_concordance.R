# Makes concordance_lung.csv: pairs of the lung data by the scores of cox_lung_coefficients.csv,
# counted one by one, and what R's survival::concordance counts and reports for the same scores.
# Run in this folder: Rscript make_concordance.R
suppressMessages(library(survival))
lung <- read.csv("../../data/lung.csv")
b <- read.csv("cox_lung_coefficients.csv")
d <- na.omit(data.frame(time = lung$time, status = lung$status, age = lung$age,
                        male = as.numeric(lung$sex == "male"), ph.ecog = lung$ph.ecog))
x <- as.matrix(d[, b$term])
score <- x[, 1] * b$coef[1] + x[, 2] * b$coef[2] + x[, 3] * b$coef[3]
usable <- outer(d$time, d$time, "<") & d$status == 1
higher <- outer(score, score, ">")
tied <- outer(score, score, "==")
other <- concordance(Surv(d$time, d$status) ~ score, reverse = TRUE)
out <- data.frame(rows = nrow(d), usable = sum(usable), concordant = sum(usable & higher),
                  tied = sum(usable & tied), index = sum(usable & higher) / sum(usable),
                  program.concordant = other$count[["concordant"]],
                  program.discordant = other$count[["discordant"]],
                  program.tied = other$count[["tied.x"]], program.index = other$concordance)
write.csv(format(out, digits = 15, trim = TRUE), "concordance_lung.csv", row.names = FALSE,
          quote = FALSE)
