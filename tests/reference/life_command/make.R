# What R's survival makes of calls of survmeth life: cases.txt, expected.csv and the data sets that no
# other folder has. Run in this folder:  Rscript make.R        R 4.2.2, survival 3.5-3.
#
# Where R's number is not taken:
# - robust errors of Kaplan-Meier curves are those of ctype = 1 and of exp(-H) those of std.chaz (see ../curves/make.R);
# - the cumulative hazard's error beside a Kaplan-Meier curve is that of the Nelson-Aalen estimate, as in R;
# - se(rmean) of exp(-H) is Greenwood's in R: not compared;
# - tests other than survdiff's rho family, differences at a time and hazard ratios: by their formulas, written out below.
suppressMessages({library(survival); library(KMsurv)})
number <- function(x) ifelse(!is.finite(x), "", formatC(as.numeric(x), digits = 17, width = 1, format = "g"))
calls <- character(); out <- list()
add <- function(case, table, row, column, value, scale = 0) {
  out[[length(out) + 1]] <<- data.frame(case, table, row = as.character(row), column, value = number(value),
    scale = formatC(pmax(abs(ifelse(is.finite(value), value, 1)), scale), digits = 3, format = "g"))
}
write <- function(d, name) write.csv(d, name, row.names = FALSE, quote = FALSE, na = "")
sample12 <- function(n) unique(round(seq(1, n, length.out = min(n, 12))))
key <- function(x) formatC(x, digits = 12, width = 1, format = "g")

# Data sets of survival and KMsurv that stand nowhere else in the tree.
e <- new.env(); data(list = c("alloauto", "tongue", "drug6mp", "psych", "rats", "kidney"), package = "KMsurv", envir = e)
write(with(e$alloauto, data.frame(time, delta, type)), "alloauto.csv")
write(with(e$tongue, data.frame(time, delta, type)), "tongue.csv")
write(with(e$kidney, data.frame(time, delta, type)), "catheter.csv")
write(with(e$psych, data.frame(entry = age, exit = age + time, death, sex)), "psych.csv")
write(with(survival::aml, data.frame(time, status, x = as.character(x))), "aml.csv")
write(with(survival::transplant, data.frame(futime, death = as.integer(event == "death"), abo)[futime > 0, ]), "transplant.csv")
m <- survival::myeloid
write(with(m, data.frame(futime, death, trt, sex)), "myeloid.csv")
l <- survival::lung
begin <- as.Date("1990-01-01") + (seq_len(nrow(l)) * 37) %% 2000
write(data.frame(begin, end = begin + l$time, dead = l$status == 2, sex = ifelse(l$sex == 1, "m", "f")), "dates.csv")

# Small ones of the author's: nobody at risk in between, entries at others' exits, times of 0, curves that end at 0, ties only, rows of weight 0.
odd <- list(hole = data.frame(entry = c(0, 0, 0, 0, 5, 5, 6, 6, 5.5, 5), time = c(1, 2, 2, 3, 7, 8, 8, 9, 10, 11), event = c(1, 1, 0, 1, 1, 0, 1, 1, 0, 1), g = rep(1:2, 5)),
  touch = data.frame(entry = c(0, 1, 2, 0, 3, 2, 1, 4, 0), time = c(1, 2, 3, 3, 5, 4, 4, 6, 2), event = c(1, 1, 1, 0, 1, 1, 0, 1, 1), g = c(1, 2, 1, 2, 1, 2, 1, 2, 1)),
  zero = data.frame(time = c(0, 0, 0, 1, 2, 2, 3, 5, 5, 0, 4, 6), event = c(1, 0, 1, 1, 0, 1, 1, 0, 1, 0, 1, 0), g = rep(1:2, 6)),
  uncensored = data.frame(time = c(3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5, 8), event = 1, g = rep(1:3, 4)),
  single = data.frame(time = 1:12, event = as.integer(1:12 == 5), g = rep(1:2, 6)),
  tied = data.frame(time = rep(c(2, 4), each = 10), event = rep(c(1, 0, 1, 1, 0), 4), g = rep(1:2, 10)),
  nothing = data.frame(time = 1:8, event = c(1, 1, 0, 1, 1, 0, 1, 1), g = rep(1:2, 4), w = c(2, 0, 3, 1, 0, 4, 2, 1)))
for (each in names(odd)) write(odd[[each]], paste0(each, ".csv"))

cox <- function(name) sprintf("tests/reference/cox/data/%s.csv", name)
own <- function(name) sprintf("tests/reference/life_command/%s.csv", name)
read <- function(file) read.csv(file.path("../../..", file), stringsAsFactors = FALSE)

# One call: the curves' table, summary, quantiles, survival and means of every group. `label` gives the groups' names.
life <- function(case, file, time = "time", event = "event", group = "", entry = "", options = "", weights = "", cluster = "",
                 stype = 1, ctype = 1, conf = "log-log", lower = "usual", level = 0.95, robust = FALSE, time_of = NULL, says = NULL) {
  d <- read(file); if (is.null(time_of)) d$..t <- d[[time]] else d$..t <- time_of(d)
  if (weights != "") d <- d[d[[weights]] > 0, ]
  d$..e <- if (is.logical(d[[event]])) d[[event]] + 0 else d[[event]]; if (entry != "") d$..s <- d[[entry]]
  d$..g <- if (group == "") rep("all", nrow(d)) else as.character(d[[group]])
  f <- as.formula(paste0("Surv(", if (entry != "") "..s, ", "..t, ..e) ~ ", if (group == "") "1" else "..g"))
  arguments <- list(formula = f, data = d, stype = stype, ctype = ctype, conf.type = c(arcsine = "arcsin")[conf], conf.int = level, conf.lower = lower)
  if (is.na(arguments$conf.type)) arguments$conf.type <- conf
  if (weights != "") arguments$weights <- as.name(weights)
  if (cluster != "") arguments$cluster <- as.name(cluster)
  if (robust) arguments$robust <- TRUE
  fit <- do.call(survfit, arguments)
  arguments$formula <- as.formula(sub("..e)", "1 - ..e)", deparse(f), fixed = TRUE)); arguments$stype <- 1; arguments$ctype <- 1
  arguments$cluster <- NULL; arguments$robust <- FALSE; arguments$conf.lower <- "usual"
  follow <- do.call(survfit, arguments)
  probs <- c(0.1, 0.25, 0.5, 0.75, 0.9); at <- unique(signif(as.numeric(quantile(d$..t, c(0.1, 0.4, 0.8), names = FALSE)), 3))
  groups <- sort(unique(d$..g)); if (all(!is.na(suppressWarnings(as.numeric(groups))))) groups <- groups[order(as.numeric(groups))]
  tau <- signif(0.9 * min(tapply(d$..t, d$..g, max)), 3)
  call <- paste0("life ", file, if (!is.null(says)) says else paste0(" --time ", time, if (entry != "") paste0(" --entry ", entry)), " --event ", event,
    if (group != "") paste0(" --group ", group), if (weights != "") paste0(" --weights ", weights), if (cluster != "") paste0(" --cluster ", cluster),
    if (robust && cluster == "") " --robust", if (stype == 2) c(" --estimate nelson-aalen", " --estimate fleming-harrington")[ctype],
    if (conf != "log-log") paste0(" --conf ", conf), if (lower != "usual") paste0(" --conf-lower ", lower), if (level != 0.95) paste0(" --alpha ", 1 - level),
    " --quantiles 0.1,0.25,0.5,0.75,0.9 --at ", paste(at, collapse = ","), " --tau ", tau, " ", options)
  calls <<- c(calls, paste0(case, "\t", call))
  sandwich <- robust || cluster != ""; table <- if (stype == 1) "kaplanMeier" else "curves"
  for (i in seq_along(groups)) { g <- groups[i]; one <- function(m) if (length(groups) == 1) m else m[paste0("..g=", g)]
    s <- one(fit); r <- one(follow); k <- sample12(length(s$time)); t <- s$time[k]; id <- paste0(g, "|", key(t))
    error <- if (is.null(s$logse) || s$logse) s$surv * s$std.err else ifelse(s$surv > 0, s$std.err, NA); swapped <- sandwich && stype == 2
    if (swapped) error <- s$surv * s$std.chaz
    add(case, table, id, "atRisk", s$n.risk[k]); add(case, table, id, "events", s$n.event[k]); add(case, table, id, "censored", s$n.censor[k])
    add(case, table, id, "survival", s$surv[k]); add(case, table, id, "standardError", ifelse(s$surv[k] > 0 | swapped, error[k], NA), s$surv[k])
    if (!swapped) { none <- s$surv[k] == 0 | (s$surv[k] == 1 & !(conf %in% c("plain", "log")))
      add(case, table, id, "lower", ifelse(none, NA, s$lower[k]), error[k]); add(case, table, id, "upper", ifelse(none, NA, s$upper[k]), error[k]) }
    add(case, table, id, "cumulativeHazard", s$cumhaz[k]); add(case, table, id, "cumulativeHazardStandardError", s$std.chaz[k])
    q <- quantile(s, probs); falls <- function(x) all(diff(x[!is.na(x)]) <= 0)
    add(case, "quantiles", paste0(g, "|", probs), "time", q$quantile)
    if (!swapped && falls(s$lower)) add(case, "quantiles", paste0(g, "|", probs), "lower", q$lower)
    if (!swapped && falls(s$upper)) add(case, "quantiles", paste0(g, "|", probs), "upper", q$upper)
    add(case, "summary", g, "n", sum(s$n.event) + sum(s$n.censor)); add(case, "summary", g, "events", sum(s$n.event)); add(case, "summary", g, "censored", sum(s$n.censor))
    add(case, "summary", g, "median", q$quantile[3]); add(case, "summary", g, "lowerQuartile", q$quantile[2]); add(case, "summary", g, "upperQuartile", q$quantile[4])
    if (!swapped && falls(s$lower)) add(case, "summary", g, "lower", q$lower[3])
    add(case, "summary", g, "followUp", quantile(r, 0.5, conf.int = FALSE))
    x <- summary(s, times = at, extend = TRUE); beyond <- at > max(s$time) & tail(s$surv, 1) > 0; id <- paste0(g, "|", key(at))
    add(case, "survivalAt", id, "survival", ifelse(beyond, NA, x$surv))
    if (!swapped && entry == "") add(case, "survivalAt", id, "atRisk", x$n.risk)
    # R refuses a horizon before the first time, where the mean is the horizon itself.
    rm <- if (tau < s$time[1]) c(rmean = tau, "se(rmean)" = 0) else summary(s, rmean = tau)$table
    add(case, "restrictedMeans", g, "mean", rm[["rmean"]]); add(case, "restrictedMeans", g, "timeLost", tau - rm[["rmean"]])
    if (stype == 1 && !sandwich) { z <- qnorm(1 - (1 - level) / 2); se <- rm[["se(rmean)"]]
      add(case, "restrictedMeans", g, "standardError", se); add(case, "restrictedMeans", g, "lower", rm[["rmean"]] - z * se); add(case, "restrictedMeans", g, "timeLostUpper", tau - rm[["rmean"]] + z * se) }
  }
  invisible(list(d = d, fit = fit, groups = groups, at = at, level = level))
}

# survdiff beside the curves: chi-squares of --tests, observed and expected events, strata, pairs.
tests <- function(case, made, strata = "", rhos = c(0, 1, 0.5), words = c("Log-rank", "Fleming-Harrington (1, 0)", "Fleming-Harrington (0.5, 0)"), pairs = NULL) {
  d <- made$d; f <- as.formula(paste("Surv(..t, ..e) ~ ..g", if (strata != "") paste0("+ strata(", strata, ")")))
  for (i in seq_along(rhos)) { m <- survdiff(f, d, rho = rhos[i]); df <- length(m$n) - 1
    add(case, "tests", words[i], "chiSquare", m$chisq, 1); add(case, "tests", words[i], "degreesOfFreedom", df)
    add(case, "tests", words[i], "pValue", pchisq(m$chisq, df, lower.tail = FALSE)) }
  m <- survdiff(f, d); total <- function(x) if (is.matrix(x)) rowSums(x) else x
  add(case, "events", made$groups, "observed", total(m$obs)[match(paste0("..g=", made$groups), names(m$n))]); add(case, "events", made$groups, "expected", total(m$exp)[match(paste0("..g=", made$groups), names(m$n))])
  if (strata != "") { by <- sort(unique(d[[strata]]))
    for (j in seq_along(by)) add(case, "strata", paste0(by[j], "|", sub("^..g=", "", names(m$n))), "expected", m$exp[, j]) }
  if (!is.null(pairs)) { k <- combn(made$groups, 2); p <- chi <- numeric(ncol(k))
    for (j in seq_len(ncol(k))) { x <- survdiff(f, d[d$..g %in% k[, j], ]); chi[j] <- x$chisq; p[j] <- pchisq(x$chisq, 1, lower.tail = FALSE) }
    id <- paste0(k[1, ], "|", k[2, ]); add(case, "pairs", id, "chiSquare", chi, 1); add(case, "pairs", id, "pValue", p)
    add(case, "pairs", id, "adjustedPValue", p.adjust(p, c(holm = "holm", bonferroni = "bonferroni", "benjamini-hochberg" = "BH")[pairs])) }
}
usual <- "--tests logrank,fh:1:0,fh:0.5:0"

# Every scale of limits, every estimate.
for (conf in c("log-log", "log", "plain", "logit", "arcsine")) {
  tests(paste0("lung_", conf), life(paste0("lung_", conf), cox("lung"), group = "male", conf = conf, options = usual))
  life(paste0("larynx_", conf), cox("larynx"), group = "stage4", conf = conf, level = 0.9) }
for (lower in c("modified", "peto")) { life(paste0("veteran_", lower), cox("veteran"), group = "cell", lower = lower); life(paste0("aml_", lower), own("aml"), event = "status", group = "x", conf = "plain", lower = lower) }
for (ctype in 1:2) { life(paste0("veteran_h", ctype), cox("veteran"), group = "cell", stype = 2, ctype = ctype); life(paste0("myeloma_h", ctype), cox("myeloma"), entry = "start", stype = 2, ctype = ctype, conf = "log") }

# Late entry, weights, clusters.
life("channing", cox("channing"), entry = "start", group = "female"); life("psych", own("psych"), time = "exit", event = "death", entry = "entry", group = "sex", conf = "plain")
life("mgus", cox("mgus"), entry = "start", group = "male", conf = "logit"); life("stanford", cox("stanford"), conf = "log", level = 0.8)
weighted <- "tests/reference/cox_command/weighted.csv"
life("counts", weighted, event = "dead", group = "male", weights = "count"); life("sampling", weighted, event = "dead", group = "male", weights = "share", robust = TRUE, options = "--weights-are sampling", conf = "log")
life("nwtco", cox("nwtco"), group = "unfavourable", weights = "weight", robust = TRUE, options = "--weights-are sampling")
for (case in list(c("colon", "lev", "id"), c("retinopathy", "treated", "id"), c("rats", "rx", "litter"))) life(case[1], cox(case[1]), group = case[2], cluster = case[3], robust = TRUE)
life("cgd", cox("cgd"), entry = "start", group = "gamma", cluster = "id", robust = TRUE); life("heart_h", cox("heart"), entry = "start", group = "transplant", cluster = "id", robust = TRUE, stype = 2, conf = "plain")
life("pbc_robust", cox("pbc"), group = "trt", robust = TRUE, conf = "log")

# Dates: months of 365.25 / 12 days.
tests("dates", life("dates", own("dates"), event = "dead", group = "sex", options = usual, says = " --from begin --to end --unit months",
  time_of = function(d) as.numeric(as.Date(d$end) - as.Date(d$begin)) / (365.25 / 12)))

# Tests: groups, strata, pairs.
tests("alloauto", life("alloauto", own("alloauto"), event = "delta", group = "type", options = usual)); tests("tongue", life("tongue", own("tongue"), event = "delta", group = "type", options = usual))
tests("catheter", life("catheter", own("catheter"), event = "delta", group = "type", options = usual)); tests("myeloid", life("myeloid", own("myeloid"), time = "futime", event = "death", group = "trt", options = usual))
tests("transplant", life("transplant", own("transplant"), time = "futime", event = "death", group = "abo", options = paste(usual, "--pairs benjamini-hochberg")), pairs = "benjamini-hochberg")
tests("cells", life("cells", cox("veteran"), group = "cell", options = paste(usual, "--strata test --pairs holm")), strata = "test", pairs = "holm")
tests("bmt", life("bmt", cox("bmt"), group = "fab", options = paste(usual, "--strata hospital")), strata = "hospital"); tests("pneumon", life("pneumon", cox("pneumon"), group = "smoke", options = usual))
tests("gbsg", life("gbsg", cox("gbsg"), group = "grade", options = paste(usual, "--strata meno --pairs bonferroni")), strata = "meno", pairs = "bonferroni")
tests("kidtran", life("kidtran", cox("kidtran"), group = "black", options = paste(usual, "--strata female")), strata = "female"); tests("ovarian", life("ovarian", cox("ovarian"), group = "rx", options = usual))

# The odd ones, as R sees the rows whose weight is above 0.
for (each in names(odd)) { late <- "entry" %in% names(odd[[each]]); weights <- if (each == "nothing") "w" else ""
  made <- life(each, own(each), entry = if (late) "entry" else "", group = "g", weights = weights, options = if (late || weights != "") "" else usual, conf = "plain")
  if (!late && weights == "") tests(each, made)
  for (ctype in 1:2) life(paste0(each, "_h", ctype), own(each), entry = if (late) "entry" else "", group = "g", weights = weights, stype = 2, ctype = ctype) }

# What survdiff does not do, by the definitions over a table of everybody.
weigh <- list("Gehan-Breslow" = function(N, S, T) N, "Tarone-Ware" = function(N, S, T) sqrt(N), "Peto-Peto" = function(N, S, T) T, "Modified Peto-Peto" = function(N, S, T) T * N / (N + 1),
  "Fleming-Harrington (0, 1)" = function(N, S, T) 1 - S, "Log-rank" = function(N, S, T) 1)
direct <- function(d, start, weight) { g <- sort(unique(d$..g)); U <- numeric(length(g)); V <- matrix(0, length(g), length(g)); S <- T <- 1; ratio <- c(0, 0, 0)
  for (t in sort(unique(d$..t[d$..e == 1]))) { risk <- start < t & d$..t >= t; n <- sapply(g, function(x) sum(risk & d$..g == x)); k <- sapply(g, function(x) sum(d$..t == t & d$..e == 1 & d$..g == x))
    N <- sum(n); D <- sum(k); T <- T * (1 - D / (N + 1)); o <- weight(N, S, T); S <- S * (1 - D / N); U <- U + o * (k - D * n / N)
    if (N > 1) V <- V + o^2 * D * (N - D) / (N - 1) * (diag(n / N, length(g)) - outer(n, n) / N^2)
    ratio <- ratio + c(k[2] * n[1] / N, k[1] * n[2] / N, D * n[1] * n[2] / N^2) }
  list(U = U, V = V, ratio = ratio) }
for (case in c("lung", "channing", "heart")) { file <- cox(case); d <- read(file); group <- c(lung = "male", channing = "female", heart = "transplant")[[case]]
  d$..g <- d[[group]]; d$..t <- d$time; d$..e <- d$event; late <- case != "lung"; start <- if (late) d$start else rep(-Inf, nrow(d)); name <- paste0("weights_", case)
  calls <- c(calls, paste0(name, "\tlife ", file, " --time time --event event --group ", group, if (late) " --entry start",
    " --tests gehan-breslow,tarone-ware,peto-peto,modified-peto-peto,fh:0:1,logrank --trend --hazard-ratios"))
  for (test in names(weigh)) { x <- direct(d, start, weigh[[test]]); q <- x$U[2]^2 / x$V[2, 2]; z <- x$U[2] / sqrt(x$V[2, 2])
    add(name, "tests", test, "chiSquare", q, 1); add(name, "tests", test, "pValue", pchisq(q, 1, lower.tail = FALSE)); add(name, "tests", test, "trend", z, 1); add(name, "tests", test, "trendPValue", 2 * pnorm(-abs(z))) }
  x <- direct(d, start, weigh[["Log-rank"]]); own2 <- function(row, estimate, se) { z <- qnorm(0.975)
    add(name, "hazardRatios", row, "hazardRatio", estimate); add(name, "hazardRatios", row, "standardError", se); add(name, "hazardRatios", row, "lower", estimate * exp(-z * se))
    add(name, "hazardRatios", row, "upper", estimate * exp(z * se)); add(name, "hazardRatios", row, "pValue", 2 * pnorm(-abs(log(estimate) / se))) }
  own2("Peto", exp(x$U[2] / x$V[2, 2]), 1 / sqrt(x$V[2, 2])); own2("Mantel-Haenszel", x$ratio[1] / x$ratio[2], sqrt(x$ratio[3] / (x$ratio[1] * x$ratio[2]))) }

# Differences at a time, differences and ratios of means, rates and their ratios.
for (conf in c("plain", "log", "log-log", "logit", "arcsine")) { name <- paste0("difference_", conf); d <- read(cox("veteran")); z <- qnorm(0.975)
  calls <- c(calls, paste0(name, "\tlife ", cox("veteran"), " --time time --event event --group test --at 50,90 --difference ", conf, " --means"))
  s <- survfit(Surv(time, event) ~ test, d)
  for (t in c(50, 90)) { r <- summary(s, times = t); S <- r$surv; e <- r$std.err / S
    x <- switch(conf, plain = list(S, S * e), log = list(log(S), e), "log-log" = list(log(-log(S)), e / abs(log(S))), logit = list(log(S / (1 - S)), e / (1 - S)), arcsine = list(asin(sqrt(S)), e / 2 * sqrt(S / (1 - S))))
    y <- diff(x[[1]]); se <- sqrt(sum(x[[2]]^2)); id <- paste0("1|", t)
    add(name, "survivalContrasts", id, "difference", y, se); add(name, "survivalContrasts", id, "standardError", se); add(name, "survivalContrasts", id, "lower", y - z * se, se)
    add(name, "survivalContrasts", id, "upper", y + z * se, se); add(name, "survivalContrasts", id, "pValue", 2 * pnorm(-abs(y / se))) }
  tau <- min(tapply(d$time, d$test, max)); t <- summary(s, rmean = tau)$table; m <- t[, "rmean"]; e <- t[, "se(rmean)"]; lost <- tau - m
  own3 <- function(row, x, e, ratio) { lo <- if (ratio) x * exp(-z * e) else x - z * e; p <- 2 * pnorm(-abs((if (ratio) log(x) else x) / e)); id <- paste0("1|", row)
    add(name, "meanContrasts", id, "estimate", x, e); add(name, "meanContrasts", id, "standardError", e); add(name, "meanContrasts", id, "lower", lo, e); add(name, "meanContrasts", id, "pValue", p) }
  own3("difference of means", m[[2]] - m[[1]], sqrt(sum(e^2)), FALSE); own3("ratio of means", m[[2]] / m[[1]], sqrt(sum((e / m)^2)), TRUE); own3("ratio of times lost", lost[[2]] / lost[[1]], sqrt(sum((e / lost)^2)), TRUE) }
for (case in c("lung", "heart")) { d <- read(cox(case)); late <- case == "heart"; if (!late) d$start <- 0; group <- c(lung = "male", heart = "transplant")[[case]]; cuts <- c(100, 250, 500); name <- paste0("rates_", case)
  calls <- c(calls, paste0(name, "\tlife ", cox(case), " --time time --event event", if (late) " --entry start", " --group ", group, " --cuts 100,250,500 --risk-at 0,50,200,400"))
  s <- survSplit(Surv(start, time, event) ~ ., d, cut = cuts, episode = "part"); from <- c(0, cuts)
  for (k in 1:4) { e <- t <- numeric(2); for (g in 0:1) { one <- s[s[[group]] == g & s$part == k, ]; e[g + 1] <- sum(one$event); t[g + 1] <- sum(one$time - one$start); id <- paste0(g, "|", from[k])
      add(name, "rates", id, "events", e[g + 1]); add(name, "rates", id, "personTime", t[g + 1]); add(name, "rates", id, "rate", e[g + 1] / t[g + 1])
      p <- poisson.test(e[g + 1], t[g + 1])$conf.int; add(name, "rates", id, "lower", p[1]); add(name, "rates", id, "upper", p[2]) }
    r <- poisson.test(e[2:1], t[2:1]); id <- paste0("1|", from[k]); add(name, "rateRatios", id, "ratio", r$estimate); add(name, "rateRatios", id, "lower", r$conf.int[1]); add(name, "rateRatios", id, "upper", r$conf.int[2]); add(name, "rateRatios", id, "pValue", r$p.value) }
  for (g in 0:1) { one <- d[d[[group]] == g, ]; for (t in c(0, 50, 200, 400)) { id <- paste0(g, "|", t)
    add(name, "atRisk", id, "atRisk", sum((one$start < t | (t == 0 & !late)) & one$time >= t)); add(name, "atRisk", id, "cumulativeEvents", sum(one$event == 1 & one$time <= t)); add(name, "atRisk", id, "cumulativeCensored", sum(one$event == 0 & one$time <= t)) } } }

writeLines(calls, "cases.txt")
write.csv(do.call(rbind, out), "expected.csv", row.names = FALSE, quote = TRUE)
