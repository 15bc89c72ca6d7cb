# Writes test_cases.csv and tests.csv: tests of equal survival on the data sets in ../cox/data. Run in this folder:  Rscript make_tests.R
# R 4.2.2, survival 3.5-3. Log-rank and Fleming-Harrington (p, 0) of right-censored data by survdiff; what it does not do (other weights,
# late entry, frequencies, trends) by the definitions, time after time over a table of everybody, which has to give survdiff's numbers too.
suppressMessages(library(survival))
number <- function(x) formatC(x, digits=17, width=1, format="g")
cases <- NULL; cells <- list()

direct <- function(start, time, event, group, stratum, w, weight) {
  g <- sort(unique(group)); U <- O <- E <- numeric(length(g)); V <- matrix(0, length(g), length(g)); by <- NULL
  for (s in sort(unique(stratum))) { i <- stratum == s; S <- 1; peto <- 1; o1 <- e1 <- numeric(length(g))
    for (t in sort(unique(time[i & event == 1]))) {
      risk <- i & start < t & time >= t; n <- sapply(g, function(x) sum(w[risk & group == x])); d <- sapply(g, function(x) sum(w[risk & group == x & time == t & event == 1]))
      N <- sum(n); D <- sum(d); peto <- peto * (1 - D / (N + 1)); omega <- weight(N, S, peto); S <- S * (1 - D / N)
      O <- O + omega * d; E <- E + omega * D * n / N; o1 <- o1 + d; e1 <- e1 + D * n / N
      if (N > 1) V <- V + omega^2 * D * (N - D) / (N - 1) * (diag(n / N, length(g)) - outer(n, n) / N^2) }
    here <- sapply(g, function(x) any(i & group == x)); by <- rbind(by, data.frame(n=sapply(g, function(x) sum(w[i & group == x])), o=o1, e=e1)[here, ]) }
  list(O=O, E=E, V=V, by=by)
}
weights <- list(logRank=function(N, S, T) 1, gehanBreslow=function(N, S, T) N, taroneWare=function(N, S, T) sqrt(N), petoPeto=function(N, S, T) T, modifiedPetoPeto=function(N, S, T) T * N / (N + 1),
  fh10=function(N, S, T) S, fh01=function(N, S, T) 1 - S, fh11=function(N, S, T) S * (1 - S), fhHalf=function(N, S, T) sqrt(S))
quadratic <- function(U, V) { k <- diag(V) > 0; U <- U[k]; V <- V[k, k, drop=FALSE]; r <- qr(V, tol=1e-9)$rank; p <- seq_len(length(U) - 1); if (r != length(p)) { print(V); print(U) }; c(sum(U[p] * solve(V[p, p], U[p])), r) }

compareCase <- function(data, group, stratum="", weight="") {
  d <- read.csv(sprintf("../cox/data/%s.csv", data)); name <- sprintf("%s_%d", data, 1 + sum(cases$data == data)); late <- "start" %in% names(d)
  start <- if (late) d$start else rep(-Inf, nrow(d)); g <- d[[group]]; s <- if (stratum == "") rep(1, nrow(d)) else d[[stratum]]
  w <- if (weight == "count") 1 + seq_len(nrow(d)) %% 3 else rep(1, nrow(d)); score <- sort(unique(g))
  cases <<- rbind(cases, data.frame(case=name, data, group, stratum, weight))
  add <- function(test, item, value) cells[[length(cells) + 1]] <<- data.frame(case=name, test, item, index=seq_along(value) - 1, value=number(as.numeric(value)))
  cat(name, ""); for (test in names(weights)) { r <- direct(start, d$time, d$event, g, s, w, weights[[test]]); q <- quadratic(r$O - r$E, r$V); O <- r$O; E <- r$E; V <- r$V
    rho <- c(logRank=0, fh10=1, fhHalf=0.5)[test]
    if (!late && weight == "" && !is.na(rho)) { f <- survdiff(as.formula(paste("Surv(time, event) ~", group, if (stratum != "") paste0("+ strata(", stratum, ")"))), d, rho=rho)
      total <- function(x) if (is.matrix(x)) rowSums(x) else x
      stopifnot(all.equal(total(f$obs), O, tolerance=1e-11), all.equal(total(f$exp), E, tolerance=1e-11), all.equal(f$var, V, tolerance=1e-10), all.equal(f$chisq, q[1], tolerance=1e-9))
      O <- total(f$obs); E <- total(f$exp); q[1] <- f$chisq; if (all(E > 0)) V <- f$var }
    add(test, "observed", O); add(test, "expected", E); add(test, "covariance", V); add(test, "chiSquare", q[1]); add(test, "degreesOfFreedom", q[2]); add(test, "pValue", pchisq(q[1], q[2], lower.tail=FALSE))
    z <- sum(score * (O - E)) / sqrt(drop(score %*% V %*% score)); add(test, "trend", z); add(test, "trendPValue", 2 * pnorm(-abs(z)))
    if (test == "logRank") { add(test, "n", r$by$n); add(test, "observedBy", r$by$o); add(test, "expectedBy", r$by$e) }
    if (test %in% c("logRank", "petoPeto")) { p <- chi <- NULL
      for (a in seq_along(score)) for (b in seq_along(score)) if (a < b) { k <- g %in% score[c(a, b)]; x <- direct(start[k], d$time[k], d$event[k], g[k], s[k], w[k], weights[[test]]); chi <- c(chi, if (x$V[1, 1] > 1e-12) (x$O - x$E)[1]^2 / x$V[1, 1] else NaN) }
      p <- pchisq(chi, 1, lower.tail=FALSE); add(test, "pairs", chi); for (m in c("none", "holm", "bonferroni", "BH")) add(test, paste0("pairs-", m), p.adjust(p, m)) }
  }
  if (length(score) == 2) { R <- S <- P <- 0; r <- direct(start, d$time, d$event, g, s, w, weights$logRank)
    for (one in unique(s)) for (t in sort(unique(d$time[s == one & d$event == 1]))) { i <- s == one & start < t & d$time >= t; n <- sapply(score, function(x) sum(w[i & g == x])); e <- sapply(score, function(x) sum(w[i & g == x & d$time == t & d$event == 1]))
      R <- R + e[2] * n[1] / sum(n); S <- S + e[1] * n[2] / sum(n); P <- P + sum(e) * n[1] * n[2] / sum(n)^2 }
    z <- qnorm(0.975); v <- r$V[1, 1]; x <- (r$O - r$E)[2] / v; add("ratio", "peto", c(exp(x), 1 / sqrt(v), exp(x - z / sqrt(v)), exp(x + z / sqrt(v)), 2 * pnorm(-abs(x * sqrt(v)))))
    m <- R / S; se <- sqrt(P / (R * S)); add("ratio", "mantelHaenszel", c(m, se, m * exp(-z * se), m * exp(z * se), 2 * pnorm(-abs(log(m) / se)))) }
}
compareCase("lung", "male"); compareCase("lung", "ecog", "male"); compareCase("veteran", "cell"); compareCase("veteran", "cell", "test"); compareCase("veteran", "test", "cell", "count")
compareCase("ovarian", "rx"); compareCase("colon", "lev", "etype"); compareCase("heart", "transplant"); compareCase("bladder", "thiotepa", "enum"); compareCase("cgd", "gamma", "center"); compareCase("pbc", "stage", "trt")
compareCase("rats", "rx", "litter"); compareCase("gbsg", "grade", "hormon"); compareCase("rhdnase", "rx", "inst"); compareCase("mgus", "male", weight="count"); compareCase("nwtco", "stage4", "unfavourable")
compareCase("bfeed", "poverty", "smoke"); compareCase("larynx", "stage2"); compareCase("burn", "bathing", "male"); compareCase("bmt", "fab", "hospital"); compareCase("channing", "female"); compareCase("kidtran", "black", "female")
compareCase("std", "gonorrhoea"); compareCase("pneumon", "nsibs"); compareCase("hodgkin", "allo", "hodgkin")
# The kidney infections of Klein & Moeschberger (2003), table 7.3; its printed numbers stand in the test.
suppressMessages(library(KMsurv)); data(kidney); write.csv(data.frame(time=kidney$time, event=kidney$delta, type=kidney$type), "kidney.csv", row.names=FALSE, quote=FALSE)
write.csv(cases, "test_cases.csv", row.names=FALSE, quote=FALSE); write.csv(do.call(rbind, cells), "tests.csv", row.names=FALSE, quote=FALSE)
