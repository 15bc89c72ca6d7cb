# What survival's coxph makes of the calls in cases.txt: expected.csv, the two data sets that no other
# folder has, and a smooth through residuals. Run in this folder:
#
#     Rscript make.R
#
# The coefficients are those of the maximum (eps 1e-14), so that differences are rounding alone.
suppressMessages({library(survival); library(splines)})
control <- coxph.control(eps = 1e-14, iter.max = 50, toler.chol = 1e-15)
root <- "../../.."
here <- function(name) read.csv(file.path(root, "tests/reference/cox/data", name), check.names = FALSE)
public <- function(name, ...) read.csv(file.path(root, "data", name), stringsAsFactors = TRUE, ...)
write <- function(d, name) write.csv(d, name, row.names = FALSE, quote = FALSE, na = "")

k <- survival::kidney
write(data.frame(id = k$id, time = k$time, status = k$status, age = k$age, sex = k$sex,
                 disease = as.character(k$disease)), "kidney.csv")
l <- survival::lung
write(data.frame(time = l$time, dead = l$status == 2, age = l$age, male = as.integer(l$sex == 1),
                 count = 1 + seq_len(nrow(l)) %% 3, share = 0.5 + (seq_len(nrow(l)) %% 7) / 4),
      "weighted.csv")
kidney <- read.csv("kidney.csv", stringsAsFactors = TRUE)
weighted <- read.csv("weighted.csv")

calls <- character(); out <- list()
add <- function(case, table, row, column, value, scale = 0) {
  out[[length(out) + 1]] <<- data.frame(case, table, row = as.character(row), column,
    value = sprintf("%.17g", value), scale = sprintf("%.3g", pmax(abs(value), scale)))
}

# Facts, coefficients and tests of a fit under the names that the command gives its coefficients.
describe <- function(case, call, m, names, ratio = "hazardRatio", limits = NULL, terms = NULL) {
  calls <<- c(calls, paste0(case, "\t", call))
  b <- coef(m); V <- m$var; robust <- !is.null(m$naive.var)
  kept <- !is.na(b); se <- sqrt(diag(V)); naive <- if (robust) sqrt(diag(m$naive.var)) else se
  z <- b / se; q <- qnorm(0.975)
  lower <- exp(b - q * se); upper <- exp(b + q * se)
  if (!is.null(limits)) { lower <- exp(limits[1, ]); upper <- exp(limits[2, ]) }
  i <- which(kept)
  add(case, "coefficients", names[i], "coef", b[i], se[i])
  add(case, "coefficients", names[i], "standardError", naive[i])
  if (robust) add(case, "coefficients", names[i], "robustStandardError", se[i])
  add(case, "coefficients", names[i], "z", z[i], 1)
  add(case, "coefficients", names[i], "pValue", pchisq(z[i]^2, 1, lower.tail = FALSE))
  add(case, "coefficients", names[i], ratio, exp(b[i]), exp(b[i]) * se[i])
  add(case, "coefficients", names[i], "lower", lower[i], lower[i] * se[i])
  add(case, "coefficients", names[i], "upper", upper[i], upper[i] * se[i])
  for (j in which(!kept)) add(case, "coefficients", names[j], "coef", NaN)
  add(case, "facts", "", "nullLogLikelihood", m$loglik[1])
  add(case, "facts", "", "logLikelihood", m$loglik[2])
  if (is.null(m$weights)) { add(case, "facts", "", "aic", AIC(m)); add(case, "facts", "", "bic", BIC(m)) }
  cc <- concordance(m)
  add(case, "facts", "", "concordance", cc$concordance)
  add(case, "facts", "", "concordanceStandardError", sqrt(cc$var))
  df <- sum(kept); lr <- 2 * diff(m$loglik)
  test <- function(row, value) {
    add(case, "tests", row, "chiSquare", value, 1)
    add(case, "tests", row, "degreesOfFreedom", df)
    add(case, "tests", row, "pValue", pchisq(value, df, lower.tail = FALSE))
  }
  test("likelihood ratio", lr); test("score", m$score)
  test(if (robust) "Wald, robust" else "Wald", drop(b[i] %*% solve(V[i, i], b[i])))
  if (robust) test("score, robust", m$rscore)
  for (term in names(terms)) {
    j <- terms[[term]]; value <- drop(b[j] %*% solve(V[j, j], b[j]))
    add(case, "terms", term, "chiSquare", value, 1)
    add(case, "terms", term, "pValue", pchisq(value, length(j), lower.tail = FALSE))
  }
}

proportionality <- function(case, m, transform, rows) {
  t <- cox.zph(m, transform = transform)$table
  rows <- c(rows, "all terms")
  add(case, "proportionality", rows, "chiSquare", t[, "chisq"], 1)
  add(case, "proportionality", rows, "pValue", t[, "p"])
}
dropped <- function(case, m, rows) {
  d <- drop1(m, test = "Chisq")[-1, ]
  add(case, "dropOne", rows, "chiSquare", d$LRT, 1)
  add(case, "dropOne", rows, "degreesOfFreedom", d$Df)
  add(case, "dropOne", rows, "pValue", d[["Pr(>Chi)"]])
}
covariance <- function(case, m, names) {
  for (j in seq_along(names)) {
    add(case, "covariance", names, paste("covariance", names[j]), m$var[, j],
        sqrt(diag(m$var) * m$var[j, j]))
  }
}
# Rows are numbered: the table has one for each row of the data.
residualTable <- function(case, m, names, line) {
  add(case, "residuals", line, "martingale", residuals(m), 1)
  add(case, "residuals", line, "deviance", residuals(m, "deviance"), 1)
  se <- sqrt(diag(m$var))
  for (j in seq_along(names)) {
    add(case, "residuals", line, paste("score", names[j]), residuals(m, "score")[, j], 1 / se[j])
    add(case, "residuals", line, paste("dfbeta", names[j]), residuals(m, "dfbeta")[, j], se[j])
    add(case, "residuals", line, paste("dfbetas", names[j]), residuals(m, "dfbetas")[, j], 1)
  }
  s <- as.matrix(residuals(m, "schoenfeld")); q <- as.matrix(residuals(m, "scaledsch"))
  at <- line[m$y[, "status"] == 1][order(m$y[m$y[, "status"] == 1, "time"])]
  for (j in seq_along(names)) {
    add(case, "residuals", at, paste("schoenfeld", names[j]), s[, j], 1 / se[j])
    add(case, "residuals", at, paste("scaledSchoenfeld", names[j]), q[, j], 1)
  }
}
hazard <- function(case, m, x, data, stratum = "all") {
  s <- survfit(m, newdata = as.data.frame(as.list(x)))
  i <- s$n.event > 0
  row <- paste(stratum, format(s$time[i], trim = TRUE, digits = 17), sep = "|")
  add(case, "baseline", row, "cumulativeHazard", s$cumhaz[i], s$std.err[i])
  add(case, "baseline", row, "standardError", s$std.err[i])
  add(case, "baseline", row, "survival", exp(-s$cumhaz[i]))
}
# The coefficients at which twice the profile likelihood is 3.84 below its maximum.
profile <- function(data, response, x, level = 0.95) {
  fit <- function(terms, offset) {
    rhs <- paste(c(if (length(terms)) terms else "1", offset), collapse = " + ")
    coxph(as.formula(paste(response, "~", rhs)), data, control = control)$loglik
  }
  full <- coxph(as.formula(paste(response, "~", paste(x, collapse = " + "))), data, control = control)
  sapply(seq_along(x), function(j) {
    fall <- function(b) {
      l <- fit(x[-j], sprintf("offset(%.17g * (%s))", b, x[j]))
      2 * (full$loglik[2] - l[length(l)]) - qchisq(level, 1)
    }
    b <- coef(full)[j]; s <- sqrt(full$var[j, j])
    c(uniroot(fall, c(b - 6 * s, b), tol = 1e-13 * s)$root, uniroot(fall, c(b, b + 6 * s), tol = 1e-13 * s)$root)
  })
}

lung <- public("lung.csv")
m <- coxph(Surv(time, status) ~ age + sex + ph.ecog, lung, control = control)
n <- c("age", "sex=male", "ph.ecog")
describe("lung", "cox data/lung.csv --formula 'Surv(time, status) ~ age + sex + ph.ecog' --zph km --drop-one --covariance c.csv", m, n)
proportionality("lung", m, "km", c("age", "sex", "ph.ecog")); covariance("lung", m, n)
dropped("lung", coxph(Surv(time, status) ~ age + sex + ph.ecog, lung[!is.na(lung$ph.ecog), ], control = control), c("age", "sex", "ph.ecog"))
m <- coxph(Surv(time, status) ~ age + sex + ph.ecog, lung, control = control, robust = TRUE)
describe("lung_robust", "cox data/lung.csv --formula 'Surv(time, status) ~ age + sex + ph.ecog' --robust", m, n)
m <- coxph(Surv(time, status) ~ age + sex + ph.ecog, lung, control = control, ties = "exact")
describe("lung_discrete", "cox data/lung.csv --time time --event status --covariates age,sex,ph.ecog --ties discrete", m, n)
m <- coxph(Surv(time, status) ~ age + I(2 * age) + sex, lung, control = control)
describe("lung_aliased", "cox data/lung.csv --formula 'Surv(time, status) ~ age + I(2 * age) + sex' --aliased drop", m, c("age", "I(2 * age)", "sex=male"))
large <- coxph(Surv(time, status) ~ ns(age, 4) + sex, lung, control = control)
small <- coxph(Surv(time, status) ~ age + sex, lung, control = control)
describe("lung_spline", "cox data/lung.csv --formula 'Surv(time, status) ~ ns(age, 4) + sex' --versus '~ age + sex'", large,
         c(paste0("ns(age, 4)", 1:4), "sex=male"), terms = list("ns(age, 4)" = 1:4, sex = 5))
a <- anova(small, large)
add("lung_spline", "versus", "~ age + sex", "chiSquare", a$Chisq[2], 1)
add("lung_spline", "versus", "~ age + sex", "degreesOfFreedom", a$Df[2])
add("lung_spline", "versus", "~ age + sex", "pValue", pchisq(a$Chisq[2], a$Df[2], lower.tail = FALSE))

# Knots come from every row that has an age, also those without a treatment.
m <- coxph(Surv(time, status == 2) ~ ns(age, 3) + trt, public("pbc.csv"), control = control)
describe("pbc_spline", "cox data/pbc.csv --formula 'Surv(time, status == 2) ~ ns(age, 3) + trt'", m,
         c(paste0("ns(age, 3)", 1:3), "trt"))

veteran <- public("veteran.csv"); veteran$celltype <- relevel(veteran$celltype, "large")
m <- coxph(Surv(time, status) ~ trt + karno * celltype, veteran, control = control)
cells <- c("adeno", "smallcell", "squamous")
describe("veteran", "cox data/veteran.csv --formula 'Surv(time, status) ~ trt + karno * celltype' --reference celltype=large --zph rank",
         m, c(names(coef(m))[1:2], paste0("celltype=", cells), paste0("karno:celltype=", cells)),
         terms = list(karno = 2, celltype = 3:5, "karno:celltype" = 6:8))
proportionality("veteran", m, "rank", c("trt", "karno", "celltype", "karno:celltype"))
m <- coxph(Surv(time, status) ~ karno + age + strata(celltype), veteran, control = control, ties = "breslow")
describe("veteran_strata", "cox data/veteran.csv --time time --event status --covariates karno,age --strata celltype --ties breslow --zph identity", m, c("karno", "age"))
proportionality("veteran_strata", m, "identity", c("karno", "age"))

pbc <- public("pbc.csv")
x <- c("age", "edema", "log(bili)", "log(albumin)", "log(protime)")
m <- coxph(as.formula(paste("Surv(time, status == 2) ~", paste(x, collapse = " + "))), pbc, control = control)
describe("pbc", paste0("cox data/pbc.csv --formula 'Surv(time, status == 2) ~ ", paste(x, collapse = " + "), "' --limits profile"),
         m, x, limits = profile(pbc, "Surv(time, status == 2)", x))

o <- here("ovarian.csv"); x <- c("age", "residual", "rx", "ecog")
m <- coxph(Surv(time, event) ~ age + residual + rx + ecog, o, control = control)
describe("ovarian", "cox tests/reference/cox/data/ovarian.csv --formula 'Surv(time, event) ~ .' --zph log --residuals r.csv --residual-kinds martingale,deviance,score,schoenfeld,scaledSchoenfeld,dfbeta,dfbetas --baseline b.csv", m, x)
proportionality("ovarian", m, "log", x)
residualTable("ovarian", m, x, seq_len(nrow(o)) + 1)
hazard("ovarian", m, colMeans(o[x]), o)
h <- here("heart.csv"); x <- c("age", "year", "surgery", "transplant")
m <- coxph(Surv(start, time, event) ~ age + year + surgery + transplant, h, control = control)
describe("heart", "cox tests/reference/cox/data/heart.csv --entry start --time time --event event --covariates age,year,surgery,transplant --id id --zph rank --baseline b.csv --baseline-at zero", m, x)
proportionality("heart", m, "rank", x)
hazard("heart", m, setNames(rep(0, 4), x), h)
x <- c("lev", "fu", "sex", "age", "obstruct", "nodes")
m <- coxph(Surv(time, event) ~ lev + fu + sex + age + obstruct + nodes + strata(etype), here("colon.csv"), cluster = id, control = control)
describe("colon", "cox tests/reference/cox/data/colon.csv --formula 'Surv(time, event) ~ lev + fu + sex + age + obstruct + nodes + strata(etype) + cluster(id)' --covariance c.csv", m, x)
covariance("colon", m, x)
m <- coxph(Surv(time, event) ~ treated + adult * risk, here("retinopathy.csv"), cluster = id, control = control)
describe("retinopathy", "cox tests/reference/cox/data/retinopathy.csv --formula 'Surv(time, event) ~ treated + adult * risk' --cluster id", m, c("treated", "adult", "risk", "adult:risk"))
m <- coxph(Surv(start, time, event) ~ thiotepa + number + size + strata(enum), here("bladder.csv"), cluster = id, control = control)
describe("bladder", "cox tests/reference/cox/data/bladder.csv --formula 'Surv(start, time, event) ~ thiotepa + number + size + strata(enum)' --id id", m, c("thiotepa", "number", "size"))
infert <- public("infert.csv")
m <- clogit(case ~ spontaneous + induced + strata(stratum), infert, control = control)
describe("infert", "clogit data/infert.csv --formula 'case ~ spontaneous + induced + strata(stratum)'", m, c("spontaneous", "induced"), "oddsRatio")
m <- coxph(Surv(time, status) ~ age + sex + disease, kidney, cluster = id, control = control)
describe("kidney", "cox tests/reference/cox_command/kidney.csv --formula 'Surv(time, status) ~ age + sex + disease' --cluster id", m,
         c("age", "sex", paste0("disease=", levels(kidney$disease)[-1])), terms = list(disease = 3:5))
m <- coxph(Surv(time, dead) ~ age + male, weighted, weights = count, robust = FALSE, control = control)
describe("frequencies", "cox tests/reference/cox_command/weighted.csv --formula 'Surv(time, dead) ~ age + male' --weights count --baseline b.csv", m, c("age", "male"))
hazard("frequencies", m, with(weighted, c(age = weighted.mean(age, count), male = weighted.mean(male, count))), weighted)
m <- coxph(Surv(time, dead) ~ age + male, weighted, weights = share, robust = TRUE, control = control)
describe("sampling", "cox tests/reference/cox_command/weighted.csv --formula 'Surv(time, dead) ~ age + male' --weights share --weights-are sampling", m, c("age", "male"))
r <- here("rats.csv")
m <- coxph(Surv(time, event) ~ rx + strata(litter), r, control = control)
describe("rats", "cox tests/reference/cox/data/rats.csv --formula 'Surv(time, event) ~ rx + strata(litter)'", m, "rx")
v <- public("veteran.csv")
m <- coxph(Surv(time, status) ~ karno * strata(celltype) + age, v, control = control)
describe("strata_interaction", "cox data/veteran.csv --formula 'Surv(time, status) ~ karno * strata(celltype) + age'", m,
         c("karno", "age", paste0("karno:strata(celltype)=", levels(v$celltype)[-1])), terms = list("karno:strata(celltype)" = 3:5))

# The smooth of a figure: least squares on a natural spline, for residuals of variance 1.
z <- cox.zph(coxph(Surv(time, status) ~ karno + age, veteran, control = control), transform = "km")
d <- data.frame(x = z$x, y = z$y[, "karno"])
s <- lm(y ~ ns(x, 3), d)
at <- data.frame(x = seq(min(d$x), max(d$x), length.out = 40))
X <- cbind(1, predict(ns(d$x, 3), at$x))
h <- rowSums((X %*% solve(crossprod(model.matrix(s)))) * X)
write(data.frame(x = sprintf("%.17g", d$x), y = sprintf("%.17g", d$y)), "residuals.csv")
write(data.frame(x = sprintf("%.17g", at$x), fit = sprintf("%.17g", predict(s, at)), error = sprintf("%.17g", sqrt(h))), "smooth.csv")

out <- do.call(rbind, out)
out$value[out$value == "NaN"] <- ""; out$scale[out$scale == "NaN"] <- ""
write.csv(out, "expected.csv", row.names = FALSE, quote = c(1, 2, 3, 4))
writeLines(calls, "cases.txt")
