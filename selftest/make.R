# Writes the cases of the self-test: analyses of the data in ../data, and what R's packages (or R's
# own arithmetic, where a formula says it all) make of the same data. Run in this folder:
#
#   Rscript make.R
#
# The numbers are written with 15 significant digits. Each tolerance is relative; its reason stands
# where it is used.
suppressMessages({
  library(survival)
  library(cmprsk)
  library(etm)
  library(pROC)
})

software <- function(...) {
  versions <- vapply(c(...), function(p) paste(p, packageVersion(p)), "")
  paste(c(paste("R", getRversion()), versions), collapse = ", ")
}
# 15 digits are what R's numbers are worth here: they and ours are rounded in other orders.
exact <- 1e-12
# Both programs stop a Newton iteration; ours reports its converged point to 1e-9 of a standard
# error, R was asked for eps = 1e-12.
iterated <- 1e-8

text <- function(x) paste0('"', x, '"')
number <- function(x) if (is.na(x)) "null" else sprintf("%.15g", x)
value <- function(x) if (is.character(x)) text(x) else number(x)
object <- function(members) {
  paste0("{", paste0(text(names(members)), ": ", vapply(members, value, ""), collapse = ", "), "}")
}
cell <- function(table, row, column, expected, source, tolerance = exact) {
  sprintf('    {"table": %s, "row": %s, "column": %s, "expected": %s, "tolerance": %g, "source": %s}',
          text(table), object(row), text(column), value(expected), tolerance, text(source))
}
fact <- function(name, expected, source, tolerance = exact) {
  sprintf('    {"fact": %s, "expected": %s, "tolerance": %g, "source": %s}', text(name),
          value(expected), tolerance, text(source))
}
# `options` as JSON.
write_case <- function(name, title, software, analysis, data, options, quantities) {
  lines <- c(
    "{",
    '  "schema": "survmeth-selftest/1",',
    sprintf('  "title": %s,', text(title)),
    sprintf('  "software": %s,', text(software)),
    '  "plan": {"analyses": [',
    sprintf('    {"analysis": %s, "data": "../data/%s",', text(analysis), data),
    sprintf('     "options": {%s}}', options),
    "  ]},",
    '  "quantities": [',
    paste(unlist(quantities), collapse = ",\n"),
    "  ]",
    "}")
  writeLines(lines, paste0(name, ".json"))
}
read_data <- function(file) read.csv(file.path("../data", file), stringsAsFactors = FALSE)

# Kaplan-Meier, medians, log-rank ----
life_quantities <- function(fit, test, groups, times, how) {
  middle <- quantile(fit, 0.5)
  at <- summary(fit, times = times)
  group_of <- sub("^[^=]*=", "", as.character(at$strata))
  quantities <- list()
  for (i in seq_along(groups)) {
    row <- list(group = groups[i])
    source <- paste0("survfit, conf.type = \"", how, "\"")
    source <- gsub('"', "'", source)
    quantities <- c(quantities, list(
      cell("summary", row, "median", middle$quantile[i, 1], source),
      cell("summary", row, "lower", middle$lower[i, 1], source),
      cell("summary", row, "upper", middle$upper[i, 1], source),
      cell("events", row, "expected", test$exp[i], "survdiff")))
    here <- which(group_of == groups[i] & at$time == times[i])
    row <- list(group = groups[i], time = at$time[here])
    quantities <- c(quantities, list(
      cell("kaplanMeier", row, "atRisk", at$n.risk[here], source),
      cell("kaplanMeier", row, "survival", at$surv[here], source),
      cell("kaplanMeier", row, "standardError", at$std.err[here], source),
      cell("kaplanMeier", row, "lower", at$lower[here], source),
      cell("kaplanMeier", row, "upper", at$upper[here], source)))
  }
  row <- list(test = "Log-rank")
  df <- length(groups) - 1
  c(quantities, list(
    cell("tests", row, "chiSquare", test$chisq, "survdiff"),
    cell("tests", row, "degreesOfFreedom", df, "survdiff"),
    cell("tests", row, "pValue", pchisq(test$chisq, df, lower.tail = FALSE), "survdiff, pchisq",
         # The tail's relative error is that of chi-square times half of it.
         1e-11)))
}
leukemia <- read_data("leukemia.csv")
fit <- survfit(Surv(weeks, relapse) ~ treatment, leukemia, conf.type = "log-log")
write_case("life-leukemia", "Remission of leukaemia by treatment, log-log limits",
           software("survival"), "life", "leukemia.csv",
           '"time": "weeks", "event": "relapse", "group": "treatment"',
           life_quantities(fit, survdiff(Surv(weeks, relapse) ~ treatment, leukemia),
                           c("6-MP", "placebo"), c(10, 11), "log-log"))
lung <- read_data("lung.csv")
fit <- survfit(Surv(time, status) ~ sex, lung, conf.type = "plain")
write_case("life-lung", "Survival in advanced lung cancer by sex, plain limits",
           software("survival"), "life", "lung.csv",
           '"time": "time", "event": "status", "group": "sex", "conf": "plain"',
           life_quantities(fit, survdiff(Surv(time, status) ~ sex, lung), c("female", "male"),
                           c(310, 270), "plain"))

# Cox regression, Breslow's treatment of ties ----
cox_quantities <- function(fit, names) {
  s <- summary(fit)
  quantities <- list()
  source <- "coxph, ties = 'breslow'"
  for (i in seq_along(names)) {
    row <- list(name = names[i])
    quantities <- c(quantities, list(
      cell("coefficients", row, "coef", unname(coef(fit)[i]), source, iterated),
      cell("coefficients", row, "standardError", sqrt(fit$var[i, i]), source, iterated),
      cell("coefficients", row, "hazardRatio", exp(unname(coef(fit)[i])), source, iterated),
      cell("coefficients", row, "lower", s$conf.int[i, 3], source, iterated),
      cell("coefficients", row, "upper", s$conf.int[i, 4], source, iterated)))
  }
  tests <- list("likelihood ratio" = 2 * diff(fit$loglik), score = fit$score,
                Wald = as.numeric(fit$wald.test))
  for (name in names(tests)) {
    quantities <- c(quantities, list(
      cell("tests", list(test = name), "chiSquare", tests[[name]], source, iterated)))
  }
  c(quantities, list(fact("nullLogLikelihood", fit$loglik[1], source),
                     fact("logLikelihood", fit$loglik[2], source),
                     fact("events", fit$nevent, source)))
}
control <- coxph.control(eps = 1e-12, toler.chol = 1e-14, iter.max = 50)
lung$male <- as.integer(lung$sex == "male")
fit <- coxph(Surv(time, status) ~ age + male + ph.ecog, lung, ties = "breslow", control = control)
write_case("cox-lung", "Proportional hazards in advanced lung cancer", software("survival"), "cox",
           "lung.csv",
           paste0('"time": "time", "event": "status", "covariates": ["age", "sex", "ph.ecog"], ',
                  '"ties": "breslow"'),
           cox_quantities(fit, c("age", "sex=male", "ph.ecog")))
veteran <- read_data("veteran.csv")
fit <- coxph(Surv(time, status) ~ karno + age + diagtime + strata(celltype), veteran,
             ties = "breslow", control = control)
write_case("cox-veteran", "Proportional hazards in lung cancer, stratified by cell type",
           software("survival"), "cox", "veteran.csv",
           paste0('"time": "time", "event": "status", "covariates": ["karno", "age", "diagtime"], ',
                  '"strata": "celltype", "ties": "breslow"'),
           cox_quantities(fit, c("karno", "age", "diagtime")))

# Conditional logistic regression: R's clogit is coxph with exact ties ----
infert <- read_data("infert.csv")
fit <- clogit(case ~ spontaneous + induced + strata(stratum), infert, method = "exact",
              control = control)
s <- summary(fit)
names <- c("spontaneous", "induced")
write_case("clogit-infert", "Abortions before secondary infertility, matched sets",
           software("survival"), "clogit", "infert.csv",
           '"formula": "case ~ spontaneous + induced + strata(stratum)"',
           lapply(seq_along(names), function(i) {
             row <- list(name = names[i])
             list(cell("coefficients", row, "coef", unname(coef(fit)[i]), "clogit", iterated),
                  cell("coefficients", row, "standardError", sqrt(fit$var[i, i]), "clogit",
                       iterated),
                  cell("coefficients", row, "lower", s$conf.int[i, 3], "clogit", iterated),
                  cell("coefficients", row, "upper", s$conf.int[i, 4], "clogit", iterated))
           }))

# Gray's test ----
pbc <- read_data("pbc.csv")
tests <- cuminc(pbc$time, pbc$status, pbc$stage)$Tests
write_case("gray-pbc", "Transplants and deaths in primary biliary cirrhosis by stage",
           software("cmprsk"), "gray", "pbc.csv",
           '"time": "time", "status": "status", "group": "stage"',
           lapply(1:2, function(event) {
             row <- list(event = as.character(event))
             list(cell("tests", row, "chiSquare", tests[event, "stat"], "cuminc, Tests",
                       # The test's covariance is inverted in another order.
                       1e-10),
                  cell("tests", row, "degreesOfFreedom", tests[event, "df"], "cuminc, Tests"),
                  # cmprsk's own is 1 - pchisq, which has lost the digits of the tail.
                  cell("tests", row, "pValue",
                       pchisq(tests[event, "stat"], tests[event, "df"], lower.tail = FALSE),
                       "cuminc, pchisq",
                       # That of chi-square times half of chi-square.
                       1e-8))
           }))

# Cumulative incidence ----
grouped <- cuminc(pbc$time, pbc$status, pbc$stage)
at <- timepoints(grouped, c(1000, 3000))
write_case("incidence-pbc", "Incidence of transplants and deaths in primary biliary cirrhosis",
           software("cmprsk"), "incidence", "pbc.csv",
           '"time": "time", "status": "status", "group": "stage", "at": [1000, 3000]',
           lapply(c("2 1", "3 1", "4 1", "2 2", "3 2", "4 2"), function(curve) {
             parts <- strsplit(curve, " ")[[1]]
             lapply(c("1000", "3000"), function(time) {
               if (!(at$est[curve, time] > 0)) return(NULL)
               row <- list(event = parts[2], group = parts[1], time = as.numeric(time))
               list(cell("incidenceAt", row, "cumulativeIncidence", at$est[curve, time],
                         "timepoints"),
                    cell("incidenceAt", row, "standardError", sqrt(at$var[curve, time]),
                         "timepoints"))
             })
           }))

# States ----
stays <- read_data("ventilation.csv")
code <- c(unventilated = "1", ventilated = "2", left = "3", censored = "cens")
moves <- matrix(FALSE, 3, 3)
moves[1, 2:3] <- moves[2, c(1, 3)] <- TRUE
observed <- etm(data.frame(id = stays$id, from = code[stays$from], to = code[stays$to],
                           entry = stays$entry, exit = stays$exit),
                c("1", "2", "3"), moves, "cens", s = 0)
write_case("states-ventilation", "Ventilation of intensive care patients",
           software("etm"), "states", "ventilation.csv",
           paste('"id": "id", "entry": "entry", "exit": "exit", "from": "from", "to": "to",',
                 '"initial": "ventilated", "at": [5, 20]'),
           lapply(c(5, 20), function(time) {
             at <- max(which(observed$time <= time))
             lapply(1:3, function(state) {
               row <- list(state = names(code)[state], time = time)
               place <- paste(2, state)
               list(cell("probabilitiesAt", row, "probability", observed$est[2, state, at], "etm"),
                    cell("probabilitiesAt", row, "standardError",
                         sqrt(observed$cov[place, place, at]), "etm"))
             })
           }))

# Subdistribution hazards ----
covariates <- cbind(age = pbc$age, "log(bili)" = log(pbc$bili), edema = pbc$edema)
fit <- crr(pbc$time, pbc$status, covariates, failcode = 2, gtol = 1e-14, maxiter = 100)
write_case("finegray-pbc", "Fine and Gray's regression of deaths in primary biliary cirrhosis",
           software("cmprsk"), "finegray", "pbc.csv",
           '"formula": "Surv(time, status) ~ age + log(bili) + edema", "event": "2"',
           list(lapply(seq_along(fit$coef), function(j) {
                  row <- list(event = "2", name = colnames(covariates)[j])
                  list(cell("coefficients", row, "coef", fit$coef[[j]], "crr", iterated),
                       cell("coefficients", row, "standardError", sqrt(fit$var[j, j]), "crr",
                            iterated))
                }),
                cell("fits", list(event = "2"), "nullLogLikelihood", fit$loglik.null, "crr"),
                cell("fits", list(event = "2"), "logLikelihood", fit$loglik, "crr")))

# ROC curves ----
sah <- read_data("sah.csv")
markers <- c("wfns", "s100b", "ndka")
curves <- lapply(markers, function(m) {
  roc(sah$outcome, sah[[m]], levels = c("Good", "Poor"), direction = "<", quiet = TRUE)
})
names(curves) <- markers
quantities <- lapply(markers, function(m) {
  row <- list(marker = m)
  area <- as.numeric(auc(curves[[m]]))
  error <- sqrt(var(curves[[m]], method = "delong"))
  limits <- area + c(-1, 1) * qnorm(0.975) * error
  list(cell("areas", row, "area", area, "auc"),
       cell("areas", row, "standardError", error, "var, method = 'delong'"),
       cell("areas", row, "lower", limits[1], "auc, var, qnorm"),
       cell("areas", row, "upper", limits[2], "auc, var, qnorm"))
})
pairs <- combn(markers, 2)
for (i in seq_len(ncol(pairs))) {
  test <- roc.test(curves[[pairs[1, i]]], curves[[pairs[2, i]]], method = "delong", paired = TRUE)
  row <- list(first = pairs[1, i], second = pairs[2, i])
  quantities <- c(quantities, list(
    cell("comparisons", row, "z", as.numeric(test$statistic), "roc.test, method = 'delong'", 1e-11),
    cell("comparisons", row, "pValue", as.numeric(test$p.value), "roc.test, method = 'delong'",
         1e-10)))
}
write_case("roc-sah", "Three markers of a poor outcome after subarachnoid haemorrhage",
           software("pROC"), "roc", "sah.csv",
           '"class": "outcome", "positive": "Poor", "marker": ["wfns", "s100b", "ndka"]',
           quantities)

# Two meters of peak flow ----
pefr <- read_data("pefr.csv")
d <- pefr$mini1 - pefr$wright1
n <- length(d)
t_quantile <- qt(0.975, n - 1)
sd_limits <- mean(d) + c(-1, 1) * qnorm(0.975) * sd(d)
write_case("agree-pefr", "Agreement of two meters of peak expiratory flow (Bland & Altman 1986)",
           paste0(software(), "; Bland & Altman, Lancet 1 (1986) 307-310"), "agree", "pefr.csv",
           '"first": "wright1", "second": "mini1"',
           list(cell("agreement", list(statistic = "bias"), "estimate", mean(d), "mean"),
                cell("agreement", list(statistic = "bias"), "lower",
                     mean(d) - t_quantile * sd(d) / sqrt(n), "mean, sd, qt"),
                cell("agreement", list(statistic = "bias"), "upper",
                     mean(d) + t_quantile * sd(d) / sqrt(n), "mean, sd, qt"),
                cell("agreement", list(statistic = "standard deviation"), "estimate", sd(d), "sd"),
                cell("agreement", list(statistic = "standard deviation"), "estimate", 38.8,
                     # The paper prints one decimal.
                     "Bland & Altman 1986, p. 308", 0.05 / 38.8),
                cell("agreement", list(statistic = "lower limit of agreement"), "estimate",
                     sd_limits[1], "mean, sd, qnorm"),
                cell("agreement", list(statistic = "upper limit of agreement"), "estimate",
                     sd_limits[2], "mean, sd, qnorm")))

# The line of Deming by its closed form, each pair left out in turn for the standard errors.
deming <- function(x, y, ratio) {
  # ratio: error variance of x over that of y.
  sxx <- var(x); syy <- var(y); sxy <- cov(x, y); l <- 1 / ratio
  slope <- (syy - l * sxx + sqrt((syy - l * sxx)^2 + 4 * l * sxy^2)) / (2 * sxy)
  c(intercept = mean(y) - slope * mean(x), slope = slope)
}
jackknife <- function(x, y, ratio) {
  whole <- deming(x, y, ratio)
  k <- length(x)
  pseudo <- t(vapply(seq_len(k), function(i) k * whole - (k - 1) * deming(x[-i], y[-i], ratio),
                     whole))
  error <- apply(pseudo, 2, sd) / sqrt(k)
  list(estimate = whole, error = error, lower = whole - qt(0.975, k - 2) * error,
       upper = whole + qt(0.975, k - 2) * error)
}
line <- jackknife(pefr$wright1, pefr$mini1, 2)
write_case("deming-pefr", "Deming regression of two meters of peak expiratory flow",
           paste0(software(), "; Linnet, Clin Chem 39 (1993) 424-432"), "deming", "pefr.csv",
           '"first": "wright1", "second": "mini1", "ratio": 2',
           lapply(c("intercept", "slope"), function(name) {
             row <- list(name = name)
             # Of the intercept two numbers of 500 cancel.
             tolerance <- if (name == "slope") exact else 1e-11
             list(cell("coefficients", row, "estimate", line$estimate[[name]], "closed form",
                       tolerance),
                  cell("coefficients", row, "standardError", line$error[[name]], "jackknife", 1e-11),
                  cell("coefficients", row, "lower", line$lower[[name]], "jackknife, qt", 1e-11),
                  cell("coefficients", row, "upper", line$upper[[name]], "jackknife, qt", 1e-11))
           }))
