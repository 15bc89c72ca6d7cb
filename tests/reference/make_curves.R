# Random survival data with ties, heavy censoring and weights, and what R makes of them: curves, tests,
# actuarial tables. Medians are those of quantile.survfit, which takes the middle of a stretch at 1/2 also
# where the curve ends in it (the summary's table takes its beginning). Their limits are those of the
# summary's table, the first crossing (quantile.survfit takes a later one where a limit, which need not fall
# all the time, rises again).
#   Rscript make_curves.R [data sets] [folder]       (R 4.2.2, survival 3.5-3)
# curves_tests.csv: logrank from survdiff; the weighted tests and the expected numbers are summed here
# time by time. A test that needs the inverse of a singular matrix is NA.
suppressMessages(library(survival))
arguments <- commandArgs(TRUE)
count <- if (length(arguments) > 0) as.integer(arguments[1]) else 60
folder <- if (length(arguments) > 1) arguments[2] else "."
set.seed(20240611)

dataset <- function(id) {
  k <- sample(1:4, 1)
  n <- sample(c(2:6, 10, 20, 40), 1) + 2 * k
  scale <- sample(1:4, 1)
  time <- switch(scale, sample(0:6, n, TRUE), sample(1:20, n, TRUE), round(rexp(n), 2), round(rexp(n, .01)))
  event <- rbinom(n, 1, sample(c(.15, .4, .7, .95, 1), 1))
  if (sum(event) == 0) event[1] <- 1
  group <- c(seq_len(k), sample(seq_len(k), n - k, TRUE)) - 1
  weight <- if (id %% 3 == 0) sample(1:4, n, TRUE) else rep(1, n)
  data.frame(id, time, event, group, weight)
}

expanded <- function(d) d[rep(seq_len(nrow(d)), d$weight), ]

curves <- function(d, type, alpha) do.call(rbind, lapply(sort(unique(d$group)), function(g) {
  s <- survfit(Surv(time, event) ~ 1, d[d$group == g, ], conf.type = type, conf.int = 1 - alpha)
  table <- summary(s)$table
  at <- if (length(s$time) > 1) sample(length(s$time), 1) else 1
  data.frame(id = d$id[1], type, alpha, group = g, n = s$n, events = sum(s$n.event), median = unname(quantile(s, 0.5)$quantile),
             lower = table[[grep("LCL", names(table))]], upper = table[[grep("UCL", names(table))]], time = s$time[at], risk = s$n.risk[at],
             survival = s$surv[at], error = s$std.err[at] * s$surv[at], low = s$lower[at], high = s$upper[at])
}))

weighted <- function(d, weight) {
  groups <- sort(unique(d$group)); times <- sort(unique(d$time[d$event == 1]))
  U <- rep(0, length(groups)); E <- U; V <- matrix(0, length(groups), length(groups))
  for (t in times) {
    n <- sapply(groups, function(g) sum(d$time >= t & d$group == g)); N <- sum(n)
    e <- sapply(groups, function(g) sum(d$time == t & d$group == g & d$event == 1)); D <- sum(e)
    w <- weight(N)
    U <- U + w * (e - D * n / N); E <- E + D * n / N
    if (N > 1) V <- V + w^2 * D * (N - D) / (N - 1) * (diag(n / N, length(n)) - outer(n, n) / N^2)
  }
  keep <- E > 0
  if (sum(keep) < 2) return(list(q = NA, E = E))
  U <- U[keep][-1]; V <- V[keep, keep][-1, -1, drop = FALSE]
  # Singular where, scaled to a unit diagonal, an eigenvalue is 0.
  s <- sqrt(pmax(diag(V), 0))
  if (any(s == 0) || min(eigen(V / outer(s, s), symmetric = TRUE)$values) < 1e-10) return(list(q = NA, E = E))
  list(q = as.numeric(U %*% solve(V, U)), E = E)
}

tests <- function(d) {
  if (length(unique(d$group)) < 2) return(NULL)
  x <- expanded(d)
  l <- weighted(x, function(N) 1); g <- weighted(x, function(N) N); t <- weighted(x, sqrt)
  logrank <- if (is.na(l$q)) NA else survdiff(Surv(time, event) ~ group, x)$chisq
  data.frame(id = d$id[1], df = sum(l$E > 0) - 1, logrank, own = l$q, gehan = g$q, tarone = t$q,
             expected0 = l$E[1], p = if (is.na(l$q)) NA else pchisq(logrank, sum(l$E > 0) - 1, lower.tail = FALSE))
}

# Actuarial table of the first group, intervals of width w.
actuarial <- function(d, w) {
  x <- expanded(d); x <- x[x$group == 0, ]
  k <- floor(max(d$time) / w + 1e-9) + 1
  S <- 1; sum <- 0; out <- NULL
  for (i in seq_len(k)) {
    a <- (i - 1) * w; b <- i * w
    here <- x$time >= a - 1e-9 & x$time < b - 1e-9
    n <- sum(x$time >= a - 1e-9); ev <- sum(x$event[here]); ce <- sum(here) - ev
    if (n == 0) break
    m <- n - ce / 2; q <- ev / m; p <- 1 - q
    f <- S * q / w; fe <- if (q > 0) S * q / w * sqrt(sum + p / (m * q)) else 0
    h <- 2 * q / (w * (1 + p)); he <- if (q > 0) h * sqrt((1 - (h * w / 2)^2) / (m * q)) else 0
    start <- S; S <- S * p; if (p > 0) sum <- sum + q / (m * p)
    out <- rbind(out, data.frame(id = d$id[1], width = w, row = i - 1, entering = n, events = ev, censored = ce,
      start, end = S, error = if (S > 0) S * sqrt(sum) else NA, density = f, densityError = fe, hazard = h, hazardError = he))
  }
  out
}

show <- function(x, name) {
  number <- sapply(x, is.numeric)
  x[number] <- lapply(x[number], function(v) sub("NaN", "NA", sprintf("%.15g", v)))
  write.csv(x, file.path(folder, name), row.names = FALSE, quote = FALSE)
}
all <- lapply(seq_len(count), dataset)
show(do.call(rbind, all), "curves_data.csv")
show(do.call(rbind, lapply(all, function(d) do.call(rbind, lapply(c("log-log", "log", "plain"), function(type)
  curves(expanded(d), type, c(0.05, 0.1, 0.01, 0.4)[d$id[1] %% 4 + 1]))))), "curves_medians.csv")
show(do.call(rbind, lapply(all, tests)), "curves_tests.csv")
show(do.call(rbind, lapply(all, function(d) actuarial(d, if (max(d$time) < 3) 0.1 else if (max(d$time) < 10) 0.5 else if (max(d$time) < 30) 3 else 50))),
     "curves_actuarial.csv")

# Many groups, of which some leave before the first event; drawn last, so that the sets above stay as they are.
many <- lapply(1:4, function(id) {
  k <- c(17, 20, 50, 120)[id]; n <- c(90, 300, 500, 700)[id]
  time <- if (id %% 2 == 0) sample(1:60, n, TRUE) else round(rexp(n), 3) + 0.1
  event <- rbinom(n, 1, 0.5)
  group <- c(seq_len(k), sample(seq_len(k), n - k, TRUE)) - 1
  gone <- group %in% c(3, 7)
  time[gone] <- time[gone] / 1e4; event[gone] <- 0
  data.frame(id, time, event, group, weight = if (id == 2) sample(1:4, n, TRUE) else 1)
})
show(do.call(rbind, many), "many_groups_data.csv")
show(do.call(rbind, lapply(many, tests)), "many_groups_tests.csv")
