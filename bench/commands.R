# The R side of the whole commands: reads the CSV file and prints what the command is after.
#
#   Rscript commands.R JOB FILE
arguments <- commandArgs(trailingOnly = TRUE)
data <- read.csv(arguments[2])
life <- function() {
  suppressMessages(library(survival))
  print(survfit(Surv(time, status) ~ group, data))
  print(survdiff(Surv(time, status) ~ group, data))
}
cox <- function() {
  suppressMessages(library(survival))
  print(summary(coxph(Surv(time, status) ~ ., data)))
}
gray <- function() {
  suppressMessages(library(cmprsk))
  print(cuminc(data$time, data$status, data$group)$Tests)
}
roc <- function() {
  suppressMessages(library(pROC))
  first <- pROC::roc(data$class, data$first, levels = c(0, 1), direction = "<", quiet = TRUE)
  second <- pROC::roc(data$class, data$second, levels = c(0, 1), direction = "<", quiet = TRUE)
  print(ci.auc(first))
  print(ci.auc(second))
  print(roc.test(first, second, method = "delong"))
}
agree <- function() {
  difference <- data$second - data$first
  print(t.test(difference))
  print(mean(difference) + c(-1, 1) * qnorm(0.975) * sd(difference))
}
jobs <- list(life = life, cox = cox, gray = gray, roc = roc, agree = agree)
jobs[[arguments[1]]]()
