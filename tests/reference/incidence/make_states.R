# Writes states_data.csv (id, entry, exit, from, to; 0 nowhere) and states.csv: occupation probabilities, hazards and times in states.
# Run in this folder:  Rscript make_states.R    R 4.2.2, etm 1.1.1, survival 3.5-3.
#
# sir is data/ventilation.csv with numbers for its states (unventilated 1, ventilated 2, left 3).
# Probabilities, their covariance of Greenwood's type and cumulative hazards from etm and, for observed
# starts of several states, by p(start) times its matrices; the times in states and their errors of the definition: every event time's
# multinomial error, carried on by the matrices from it to the horizon.
suppressMessages({library(etm); library(survival)})
number <- function(x) formatC(x, digits=17, width=1, format="g"); cells <- list(); rows <- list()
sir <- read.csv("../../../data/ventilation.csv"); code <- c(unventilated=1, ventilated=2, left=3, censored=0); sir$from <- code[sir$from]; sir$to <- code[sir$to]
# Four states, the fourth for good; people come late, go back and forth, and leave, with ties.
set.seed(11); made <- NULL; for (id in 1:160) { t <- sample(0:3, 1); state <- sample(1:2, 1); repeat { stay <- sample(1:9, 1); u <- runif(1)
  to <- if (u < 0.2) 0 else if (state == 3) sample(c(1, 4), 1) else sample(setdiff(1:4, state), 1, prob=c(3, 2, 1)); made <- rbind(made, data.frame(id, entry=t, exit=t + stay, from=state, to)); if (to %in% c(0, 4)) break; t <- t + stay; state <- to } }
sets <- list(sir=sir, made=made)
for (set in names(sets)) { d <- sets[[set]]; rows[[set]] <- data.frame(set, d); k <- max(d$from, d$to); tra <- matrix(FALSE, k, k); for (i in which(d$to > 0)) tra[d$from[i], d$to[i]] <- TRUE
  for (start in c(0, 5)) for (first in c(0, 1, 2)) { e <- d[d$exit > start, ]; x <- e; x$entry <- pmax(x$entry, start)
    p0 <- if (first > 0) as.numeric(1:k == first) else { r <- d[d$entry <= start & d$exit > start, ]; tabulate(r$from, k) / nrow(r) }
    s <- sort(unique(e$exit[e$to > 0])); D <- lapply(s, function(t) table(factor(e$from[e$exit == t & e$to > 0], 1:k), factor(e$to[e$exit == t & e$to > 0], 1:k))); n <- t(sapply(s, function(t) sapply(1:k, function(h) sum(e$from == h & e$entry < t & e$exit >= t))))
    dA <- lapply(seq_along(s), function(i) { a <- D[[i]] / pmax(n[i, ], 1); a <- matrix(a, k); diag(a) <- -rowSums(a); a }); P <- list(); now <- diag(k); for (i in seq_along(s)) { now <- now %*% (diag(k) + dA[[i]]); P[[i]] <- now }
    p <- t(sapply(P, function(m) p0 %*% m)); tau <- number(quantile(s, 0.8) + 0.5); covariance <- function(i, h) { a <- pmax(dA[[i]][h, ], 0); a[h] <- 0; full <- a; full[h] <- 1 - sum(a); (diag(full) - outer(full, full)) / max(n[i, h], 1) }
    at <- unique(round(seq(1, length(s), length.out=7))); before <- rbind(p0, p)
    variance <- sapply(at, function(m) { v <- numeric(k); B <- diag(k); for (i in m:1) { for (h in 1:k) if (sum(D[[i]][h, ]) > 0) v <- v + before[i, h]^2 * diag(t(B) %*% covariance(i, h) %*% B); B <- (diag(k) + dA[[i]]) %*% B }; v })
    T <- as.numeric(tau); m <- max(which(s <= T)); width <- diff(c(s[seq_len(m)], T)); time <- (s[1] - start) * p0 + colSums(width * p[seq_len(m), ]); v <- numeric(k); B <- matrix(0, k, k) # B: area from behind time i on
    for (i in m:1) { B <- width[i] * diag(k) + if (i < m) (diag(k) + dA[[i + 1]]) %*% B else 0; for (h in 1:k) if (sum(D[[i]][h, ]) > 0) v <- v + before[i, h]^2 * diag(t(B) %*% covariance(i, h) %*% B) }
    add <- function(item, value) cells[[length(cells) + 1]] <<- data.frame(set, start, first, item, index=seq_along(value) - 1, value=number(as.numeric(value)))
    z <- data.frame(id=x$id, from=as.character(x$from), to=ifelse(x$to == 0, "cens", as.character(x$to)), entry=x$entry, exit=x$exit); f <- suppressWarnings(etm(z, as.character(1:k), tra, "cens", s=start))
    if (first > 0) { j <- match(s[at], f$time); stopifnot(max(abs(t(f$est[first, , j]) - p[at, ])) < 1e-12); g <- sapply(1:k, function(b) f$cov[paste(first, b), paste(first, b), j]); stopifnot(max(abs(g - t(variance))) < 1e-12) }
    add("time", s[at]); add("probability", t(p[at, ])); add("variance", variance); add("tau", tau); add("stay", time); add("stayError", sqrt(v)); add("initial", p0)
    if (first == 0) { hit <- which(t(tra)) - 1; H <- sapply(at, function(m) { a <- Reduce(`+`, dA[1:m]); t(a)[hit + 1] }); HV <- sapply(at, function(m) { a <- Reduce(`+`, lapply(1:m, function(i) D[[i]] / pmax(n[i, ], 1)^2)); t(matrix(a, k))[hit + 1] }); ok <- H[, length(at)] > 0; add("hazard", H[ok, ]); add("hazardVariance", HV[ok, ]) } } }
write.csv(do.call(rbind, cells), "states.csv", row.names=FALSE, quote=FALSE); write.csv(do.call(rbind, rows), "states_data.csv", row.names=FALSE, quote=FALSE)
