# Writes cases.csv and cells.csv: incidences of the data sets in data/ (make_data.R) and the tests of their groups, of curves 8 times.
# Run in this folder:  Rscript make.R     R 4.2.2, survival 3.5-3, cmprsk 2.2-11, etm 1.1.1.
#
# variance  aalen: cuminc; delta: etm's covariance of Greenwood's type; robust: survfit's infinitesimal jackknife, hazards too. survfit passes over
#           clusters of these data: their errors are made of its influences.
# Where a variance has no program (late entry with Aalen's, times lost with either) it is formed here of its definition: the squared
# influence of every event time, a double sum. Where cuminc has a number, the definition has to give it too.
suppressMessages({library(survival); library(cmprsk); library(etm)})
number <- function(x) formatC(x, digits=17, width=1, format="g")
cases <- NULL; cells <- list()

# Of one group: incidence of cause k, its variance at times `at`, time lost to `tau` and its variance.
definition <- function(entry, time, status, k, kind, at, tau) {
  s <- sort(unique(time[status > 0])); n <- sapply(s, function(t) sum(entry < t & time >= t))
  d <- sapply(s, function(t) sum(time == t & status == k)); e <- sapply(s, function(t) sum(time == t & status > 0))
  after <- cumprod(1 - e / n); before <- c(1, after)[seq_along(s)]; F <- cumsum(before * d / n)
  tied <- function(x) ifelse(x > 0, x / n^2 * ifelse(x > 1, (n - x) / (n - 1), 1), 0)
  if (kind == "aalen") { own <- tied(d); cov <- own; any <- own + tied(e - d) } else { own <- d * (n - d) / n^3; cov <- d * (n - e) / n^3; any <- e * (n - e) / n^3 }
  value <- function(t) c(0, F)[1 + findInterval(t, s)]
  variance <- function(t) { i <- s <= t; a <- before[i]; b <- ifelse(after[i] > 0, -(value(t) - F[i]) / (1 - e[i] / n[i]), 0); sum(a^2 * own[i] + 2 * a * b * cov[i] + b^2 * any[i]) }
  area <- function(from) { t <- c(from, s[s > from & s < tau], tau); sum(diff(t) * value(t[-length(t)])) }
  i <- s < tau; a <- before[i] * (tau - s[i]); b <- ifelse(after[i] > 0, -(sapply(s[i], area) - (tau - s[i]) * F[i]) / (1 - e[i] / n[i]), 0)
  list(F=sapply(at, value), variance=sapply(at, variance), lost=area(0), lostVariance=sum(a^2 * own[i] + 2 * a * b * cov[i] + b^2 * any[i]))
}
close <- function(x, y, what) { x <- as.numeric(x); y <- as.numeric(y); ok <- abs(x - y) <= 1e-9 * pmax(abs(x), abs(y)) + 1e-16; if (!all(ok)) print(cbind(x, y)[!ok, , drop=FALSE]); stopifnot(setNames(all(ok), what)) }

incidence <- function(set, group="group", variance="aalen", weight="", cluster="") {
  d <- read.csv(sprintf("data/%s.csv", set)); name <- sprintf("%s_%d", set, 1 + sum(cases$data == set)); late <- "entry" %in% names(d)
  if (!late) d$entry <- -1
  d$w <- if (weight == "count") 1 + seq_len(nrow(d)) %% 3 else if (weight == "share") 0.5 + (seq_len(nrow(d)) %% 7) / 4 else rep(1, nrow(d))
  d$g <- if (group == "") 1 else d[[group]]
  tau <- number(min(tapply(d$time, d$g, max)) * 0.8); cases <<- rbind(cases, data.frame(case=name, data=set, group, variance, weight, cluster, tau)); tau <- as.numeric(tau)
  for (g in sort(unique(d$g))) { o <- d[d$g == g, ]; o <- if (weight == "count") o[rep(seq_len(nrow(o)), o$w), ] else o; at <- unique(sort(o$time)[round(seq(1, nrow(o), length.out=8))])
    add <- function(k, item, value) cells[[length(cells) + 1]] <<- data.frame(case=name, group=match(g, sort(unique(d$g))) - 1, cause=k, item, index=seq_along(value) - 1, value=number(as.numeric(value)))
    add(0, "time", at)
    if (variance == "robust") { o <- d[d$g == g, ]; o$row <- seq_len(nrow(o)); o$by <- if (cluster == "") o$row else o[[cluster]]; o$state <- factor(o$status, 0:max(d$status))
      r <- if (late) quote(Surv(entry, time, state)) else quote(Surv(time, state)); m <- survfit(as.formula(call("~", r, 1)), o, id=row, weights=w, cluster=by, influence=TRUE)
      f <- summary(m, times=at, extend=TRUE); u <- o$w * array(m$influence.pstate, c(nrow(o), prod(dim(m$influence.pstate)[-1])))
      each <- array(u, dim(m$influence.pstate)); u <- rowsum(u, o$by); u <- array(u, c(nrow(u), dim(m$influence.pstate)[-1])); at0 <- c(0, m$time)
      close(sqrt(apply(each^2, 2:3, sum))[-1, ], m$std.err, "influence"); error <- sqrt(apply(u^2, 2:3, sum)); width <- diff(pmin(c(at0, Inf), tau)); width[at0 > tau] <- 0
      for (k in seq_len(max(d$status))) { to <- match(as.character(k), m$states); o$one <- as.integer(o$status == k)
        h <- summary(survfit(if (late) Surv(entry, time, one) ~ 1 else Surv(time, one) ~ 1, o, weights=w, cluster=by, robust=TRUE, ctype=1), times=at, extend=TRUE)
        add(k, "incidence", f$pstate[, to]); add(k, "error", error[1 + findInterval(at, m$time), to]); add(k, "hazard", h$cumhaz); add(k, "hazardError", h$std.chaz)
        add(k, "lost", sum(width * c(0, m$pstate[, to]))); add(k, "lostError", sqrt(sum((u[, , to] %*% width)^2))) }
    } else for (k in seq_len(max(d$status))) { f <- definition(o$entry, o$time, o$status, k, variance, at, tau)
      if (variance == "aalen" && !late && any(o$status == k)) { c <- timepoints(cuminc(o$time, o$status), at); row <- sprintf("1 %d", k); close(c$est[row, ], f$F, "cuminc"); close(c$var[row, ], f$variance, "variance"); f$F <- c$est[row, ]; f$variance <- c$var[row, ] }
      if (variance == "delta") { o$cause <- ifelse(o$status == 0, 0, o$status); r <- if (late) etmCIF(Surv(entry, time, cause != 0) ~ 1, o, etype=cause) else etmCIF(Surv(time, cause != 0) ~ 1, o, etype=cause)
        s <- summary(r)[[1]][[sprintf("CIF %d", k)]]; if (!is.null(s)) { i <- findInterval(at, s$time); ok <- i > 0; close(s$P[i[ok]], f$F[ok], "etm"); close(s$var[i[ok]], f$variance[ok], "etm's variance") } }
      add(k, "incidence", f$F); add(k, "error", sqrt(pmax(f$variance, 0))); add(k, "lost", f$lost); add(k, "lostError", sqrt(f$lostVariance)) } }
}
sets <- sub(".csv", "", list.files("data"))
for (set in sets) { incidence(set); incidence(set, variance="delta"); incidence(set, variance="robust"); incidence(set, variance="robust", weight="share", cluster="cluster") }
for (set in c("pbc", "late", "melanoma")) { incidence(set, weight="count"); incidence(set, variance="delta", weight="count"); incidence(set, "", variance="robust", weight="share"); incidence(set, "stratum", variance="robust", cluster="cluster") }

tests <- NULL
gray <- function(set, rho=0, stratum="", pairs=FALSE, weight="") { d <- read.csv(sprintf("data/%s.csv", set)); if (weight == "count") d <- d[rep(seq_len(nrow(d)), 1 + seq_len(nrow(d)) %% 3), ]
  s <- if (stratum == "") rep(1, nrow(d)) else d[[stratum]]; g <- sort(unique(d$group))
  one <- function(i) cuminc(d$time[i], d$status[i], d$group[i], s[i], rho=rho)$Tests
  put <- function(i, a, b) { r <- tryCatch(one(i), error=function(e) NULL); for (k in rownames(r)) tests <<- rbind(tests, data.frame(data=set, rho, stratum, weight, cause=k, first=a, second=b, stat=number(r[k, "stat"]), pv=number(r[k, "pv"]), df=r[k, "df"])) }
  if (!pairs) put(rep(TRUE, nrow(d)), -1, -1) else for (a in g) for (b in g[g > a]) put(d$group %in% c(a, b), match(a, g) - 1, match(b, g) - 1) }
for (set in setdiff(sets, c("late", "abortion"))) { for (rho in c(0, 1, -0.5)) { gray(set, rho); gray(set, rho, "stratum") }; gray(set, weight="count") }
for (set in c("pbc", "bmt", "transplant", "paquid")) { gray(set, pairs=TRUE); gray(set, stratum="stratum", pairs=TRUE) }
write.csv(cases, "cases.csv", row.names=FALSE, quote=FALSE); write.csv(do.call(rbind, cells), "cells.csv", row.names=FALSE, quote=FALSE); write.csv(tests, "tests.csv", row.names=FALSE, quote=FALSE)
