# Writes rates.csv and tables.csv. Run in this folder:  Rscript make_rates.R    R 4.2.2, survival 3.5-3, km.ci 0.5-6.
suppressMessages({library(survival); library(km.ci)})
number <- function(x) formatC(x, digits=17, width=1, format="g"); cells <- NULL
add <- function(item, value) cells <<- rbind(cells, data.frame(item, index=seq_along(value) - 1, value=number(as.numeric(value))))
read <- function(name) read.csv(sprintf("../cox/data/%s.csv", name))

# Exact limits of counts and of ratios of two rates (poisson.test).
counts <- c(0, 1, 3, 12, 150, 4000); times <- c(10, 2.5, 700, 31, 1000, 123456)
for (level in c(0.95, 0.9)) for (i in seq_along(counts)) add(sprintf("poisson%g", 100 * level), poisson.test(counts[i], times[i], conf.level=level)$conf.int)
for (pair in list(c(1, 2), c(2, 3), c(3, 4), c(4, 5), c(5, 6), c(6, 5), c(4, 1), c(2, 2))) {
  r <- poisson.test(counts[pair], times[pair]); add("ratio", c(r$estimate, r$conf.int, r$p.value)) }

# Person-time and events within intervals, cut by survSplit.
for (name in c("lung", "heart")) { d <- read(name); if (name == "lung") d$start <- 0
  cuts <- c(100, 250, 500); s <- survSplit(Surv(start, time, event) ~ ., d, cut=cuts, episode="part")
  for (g in 0:1) { one <- s[s[[c(lung="male", heart="transplant")[name]]] == g, ]
    add(paste0(name, "Events"), sapply(1:4, function(k) sum(one$event[one$part == k]))); add(paste0(name, "Time"), sapply(1:4, function(k) sum((one$time - one$start)[one$part == k]))) } }

# Differences and ratios of restricted means, second group less (over) first, with 95 % limits and tests.
for (name in c("lung", "veteran")) { d <- read(name); group <- c(lung="male", veteran="test")[name]; tau <- c(lung=600, veteran=300)[name]
  t <- summary(survfit(as.formula(paste("Surv(time, event) ~", group)), d), rmean=tau)$table; m <- t[, "rmean"]; e <- t[, "se(rmean)"]; z <- qnorm(0.975)
  own <- function(x, e) c(x, e, x - z * e, x + z * e, 2 * pnorm(-abs(x / e)))
  onLog <- function(x, e) c(x, e, x * exp(-z * e), x * exp(z * e), 2 * pnorm(-abs(log(x) / e)))
  add("means", own(m[[2]] - m[[1]], sqrt(sum(e^2)))); add("means", onLog(m[[2]] / m[[1]], sqrt(sum((e / m)^2))))
  l <- tau - m; add("means", onLog(l[[2]] / l[[1]], sqrt(sum((e / l)^2)))) }

# Survival of the second group less that of the first at one time, transformed (Klein, Logan, Harhoff & Andersen 2007).
for (name in c("lung", "veteran")) { d <- read(name); group <- c(lung="male", veteran="test")[name]
  r <- summary(survfit(as.formula(paste("Surv(time, event) ~", group)), d), times=c(lung=365, veteran=90)[[name]]); S <- r$surv; e <- r$std.err / S
  for (x in list(list(S, S * e), list(log(S), e), list(log(-log(S)), e / abs(log(S))), list(log(S / (1 - S)), e / (1 - S)), list(asin(sqrt(S)), e / 2 * sqrt(S / (1 - S))))) {
    y <- diff(x[[1]]); se <- sqrt(sum(x[[2]]^2)); add("fixed", c(y, se, y - qnorm(0.975) * se, y + qnorm(0.975) * se, 2 * pnorm(-abs(y / se)))) } }

# Smoothed hazards: Klein & Moeschberger (2003), 6.2, formulas 6.2.1 to 6.2.8.
for (name in c("lung", "veteran", "kidtran")) { d <- read(name); b <- c(lung=120, veteran=80, kidtran=600)[[name]]; f <- survfit(Surv(time, event) ~ 1, d)
  ok <- f$n.event > 0; t <- f$time[ok]; dH <- (f$n.event / f$n.risk)[ok]; dV <- (f$n.event / f$n.risk^2)[ok]; last <- max(t)
  epanechnikov <- function(x) ifelse(abs(x) <= 1, 0.75 * (1 - x^2), 0)
  edge <- function(x, q) { D <- (1 + q)^4 * (19 - 18 * q + 3 * q^2); ifelse(x >= -1 & x <= q, epanechnikov(x) * (64 * (2 - 4 * q + 6 * q^2 - 3 * q^3) / D + 240 * (1 - q)^2 / D * x), 0) }
  at <- last * c(0, 0.03, 0.1, 0.3, 0.5, 0.77, 0.95, 1)
  k <- sapply(at, function(a) { x <- (a - t) / b; if (a < b) edge(x, a / b) else if (last - a < b) edge(-x, (last - a) / b) else epanechnikov(x) })
  h <- colSums(k * dH) / b; e <- sqrt(colSums(k^2 * dV)) / b
  add(paste0(name, "HazardTime"), at); add(paste0(name, "Hazard"), h); add(paste0(name, "HazardError"), e)
  add(paste0(name, "HazardLower"), ifelse(h > 0, h * exp(-qnorm(0.975) * e / h), NaN)); add(paste0(name, "HazardUpper"), ifelse(h > 0, h * exp(qnorm(0.975) * e / h), NaN)) }
write.csv(cells, "rates.csv", row.names=FALSE, quote=FALSE)

# The printed table of Hall and Wellner's critical values (Klein & Moeschberger, appendix C; four decimals) as km.ci holds it: rows
# b = 0.1, 0.12, ... That of equal precision is no table of the law: it solves alpha = phi(c) (4 / c + (c - 1 / c) log(b (1 - a) / (a (1 - b)))),
# Miller and Siegmund's approximation for large c, and is up to 0.1 away where a and b are close. Nor is that of 90 % taken, which
# has 1.2239 for Kolmogorov's 1.22385 and goes on like that, nor 1.3954 at (0.16, 0.34) of 99 %, between 1.3990 and 1.3971.
out <- NULL
for (level in c("95", "99")) { table <- getFromNamespace(paste0("critical.value.hall.", level), "km.ci")
  for (i in seq(1, nrow(table), 5)) for (j in seq(1, ncol(table), 6)) if (!is.na(table[i, j])) out <- rbind(out, data.frame(level=as.numeric(level) / 100,
    a=as.numeric(substring(colnames(table)[j], 3)) / 100, b=0.1 + 0.02 * (i - 1), critical=table[i, j])) }
write.csv(subset(out, a < b), "tables.csv", row.names=FALSE, quote=FALSE)
