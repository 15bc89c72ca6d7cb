# Makes every table of this folder: Rscript make.R (R 4.2 with splines, Hmisc and survival). Run in
# the folder. Numbers are written with every digit.
#
#   data.csv        104 rows of our own making; NA where a cell is missing
#   formulas.txt    id, rows from the top, class (coding: exact; basis: computed), formula
#   design_ID.csv   model.matrix of that formula without the column of the intercept
#   new.csv         values of age and bmi, also beyond those of data.csv
#   new_ID.csv      the bases of data.csv at the rows of new.csv
#   terms.txt       formula, its term labels by terms()
#   strata.csv      codes by survival::strata(site, sex) and interaction(), from 0
#   strata_names.txt the names of survival::strata(site, sex)
#   counts.txt      formula, rows of its model.frame
Sys.setlocale("LC_COLLATE", "C")
library(splines)
library(survival)
options(OutDec = ".", digits = 17, warn = 2)

n <- 104
i <- seq_len(n)
# A multiplicative generator written out, so that the data do not hang on a version of R.
draw <- function(seed) {
  x <- seed
  sapply(i, function(k) {
    x <<- (16807 * x) %% 2147483647
    x / 2147483647
  })
}
u <- lapply(1:12, function(k) draw(1000 + 77 * k))
data <- data.frame(
  age = floor(30 + 50 * u[[1]]),                          # with ties
  bmi = round(17 + 20 * u[[2]]^2, 2),
  dose = c(1, 2, 5, 10)[1 + floor(4 * u[[3]])],           # a number that may be taken for a factor
  sex = c("f", "m")[1 + floor(2 * u[[4]])],
  trt = c("placebo", "low", "high")[1 + floor(3 * u[[5]])],  # a factor in this order
  site = c("B", "A", "D", "C")[1 + floor(4 * u[[6]])],
  smokes = c("FALSE", "TRUE")[1 + floor(2 * u[[7]])],
  time = round(1 + 100 * u[[8]], 1),
  status = floor(3 * u[[9]]),
  entry = round(u[[10]], 2),
  lab = ifelse(u[[11]] < 0.1, NA, round(10 * u[[11]] - 2, 2)),
  mark = ifelse(u[[12]] < 0.15, NA, c("x", "y", "z")[1 + floor(3 * u[[12]])]),
  stringsAsFactors = FALSE)
exact <- function(x) {
  if (!is.numeric(x)) return(ifelse(is.na(x), "NA", as.character(x)))
  ifelse(is.na(x), "NA", ifelse(x == floor(x) & abs(x) < 1e9, sprintf("%d", as.integer(x)),
                                sprintf("%.17g", x)))
}
table_out <- function(x, file) {
  out <- as.data.frame(lapply(as.data.frame(x, optional = TRUE), exact), optional = TRUE)
  names(out) <- if (is.data.frame(x)) names(x) else paste0("c", seq_len(ncol(x)))
  write.csv(out, file, row.names = FALSE, quote = FALSE)
}
short <- function(x) if (is.numeric(x)) ifelse(is.na(x), "NA", format(x, digits = 15, trim = TRUE,
                                                                     drop0trailing = TRUE)) else x
write.csv(as.data.frame(lapply(data, short)), "data.csv", row.names = FALSE, quote = FALSE)

data$trt <- factor(data$trt, levels = c("placebo", "low", "high"))

# Harrell's spline, x itself first; the knots by their number or as given.
rcs <- function(x, k) {
  m <- if (length(k) == 1) Hmisc::rcspline.eval(x, nk = k, inclx = TRUE)
       else Hmisc::rcspline.eval(x, knots = k, inclx = TRUE)
  attr(m, "knots") <- NULL
  m
}

coding <- c(
  "~ age", "~ age + bmi", "~ sex", "~ trt", "~ site", "~ smokes", "~ C(dose)", "~ dose",
  "~ age + trt + site", "~ sex * trt", "~ sex:trt", "~ trt:sex", "~ sex + sex:trt",
  "~ trt + sex:trt", "~ age:trt", "~ age + age:trt", "~ age * trt", "~ trt + age:trt",
  "~ age:bmi", "~ age * bmi", "~ sex * trt * site", "~ sex:trt:site", "~ sex + sex:trt:site",
  "~ sex * trt + sex:trt:site", "~ sex:trt + trt:site", "~ sex:trt + sex:site + trt:site",
  "~ age:sex:trt", "~ age:sex + age:trt", "~ age + sex:trt", "~ age + age:sex:trt",
  "~ age:bmi:sex", "~ age + bmi + age:bmi:sex", "~ sex/trt", "~ sex/age", "~ (sex + trt + age)^2",
  "~ (sex + trt + smokes)^3 - sex:trt:smokes", "~ sex * trt - sex", "~ sex * trt - trt",
  "~ sex * trt - sex - trt", "~ C(dose):sex", "~ C(dose) * age", "~ I(age / 10) + I(bmi - 20)",
  "~ I(bmi^2)", "~ sqrt(age) + abs(bmi - 25)", "~ age:C(dose):sex + bmi", "~ smokes:age + smokes:sex",
  "~ site - 1", "~ 0 + sex:age", "~ age:sex + bmi:sex", "~ sex:trt + age:sex", "~ age:trt + trt:site")
basis <- c(
  "~ ns(age, 1)", "~ ns(age, 2)", "~ ns(age, 3)", "~ ns(bmi, df = 4)", "~ ns(bmi, df = 6)",
  "~ ns(bmi, knots = c(20, 24.5, 30))", "~ ns(age, knots = 50)", "~ poly(age, 1)", "~ poly(age, 3)",
  "~ poly(bmi, 5)", "~ poly(bmi, degree = 2, raw = TRUE)", "~ rcs(age, 3)", "~ rcs(age, 4)",
  "~ rcs(age, 5)", "~ rcs(bmi, 6)", "~ rcs(bmi, 7)", "~ rcs(bmi, c(18, 22, 25, 33))",
  "~ ns(age, 3):sex", "~ ns(age, 2) * trt", "~ poly(bmi, 2) * sex", "~ rcs(bmi, 4) * age",
  "~ log(bmi) + exp(age / 40) + log2(age) + log10(bmi) + log1p(age) + expm1(bmi / 30)")
small <- c("~ ns(age, 4)", "~ rcs(age, 3)", "~ rcs(age, 4)", "~ rcs(age, 5)", "~ rcs(bmi, 6)",
           "~ rcs(bmi, 7)", "~ poly(age, 4)")

jobs <- rbind(data.frame(rows = n, class = "coding", formula = coding),
              data.frame(rows = n, class = "basis", formula = basis),
              data.frame(rows = 60, class = "basis", formula = small))
jobs$id <- sprintf("%02d", seq_len(nrow(jobs)))
intercept <- function(text) {  # the coding of a model with one
  update(as.formula(gsub("C(", "factor(", text, fixed = TRUE)), ~ . + 1)
}
for (j in seq_len(nrow(jobs))) {
  x <- model.matrix(intercept(jobs$formula[j]), data[seq_len(jobs$rows[j]), ])
  x <- x[, colnames(x) != "(Intercept)", drop = FALSE]
  table_out(unname(x), paste0("design_", jobs$id[j], ".csv"))
}
writeLines(paste(jobs$id, jobs$rows, jobs$class, jobs$formula, sep = "\t"), "formulas.txt")

new <- data.frame(age = c(10, 29, 30, 31.5, 50, 64.25, 79, 80, 120),
                  bmi = c(5, 17, 17.5, 20, 24.5, 26, 30, 38, 60))
table_out(new, "new.csv")
knotted <- function(x, k) attr(Hmisc::rcspline.eval(x, nk = k, inclx = TRUE), "knots")
at <- list(
  "~ ns(age, 3)" = predict(ns(data$age, 3), new$age),
  "~ ns(bmi, df = 6)" = predict(ns(data$bmi, 6), new$bmi),
  "~ ns(bmi, knots = c(20, 24.5, 30))" = predict(ns(data$bmi, knots = c(20, 24.5, 30)), new$bmi),
  "~ poly(age, 3)" = predict(poly(data$age, 3), new$age),
  "~ poly(bmi, 5)" = predict(poly(data$bmi, 5), new$bmi),
  "~ poly(bmi, degree = 2, raw = TRUE)" = cbind(new$bmi, new$bmi^2),
  "~ rcs(age, 5)" = rcs(new$age, knotted(data$age, 5)),
  "~ rcs(bmi, 7)" = rcs(new$bmi, knotted(data$bmi, 7)))
for (text in names(at)) {
  id <- jobs$id[jobs$formula == text & jobs$rows == n]
  table_out(unname(unclass(as.matrix(at[[text]]))), paste0("new_", id, ".csv"))
}

expansions <- c(
  "~ a*b*c", "~ (a+b)^2", "~ (a+b+c)^2", "~ (a+b+c+d)^3", "~ a/b", "~ (a+b)/c", "~ a/b/c",
  "~ a/(b+c)", "~ a:b - a", "~ a*b - a", "~ a*b*c - a:b:c", "~ a + a + b + a", "~ b:a + a:b",
  "~ a:b + c", "~ a:b + c + b", "~ c + a*b", "~ (a+b)*(c+d)", "~ (a+b):(c+d)", "~ a^3", "~ a:a",
  "~ a*a", "~ (a+b) - (a+c)", "~ .", "~ . - d", "~ .^2", "~ a*. - b:a", "~ . - a:b", "~ -1 + a",
  "~ a + 0", "~ 1", "~ a - a", "~ log(a) + a", "~ I(a + b):c", "~ (a*b)^2", "~ (a:b + c)^2",
  "~ a + b:c + a:b + d", "~ ((a))", "~ + a + b", "~ a:b:c + a", "~ c:b:a + b:a", "~ a:(b - b) + c")
four <- data.frame(a = 1, b = 1, c = 1, d = 1)
writeLines(sapply(expansions, function(text) {
  labels <- attr(terms(as.formula(text), data = four), "term.labels")
  paste0(text, "\t", paste(labels, collapse = " "))
}), "terms.txt")

named <- with(data, strata(site, sex, shortlabel = FALSE))
both <- interaction(data$site, data$sex, drop = TRUE, lex.order = TRUE)
table_out(data.frame(strata = as.integer(named) - 1L, crossed = as.integer(both) - 1L), "strata.csv")
writeLines(levels(named), "strata_names.txt")

counted <- c(
  "Surv(time, status == 1) ~ age", "Surv(time, status > 0) ~ log(lab)",
  "Surv(time, status == 1) ~ lab + mark", "Surv(log(lab), status == 2) ~ sex",
  "Surv(time, status == 1) ~ sqrt(lab) + offset(lab)", "Surv(time, mark == \"x\") ~ age",
  "Surv(entry, time, status == 1) ~ age + strata(mark)",
  "Surv(time, status == 1) ~ age + cluster(mark)")
options(warn = -1)
writeLines(sapply(counted, function(text) {
  paste0(text, "\t", nrow(model.frame(as.formula(text), data, na.action = na.omit)))
}), "counts.txt")
