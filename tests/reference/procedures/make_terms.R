# Stepwise selection of terms of every kind: by AIC and BIC as step() of R's stats does it, and by the
# p-values of Wald's tests of whole terms, of which R has no routine. Run in this folder:
# Rscript make_terms.R
#
# Models with strata, which stay; offsets; weights; factors, splines and polynomials, which go whole;
# interactions, which go before their parts and come after them. terms.txt has a line for each step; the
# first of a run has the value of the model that it starts from.
suppressMessages(library(survival))
library(splines)
control <- coxph.control(eps = 1e-12, toler.chol = 1e-14, iter.max = 60)
cases <- list(
  list("pbc", "Surv(time, event) ~ trt + ns(age, 3) + female * edema + log(bili) + factor(stage)", ""),
  list("veteran", "Surv(time, event) ~ karno * test + age + diagtime + strata(cell)", ""),
  list("nwtco", "Surv(time, event) ~ unfavourable * stage4 + stage2 + stage3 + poly(age, 2)", "weight"),
  list("burn", "Surv(time, event) ~ bathing + male * respiratory + offset(log(percent) / 4)", ""),
  list("std", "Surv(time, event) ~ black + age * yschool + gonorrhoea + chlamydia + npartner + oral", ""),
  list("kidtran", "Surv(time, event) ~ female * black + age + I(age^2)", ""),
  list("heart", "Surv(start, time, event) ~ age * transplant + year + surgery", ""),
  list("bfeed", "Surv(time, event) ~ black + alcohol + pc3mth", ""),
  list("burn", "Surv(time, event) ~ male + respiratory", ""))
fitted <- function(formula, case) {
  args <- list(formula = formula, data = quote(rows), control = control)
  if (case[[3]] != "") args$weights <- as.name(case[[3]])
  do.call(coxph, args)
}
keeps <- function(case) {
  labels <- attr(terms(as.formula(case[[2]]), specials = "strata"), "term.labels")
  offset <- regmatches(case[[2]], regexpr("offset\\(.*\\)$", case[[2]]))
  c(grep("strata", labels, value = TRUE), offset, "1")
}
with <- function(case, labels) {
  reformulate(c(labels, keeps(case)), response = sub(" ~.*", "", case[[2]]))
}
out <- NULL
say <- function(case, direction, criterion, step, change, value) {
  out <<- rbind(out, data.frame(data = case[[1]], direction = direction, criterion = criterion,
                                step = step, change = gsub(" ", "", change),
                                value = sprintf("%.15g", value), formula = case[[2]],
                                weights = case[[3]]))
}

# --- By a criterion -------------------------------------------------------------------------------
# Two log-likelihoods of one model differ in their last digits between directions; step() goes on only
# where a change is below by more than 1e-7, as ours does.
for (case in cases) for (direction in c("backward", "forward", "both")) for (kind in c("aic", "bic")) {
  rows <- read.csv(file.path("../cox/data", paste0(case[[1]], ".csv")))
  assign("rows", rows, envir = globalenv())
  full <- fitted(as.formula(case[[2]]), case)
  lower <- with(case, character())
  start <- if (direction == "forward") fitted(lower, case) else full
  events <- if (case[[3]] == "") sum(rows$event) else sum((rows$event * rows[[case[[3]]]]))
  made <- step(start, scope = list(lower = lower[-2], upper = formula(full)[-2]),
               direction = direction, k = if (kind == "aic") 2 else log(events), trace = 0)
  path <- made$anova
  for (i in seq_len(nrow(path))) {
    say(case, direction, kind, i - 1, as.character(path$Step[i]), path$AIC[i])
  }
}

# --- By p-values ----------------------------------------------------------------------------------
wald <- function(fit) {
  # coxph takes weights that are not whole for a wish for robust variances; here they are frequencies.
  variance <- if (is.null(fit$naive.var)) fit$var else fit$naive.var
  sapply(fit$assign[!grepl("strata", names(fit$assign))], function(columns) {
    b <- coef(fit)[columns]
    pchisq(drop(b %*% solve(variance[columns, columns]) %*% b), length(columns),
           lower.tail = FALSE)
  })
}
parts <- function(label) strsplit(label, ":")[[1]]
within <- function(inner, outer) inner != outer && all(parts(inner) %in% parts(outer))
for (case in cases) for (direction in c("backward", "forward", "both")) {
  rows <- read.csv(file.path("../cox/data", paste0(case[[1]], ".csv")))
  assign("rows", rows, envir = globalenv())
  all <- setdiff(attr(terms(as.formula(case[[2]])), "term.labels"), keeps(case))
  labels <- if (direction == "forward") character() else all
  say(case, direction, "p", 0, "", 0)
  for (number in seq_len(50)) {
    change <- NULL
    if (direction != "forward" && length(labels) > 0) {
      p <- wald(fitted(with(case, labels), case))
      names(p) <- gsub(" ", "", names(p))
      may <- Filter(function(l) !any(sapply(labels, within, inner = l)), labels)
      p <- p[gsub(" ", "", may)]
      if (max(p) >= 0.1) {
        change <- list("-", may[which.max(p)], max(p))
        labels <- setdiff(labels, may[which.max(p)])
      }
    }
    if (is.null(change) && direction != "backward") {
      may <- Filter(function(l) all(sapply(all, function(o) !within(o, l) || o %in% labels)),
                    setdiff(all, labels))
      p <- sapply(may, function(l) {
        q <- wald(fitted(with(case, c(labels, l)), case))
        names(q) <- gsub(" ", "", names(q))
        q[[gsub(" ", "", l)]]
      })
      if (length(p) > 0 && min(p) < 0.05) {
        change <- list("+", may[which.min(p)], min(p))
        labels <- c(labels, may[which.min(p)])
      }
    }
    if (is.null(change)) break
    say(case, direction, "p", number, paste0(change[[1]], change[[2]]), change[[3]])
  }
}
write.table(out, "terms.txt", row.names = FALSE, quote = FALSE, sep = "\t")
