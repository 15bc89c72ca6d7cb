# The R side of cox_against_r.sh: makes the data, times coxph, compares. Times are the processor's,
# which other programs on the machine do not stretch.
suppressMessages(library(survival))
arguments <- commandArgs(trailingOnly = TRUE)
folder <- arguments[2]
sizes <- c(1000, 3000, 10000)
file <- function(kind, n, type) file.path(folder, sprintf("%s_%d.%s", kind, n, type))

if (arguments[1] == "prepare") {
  set.seed(20240601)
  for (n in sizes) {
    x <- matrix(rnorm(n * 10), n, dimnames = list(NULL, paste0("x", 1:10)))
    event <- rexp(n) / exp(x %*% (0.2 * cos(0:9)))
    censoring <- 2 * rexp(n)
    data <- data.frame(time = pmin(event, censoring), status = as.integer(event <= censoring), x)
    write.csv(format(data, digits = 15, trim = TRUE), file("cox", n, "csv"), row.names = FALSE,
              quote = FALSE)
  }
} else {
  # The aggregates are objects with "name" before "cpu_time".
  lines <- readLines(file.path(folder, "fits.json"))
  median_of <- function(n) {
    at <- grep(sprintf('"name": "WholeFit/n:%d/survival:0_median"', n), lines)
    line <- lines[at - 1 + grep('"cpu_time"', lines[at:length(lines)])[1]]
    as.numeric(sub(".*: *([0-9.e+-]+).*", "\\1", line))
  }
  cat(sprintf("%8s %14s %14s %8s %22s\n", "rows", "this (ms)", "coxph (ms)", "ratio",
              "largest |difference|"))
  for (n in sizes) {
    data <- read.csv(file("cox", n, "csv"))
    fit <- function() coxph(Surv(time, status) ~ ., data, ties = "breslow")
    model <- fit()
    r <- median(replicate(5, system.time(fit())["user.self"])) * 1000
    ours <- median_of(n)
    ours_beta <- scan(file("coefficients", n, "txt"), quiet = TRUE)
    cat(sprintf("%8d %14.1f %14.1f %8.2f %22.1e\n", n, ours, r, ours / r,
                max(abs(ours_beta - coef(model)))))
  }
}
