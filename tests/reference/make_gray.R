# Makes gray_random_data.csv (set, time, status, group) and gray_random.csv (the K-sample tests of
# R's cmprsk on each set, both event types): 2 to 4 groups, rho -1 to 2, tied and untied times;
# then 9 to 12 groups, rho 0 and 1.
# Run in this folder: Rscript make_gray.R
suppressMessages(library(cmprsk))
set.seed(20240611)
data <- NULL
tests <- NULL
id <- 0
plan <- rbind(expand.grid(ties = c(FALSE, TRUE), rho = c(-1, -0.5, 0, 0.5, 1, 2), K = 2:4),
              expand.grid(ties = c(FALSE, TRUE), rho = c(0, 1), K = c(9, 12)))
for (case in seq_len(nrow(plan))) {
  ties <- plan$ties[case]
  rho <- plan$rho[case]
  K <- plan$K[case]
  id <- id + 1
  n <- sample(12:60, 1) + 6 * K
  group <- c(1:K, sample(1:K, n - K, replace = TRUE))
  hazard <- runif(K, 0.5, 1.5)
  time <- rexp(n, hazard[group])
  status <- sample(0:2, n, replace = TRUE, prob = c(runif(1, 0.05, 0.5), 0.4, 0.3))
  time <- if (ties) ceiling(8 * time) else signif(time, 6)
  found <- cuminc(time, status, group, rho = rho)$Tests
  stopifnot(nrow(found) == 2, all(is.finite(found)))
  data <- rbind(data, data.frame(set = id, time = time, status = status, group = group))
  tests <- rbind(tests, data.frame(set = id, groups = K, rho = rho,
                                   event = as.integer(rownames(found)), stat = found[, "stat"],
                                   pv = found[, "pv"], df = found[, "df"]))
}
write.csv(data, "gray_random_data.csv", row.names = FALSE, quote = FALSE)
write.csv(format(tests, digits = 16, trim = TRUE), "gray_random.csv", row.names = FALSE,
          quote = FALSE)
