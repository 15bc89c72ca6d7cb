# Writes states_robust.csv: robust errors of occupation probabilities, times in states and hazards of the histories of states_data.csv.
# Run in this folder, after make_states.R:  Rscript make_states_robust.R    R 4.2.2, survival 3.5-3.
#
# Probabilities, their standard errors by subject and each subject's influence are survfit's; weights are 0.5, 1, 2.5, 1.5 by id, clusters
# id modulo 7. survfit passes over clusters of several subjects: there, and for times in states, its influences are summed or integrated.
# Hazards: the influence dN / n - Y dN / n^2 of each row, summed over the cluster.
suppressMessages(library(survival))
number <- function(x) formatC(x, digits=17, width=1, format="g"); rows <- read.csv("states_data.csv"); cells <- list()
for (set in c("sir", "made")) { d <- rows[rows$set == set, ]; k <- max(d$from, d$to); ids <- sort(unique(d$id))
  d$event <- factor(d$to, 0:k, labels=c("censored", 1:k)); d$state <- factor(d$from, 1:k)
  for (start in c(0, 4.75)) for (weighted in 0:1) for (clustered in 0:1) {
    w <- if (weighted == 1) c(0.5, 1, 2.5, 1.5)[d$id %% 4 + 1] else rep(1, nrow(d))
    f <- survfit(Surv(entry, exit, event) ~ 1, d, id=id, istate=state, weights=w, start.time=start, influence=TRUE)
    U <- f$influence.pstate; who <- as.numeric(dimnames(U)[[1]]); if (is.null(dimnames(U)[[1]])) who <- unique(d$id[d$exit > start])
    U <- U * (if (weighted == 1) c(0.5, 1, 2.5, 1.5)[who %% 4 + 1] else 1) # survfit has them for a weight of 1
    s <- f$time[f$time > start]; hit <- rowSums(f$n.event[f$time > start, , drop=FALSE]) > 0; s <- s[hit]; stopifnot(length(who) == dim(U)[1])
    at0 <- if (dim(U)[2] == length(f$time) + 1) 1 else 0; group <- if (clustered == 1) who %% 7 else who
    sums <- function(m) rowsum(m, group); error <- function(m) sqrt(colSums(sums(m)^2))
    places <- match(s, f$time); at <- unique(round(seq(1, length(s), length.out=7)))
    E <- t(sapply(at, function(i) error(U[, places[i] + at0, ]))); if (clustered == 0) stopifnot(max(abs(E - f$std.err[places[at], ])) < 1e-12)
    tau <- as.numeric(number(quantile(s, 0.8) + 0.5)); used <- s[s <= tau]; width <- diff(c(used, tau)); U0 <- if (at0 == 1) U[, 1, ] else stop("no start")
    area <- (used[1] - start) * U0; for (i in seq_along(used)) area <- area + width[i] * U[, match(used[i], f$time) + at0, ]
    H <- NULL; for (a in 1:k) for (b in 1:k) if (any(d$from == a & d$to == b & d$exit > start)) { g <- numeric(nrow(d)); r <- NULL
      for (i in seq_along(s)) { Y <- d$from == a & d$entry < s[i] & d$exit >= s[i]; n <- sum(w[Y]); J <- Y & d$exit == s[i] & d$to == b; if (n > 0) g <- g + w * (J / n - Y * sum(w[J]) / n^2); r <- c(r, sqrt(sum(rowsum(g, if (clustered == 1) d$id %% 7 else d$id)^2))) }
      H <- cbind(H, r[at]) }
    add <- function(item, value) cells[[length(cells) + 1]] <<- data.frame(set, start, weighted, clustered, item, index=seq_along(value) - 1, value=number(as.numeric(value)))
    add("time", s[at]); add("initial", f$p0); add("probability", t(f$pstate[places[at], ])); add("error", t(E)); add("tau", tau); add("stayError", error(area)); add("hazardError", t(H)) } }
write.csv(do.call(rbind, cells), "states_robust.csv", row.names=FALSE, quote=FALSE)
