# Writes cases.csv and cells.csv: curves of the data sets in ../cox/data by R's survival, of long
# results 15 rows. Run in this folder:  Rscript make.R        R 4.2.2, survival 3.5-3.
#
# Where R's number is not taken:
# - robust variances: `logse` follows ctype where it should follow stype. The product-limit curve's errors and limits are taken
#   from ctype = 1 whatever the ctype; exp(-H) with ctype = 1 has its error from std.chaz and no limits here.
# - se(rmean) is Greenwood's whatever the curve: for robust variances it is made of the influences, for exp(-H) of std.chaz.
# - limits of quantiles where a limit does not fall from time to time: R's search presumes that it does.
# - the limits before the first time: 1 on scales on which R has NA at a first time without events.
suppressMessages(library(survival))
number <- function(x) formatC(x, digits=17, width=1, format="g")
sample15 <- function(n) unique(round(seq(1, n, length.out=min(n, 15))))
probs <- c(0.1, 0.25, 0.5, 0.75, 0.9)
cases <- NULL; cells <- list()

curve <- function(data, group="", stype=1, ctype=1, conf="log-log", level=0.95, weight="", cluster="", robust=FALSE) {
  d <- read.csv(sprintf("../cox/data/%s.csv", data)); name <- sprintf("%s_%d", data, 1 + sum(cases$data == data))
  late <- "start" %in% names(d)
  if (weight == "count") d$w <- 1 + seq_len(nrow(d)) %% 3
  if (weight == "share") d$w <- 0.5 + (seq_len(nrow(d)) %% 7) / 4
  f <- as.formula(paste0("Surv(", if (late) "start, " else "", "time, event) ~ ", if (group == "") "1" else group))
  arguments <- list(formula=f, data=d, stype=stype, ctype=ctype, conf.type=conf, conf.int=level, robust=robust)
  if (weight != "") arguments$weights <- as.name("w")
  if (cluster != "") arguments$cluster <- as.name(cluster)
  if (late && robust && cluster == "") { arguments$data$row <- seq_len(nrow(d)); arguments$cluster <- quote(row) }  # asked for by R
  m <- do.call(survfit, arguments)
  swapped <- robust && stype == 2 && ctype == 1
  hazards <- m; if (robust && stype == 1) m <- do.call(survfit, modifyList(arguments, list(ctype=1)))
  influences <- if (robust) do.call(survfit, c(modifyList(arguments, list(ctype=if (stype == 1) 1 else ctype)), influence=TRUE))
  of <- function(list, g) if (is.list(list)) list[[g]] else list
  groups <- if (is.null(m$strata)) 1 else length(m$strata)
  at <- unique(as.numeric(quantile(d$time, c(0.05, 0.2, 0.5, 0.8), names=FALSE)))
  tau <- if (groups == 1) max(m$time) * 0.8 else min(tapply(m$time, rep(seq_len(groups), m$strata), max)) * 0.9
  cases <<- rbind(cases, data.frame(case=name, data, group, stype, ctype, conf, level=number(level), weight, cluster, robust=as.integer(robust), tau=number(tau),
                                    at=paste(number(at), collapse=";")))
  for (g in seq_len(groups)) {
    s <- if (groups == 1) m else m[g]; h <- if (groups == 1) hazards else hazards[g]
    add <- function(item, i, value) cells[[length(cells) + 1]] <<- data.frame(case=name, group=g - 1, item=item, index=i, value=number(as.numeric(value)))
    k <- sample15(length(s$time)); error <- if (swapped) s$surv * s$std.chaz else if (is.null(s$logse) || s$logse) s$surv * s$std.err else ifelse(s$surv > 0, s$std.err, NaN)
    add("times", 0, length(s$time))
    add("time", k - 1, s$time[k]); add("atRisk", k - 1, s$n.risk[k]); add("events", k - 1, s$n.event[k]); add("censored", k - 1, s$n.censor[k])
    add("survival", k - 1, s$surv[k]); add("survivalError", k - 1, error[k])
    if (!swapped) { add("lower", k - 1, s$lower[k]); add("upper", k - 1, s$upper[k]) }
    add("hazard", k - 1, h$cumhaz[k]); add("hazardError", k - 1, h$std.chaz[k])
    q <- quantile(s, probs); add("quantile", seq_along(probs) - 1, q$quantile); falls <- function(x) all(diff(x[!is.na(x)]) <= 0)
    if (!swapped && falls(s$lower)) add("quantileLower", seq_along(probs) - 1, q$lower)
    if (!swapped && falls(s$upper)) add("quantileUpper", seq_along(probs) - 1, q$upper)
    r <- summary(s, times=at, extend=TRUE); i <- seq_along(at) - 1; known <- at >= s$time[1] | conf %in% c("plain", "log")
    add("survivalAt", i, r$surv); if (!swapped && any(known)) { add("lowerAt", i[known], r$lower[known]); add("upperAt", i[known], r$upper[known]) }; if (!late) add("atRiskAt", i, r$n.risk)
    add("eventsAt", i, r$n.event)
    table <- summary(s, rmean=tau)$table; add("mean", 0, table[["rmean"]])
    width <- diff(pmin(c(s$time, Inf), tau)) # for which each value of the curve holds
    area <- rev(cumsum(rev(width * s$surv)))
    add("meanError", 0, if (robust) { u <- if (stype == 1) of(influences$influence.surv, g) else t(-s$surv * t(of(influences$influence.chaz, g))); sqrt(sum((u %*% width)^2)) }
      else if (stype == 2) sqrt(sum(area^2 * diff(c(0, s$std.chaz^2)))) else table[["se(rmean)"]])
  }
}

for (conf in c("plain", "log", "log-log", "logit", "arcsin")) { curve("lung", "male", conf=conf); curve("larynx", conf=conf, level=0.9) }
for (stype in 1:2) for (ctype in 1:2) for (weight in c("", "count", "share")) {
  curve("veteran", "cell", stype, ctype, weight=weight, robust=weight == "share"); curve("myeloma", "", stype, ctype, "log", weight=weight, robust=weight == "share") }
for (stype in 1:2) for (ctype in 1:2) { curve("colon", "lev", stype, ctype, "log", cluster="id", robust=TRUE); curve("heart", "transplant", stype, ctype, "plain", cluster="id", robust=TRUE)
  curve("bladder", "thiotepa", stype, ctype, cluster="id", robust=TRUE) }
curve("ovarian", "rx", conf="logit"); curve("cgd", "gamma", conf="log"); curve("cgd", "gamma", conf="arcsin", cluster="id", robust=TRUE); curve("pbc", "trt", conf="arcsin", robust=TRUE)
curve("retinopathy", "treated", cluster="id", robust=TRUE); curve("rats", "rx", conf="logit", cluster="litter", robust=TRUE); curve("gbsg", "hormon", 2, 2); curve("nwtco", "unfavourable", weight="share", robust=TRUE)
curve("rhdnase", "rx", conf="plain"); curve("mgus", "male", conf="log"); curve("mgus", "male", 2, 2, weight="share", robust=TRUE); curve("stanford", conf="log", level=0.8); curve("bfeed", "poverty", 1, 2); curve("bfeed", "smoke", 2, 2, "plain")
curve("burn", "bathing", conf="log"); curve("bmt", "hospital", conf="logit"); curve("channing", "female"); curve("channing", "female", 2, 1, "arcsin", weight="count"); curve("kidtran", "black", conf="plain", level=0.99)
curve("std", "gonorrhoea", 1, 2); curve("pneumon", "smoke"); curve("hodgkin", "allo", conf="log")
write.csv(cases, "cases.csv", row.names=FALSE, quote=FALSE); write.csv(do.call(rbind, cells), "cells.csv", row.names=FALSE, quote=FALSE)
