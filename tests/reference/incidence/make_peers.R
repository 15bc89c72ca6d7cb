# Writes peers.csv: of data sets in data/ (make_data.R) incidences and their errors by prodlim, predicted incidences by riskRegression's FGR,
# and regressions of the causes by its CSC. Run in this folder:  Rscript make_peers.R
# R 4.2.2, prodlim 2019.11.13, riskRegression 2022.11.28, survival 3.5-3, cmprsk 2.2-11.
#
# prodlim  at eight times; it has no errors where nobody is left. prodlimcount: caseweights, whose errors are those of rows as often as
#          that (checked here).
# FGR      passes gtol and maxiter on to crr, whose steps end early without them, and which may halt before: then its last step is added
#          to the coefficients; at times between those of events, at the first and
#          the middle row.
# finegray the same incidences by survfit of coxph of the rows that survival's finegray makes, Breslow's ties.
# CSC      each cause by coxph, Efron's ties, run on to eps 1e-14.
suppressMessages({library(survival); library(prodlim); library(riskRegression)})
number <- function(x) formatC(x, digits=17, width=1, format="g")
cells <- list()
add <- function(program, set, cause, row, item, value) cells[[length(cells) + 1]] <<- data.frame(program, data=set, cause, row, item, index=seq_along(value) - 1, value=number(as.numeric(value)))
covariates <- function(d) grep("^x", names(d), value=TRUE)

byProdlim <- function(set, weight="") { d <- read.csv(sprintf("data/%s.csv", set)); w <- 1 + seq_len(nrow(d)) %% 3
  f <- if (weight == "count") prodlim(Hist(time, status) ~ 1, d, caseweights=w) else prodlim(Hist(time, status) ~ 1, d)
  left <- is.finite(f$se.cuminc[["1"]]); stopifnot(f$n.risk[!left] == f$n.event[["1"]][!left] + Reduce(`+`, f$n.event[-1])[!left])
  k <- which(left)[unique(round(seq(1, sum(left), length.out=8)))]; program <- paste0("prodlim", weight)
  if (weight == "count") { g <- prodlim(Hist(time, status) ~ 1, d[rep(seq_len(nrow(d)), w), ]); stopifnot(all.equal(f$cuminc, g$cuminc, tolerance=1e-12), all.equal(f$se.cuminc, g$se.cuminc, tolerance=1e-9)) }
  for (cause in seq_len(max(d$status))) { name <- as.character(cause)
    add(program, set, cause, 0, "time", f$time[k]); add(program, set, cause, 0, "incidence", f$cuminc[[name]][k]); add(program, set, cause, 0, "error", f$se.cuminc[[name]][k]) } }

byFgr <- function(set, cause) { d <- read.csv(sprintf("data/%s.csv", set)); model <- reformulate(covariates(d), "Hist(time, status)"); environment(model) <- globalenv()
  f <- FGR(model, d, cause=cause, gtol=1e-14, maxiter=100); s <- f$crrFit$uftime; k <- unique(round(seq(1, length(s) - 1, length.out=6))); at <- (s[k] + s[k + 1]) / 2
  rows <- c(1, nrow(d) %/% 2); p <- predictRisk(f, newdata=d[rows, ], times=at, cause=cause)
  add("FGR", set, cause, 0, "coef", f$crrFit$coef + if (f$crrFit$converged) 0 else f$crrFit$invinf %*% f$crrFit$score)
  d$state <- factor(d$status, 0:max(d$status)); g <- finegray(reformulate(covariates(d), "Surv(time, state)"), d, etype=as.character(cause))
  m <- suppressWarnings(coxph(reformulate(covariates(d), "Surv(fgstart, fgstop, fgstatus)"), g, weights=fgwt, ties="breslow", control=coxph.control(eps=1e-14, iter.max=50)))
  q <- 1 - t(summary(survfit(m, newdata=d[rows, ], se.fit=FALSE), times=at, extend=TRUE)$surv)
  for (i in 1:2) { add("FGR", set, cause, rows[i] - 1, "time", at); add("FGR", set, cause, rows[i] - 1, "predicted", p[i, ]); add("FGR", set, cause, rows[i] - 1, "finegray", q[i, ]) } }

byCsc <- function(set) { d <- read.csv(sprintf("data/%s.csv", set)); model <- reformulate(covariates(d), "Hist(time, status)"); environment(model) <- globalenv()
  f <- suppressWarnings(CSC(model, d, control=coxph.control(eps=1e-14, iter.max=50)))
  for (cause in seq_len(max(d$status))) { m <- f$models[[cause]]; add("CSC", set, cause, 0, "coef", coef(m)); add("CSC", set, cause, 0, "var", m$var); add("CSC", set, cause, 0, "loglik", m$loglik) } }

sets <- c("colon", "marrow", "spike", "trace", "ward", "mgus", "pbc", "transplant", "rotterdam")
for (set in sets) { byProdlim(set); byProdlim(set, "count"); byFgr(set, 1); byFgr(set, 2); byCsc(set) }
write.csv(do.call(rbind, cells), "peers.csv", row.names=FALSE, quote=FALSE)
