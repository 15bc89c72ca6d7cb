# Writes combination.csv: the largest of weighted log-rank tests on the two-group cases, and on the pairs of the others, of test_cases.csv.
# Run in this folder: Rscript make_combination.R   R 4.2.2, survival 3.5-3 (a check of the first two), mvtnorm 1.1-3.
# Scores and covariances by the definitions, time after time over a table of everybody; the joint law by Genz and Bretz's randomised
# integration, whose own bound of the error stands beside its value.
suppressMessages({library(survival); library(mvtnorm)})
number <- function(x) formatC(x, digits=17, width=1, format="g")
powers <- rbind(c(0, 0), c(1, 0), c(0, 1), c(1, 1)); cells <- list()

sums <- function(start, time, event, second, stratum, w) {
  U <- numeric(4); V <- matrix(0, 4, 4)
  for (s in unique(stratum)) { i <- stratum == s; S <- 1
    for (t in sort(unique(time[i & event == 1]))) {
      risk <- i & start < t & time >= t; fail <- risk & time == t & event == 1
      n <- sum(w[risk]); m <- sum(w[risk & second]); d <- sum(w[fail]); e <- sum(w[fail & second])
      omega <- S^powers[, 1] * (1 - S)^powers[, 2]; S <- S * (1 - d / n)
      U <- U + omega * (e - d * m / n); if (n > 1) V <- V + outer(omega, omega) * d * (n - d) / (n - 1) * (m / n) * (1 - m / n) } }
  list(U=U, V=V)
}
# The probability that some is beyond c, as a sum over the first one that is where it is small: it keeps its
# digits. Of weights that nearly agree the integration's bound is wrong up to some 1e7 points: no value.
joint <- function(z, R, side) { c <- if (side == "twoSided") max(abs(z)) else if (side == "greater") max(z) else max(-z); two <- side == "twoSided"
  # Variables that are one are given once: the integration takes no singular law of this kind.
  keep <- sapply(seq_along(z), function(k) !any(abs(R[k, seq_len(k - 1)]) > 1 - 2^-50)); R <- R[keep, keep, drop=FALSE]
  if (sum(keep) == 1) return(c((if (two) 2 else 1) * pnorm(-c), 1e-15))
  p <- pnorm(-c); error <- 0
  for (k in seq_len(sum(keep))[-1]) { before <- seq_len(k - 1); set.seed(k)
    x <- pmvnorm(c(rep(if (two) -c else -Inf, k - 1), c), c(rep(c, k - 1), Inf), corr=R[1:k, 1:k], algorithm=GenzBretz(maxpts=2e5, abseps=1e-15, releps=1e-9)); p <- p + x; error <- error + attr(x, "error") }
  if (p < 0.005) return((if (two) 2 else 1) * c(p, error))
  if (sort(eigen(R)$values)[2] < 1e-3) return(c(NaN, NaN))
  set.seed(1); x <- pmvnorm(rep(if (two) -c else -Inf, sum(keep)), rep(c, sum(keep)), corr=R, algorithm=GenzBretz(maxpts=1e6, abseps=1e-9, releps=0)); c(1 - x, attr(x, "error")) }

file <- read.csv("test_cases.csv", na.strings=NULL, colClasses="character")
for (row in seq_len(nrow(file))) { f <- file[row, ]; d <- read.csv(sprintf("../cox/data/%s.csv", f$data)); late <- "start" %in% names(d)
  start <- if (late) d$start else rep(-Inf, nrow(d)); g <- match(d[[f$group]], sort(unique(d[[f$group]]))) - 1; s <- if (f$stratum == "") rep(1, nrow(d)) else d[[f$stratum]]
  w <- if (f$weight == "count") 1 + seq_len(nrow(d)) %% 3 else rep(1, nrow(d)); k <- max(g)
  for (a in 0:(k - 1)) for (b in (a + 1):k) { at <- g %in% c(a, b)
    r <- sums(start[at], d$time[at], d$event[at], g[at] == b, s[at], w[at])
    add <- function(item, value) cells[[length(cells) + 1]] <<- data.frame(case=f$case, first=a, second=b, item, index=seq_along(value) - 1, value=number(as.numeric(value)))
    if (f$weight == "" && !late && k == 1) for (rho in 0:1) { x <- survdiff(as.formula(paste("Surv(time, event) ~", f$group, if (f$stratum != "") paste0("+ strata(", f$stratum, ")"))), d, rho=rho)
      stopifnot(all.equal(x$chisq, r$U[1 + rho]^2 / r$V[1 + rho, 1 + rho], tolerance=1e-9)) }
    on <- diag(r$V) > 1e-12; z <- ifelse(on, r$U / sqrt(diag(r$V)), NaN); R <- r$V / sqrt(outer(diag(r$V), diag(r$V))); R[!on, ] <- 0; R[, !on] <- 0; diag(R)[on] <- 1
    add("z", z); add("correlation", R); if (!any(on)) next
    for (side in c("twoSided", "greater", "less")) { p <- joint(z[on], R[on, on, drop=FALSE], side); add(side, p) }
    cat(f$case, a, b, "") } }
write.csv(do.call(rbind, cells), "combination.csv", row.names=FALSE, quote=FALSE); cat("\n")
