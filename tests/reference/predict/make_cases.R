# Predictions of the fits of cases.txt for rows of their own data, moved: predict.coxph, survfit.coxph
# and quantile.survfit of R's package survival. Run in this folder: Rscript make_cases.R
#
# One file for each case, a line for each number: the row or subject, what it is, the kind of limits,
# the time or share that it is at, value, standard error and limits. Covariates are centred at the
# means of all columns (nocenter = NULL).
#
# Subjects of several rows and rows that enter late: survfit(id =) has the right hazards, but its
# standard errors, and those of predict(type = "expected"), are wrong for a row that begins after the
# stratum's first event: in heart_breslow 0.223 and 0.117 for 0.0746, which differences of the hazard
# with respect to the coefficients confirm. Their errors are therefore formed below from sums over
# each risk set; the hazards are those of survfit.
#
# Other numbers of R contradict its own, and are formed from these: linear predictors of a fit with an
# offset have its mean taken off or not, as the fit keeps x or not and by the reference; here it is
# added as it is. predict(type = "expected") of such a fit is not the hazard that survfit has for the
# row (0.516 for 0.342 in burn_offset). quantile() takes limits that rise for limits that fall, and
# gives a lower limit of 12 beside a quantile of 7 where the limit has crossed at 7 (bladder_gaps).
# Log-log limits of a survival of 1 are 1 before the first time of a curve, and NA from there on; here
# there are none.
suppressMessages(library(survival))
library(splines)
cases <- read.delim("cases.txt", colClasses = "character", quote = "")
numbers <- function(text) as.numeric(strsplit(text, ";")[[1]])
dir.create("cases", showWarnings = FALSE)

# The hazard along rows of new data with its error, at each event time: direct sums, Efron or Breslow.
along <- function(fit, data, w, rows, stratum) {
  start <- if (is.null(data$start)) rep(-Inf, nrow(data)) else data$start
  x <- fit$x
  risk <- w * exp(as.vector(x %*% coef(fit)))
  h <- 0; v <- 0; q <- rep(0, ncol(x)); made <- NULL
  for (i in seq_len(nrow(rows))) {
    one <- rows[i, ]
    newx <- as.vector(rows$x[i, ])
    own <- exp(sum(newx * coef(fit)))
    same <- stratum$old == stratum$new[i]
    times <- sort(unique(data$time[data$event == 1 & same]))
    for (t in times[times > one$start & times <= one$time]) {
      at <- same & start < t & data$time >= t
      fails <- which(at & data$time == t & data$event == 1)
      d <- length(fails)
      for (l in seq_len(d) - 1) {
        share <- if (fit$method == "efron") l / d else 0
        weight <- risk * at
        weight[fails] <- weight[fails] * (1 - share)
        s0 <- sum(weight)
        mean <- colSums(weight * x) / s0
        dh <- sum(w[fails]) / d / s0
        h <- h + own * dh
        v <- v + own^2 * dh / s0
        q <- q + own * dh * (newx - mean)
      }
      made <- rbind(made, c(t, h, sqrt(v + as.vector(t(q) %*% vcov(fit) %*% q))))
    }
  }
  made
}
limited <- function(h, e, type) {
  z <- qnorm(0.975)
  s <- exp(-h)
  switch(type, "plain" = cbind(pmax(s - z * s * e, 0), pmin(s + z * s * e, 1)),
         "log" = cbind(s * exp(-z * e), pmin(s * exp(z * e), 1)),
         "log-log" = cbind(exp(-h * exp(z * e / h)), exp(-h * exp(-z * e / h))))
}

for (i in seq_len(nrow(cases))) {
  case <- cases[i, ]
  data <- read.csv(file.path("../cox/data", paste0(case$data, ".csv")))
  w <- if (case$weights == "") NULL else data[[case$weights]]
  fit <- do.call(coxph, list(formula = as.formula(case$formula), data = data, ties = case$ties,
                             weights = w, robust = case$robust == "yes",
                             nocenter = NULL, x = TRUE, model = TRUE,
                             control = coxph.control(eps = 1e-13, toler.chol = 1e-14, iter.max = 60)))
  late <- "start" %in% names(data) && grepl("start", case$formula)
  new <- data[numbers(case$rows), ]
  rownames(new) <- NULL
  if ("age" %in% names(new)) new$age <- new$age + 0.5
  # A path: the rows one after the other, each for a third of the way to the last time.
  if (late) {
    last <- quantile(data$time[data$event == 1], 0.9, type = 1)
    new$start <- c(0, last / 3, last / 3, 2 * last / 3)
    new$time <- c(last / 3, 2 * last / 3, 2 * last / 3, last)
    new$who <- c("a", "a", "b", "b")
  }
  new$event <- 0
  write.csv(format(new, digits = 15, trim = TRUE), file.path("cases", paste0(case$case, "_new.csv")),
            row.names = FALSE, quote = FALSE)
  new <- read.csv(file.path("cases", paste0(case$case, "_new.csv")))
  made <- NULL
  add <- function(who, quantity, limits, at, value, error, lower = NA, upper = NA) {
    made <<- rbind(made, data.frame(who = who, quantity = quantity, limits = limits, at = at,
                                    value = value, error = error, lower = lower, upper = upper))
  }
  stratified <- grepl("strata", case$formula)
  offset <- model.offset(model.frame(fit))
  for (reference in c("sample", if (stratified) "strata", "zero")) {
    lp <- predict(fit, newdata = new, type = "lp", se.fit = TRUE, reference = reference)
    terms <- predict(fit, newdata = new, type = "terms", se.fit = TRUE, reference = reference)
    if (!is.null(offset)) {
      lp$fit <- rowSums(terms$fit) +
        model.offset(model.frame(delete.response(fit$terms), data = new))
    }
    add(seq_len(nrow(new)), paste("predictor", reference), "", "", lp$fit, lp$se.fit)
    for (term in colnames(terms$fit)) {
      add(seq_len(nrow(new)), paste("term", reference), "", gsub("[ ,]", "", term), terms$fit[, term],
          terms$se.fit[, term])
    }
  }
  if (case$ties != "exact") {
    times <- numbers(case$times)
    for (row in seq_len(nrow(new))) {
      for (type in c("log-log", "log", "plain")) {
        curve <- survfit(fit, newdata = new[row, ], conf.type = type)
        at <- times[times <= max(curve$time)]
        s <- summary(curve, times = at)
        if (type == "log-log") s$lower[s$surv == 1] <- s$upper[s$surv == 1] <- NA
        add(row, "survival", type, at, s$surv, s$std.err, s$lower, s$upper)
        if (type == "log") add(row, "hazard", "", at, s$cumhaz, s$std.chaz)
        shares <- c(0.1, 0.25, 0.5)
        q <- quantile(curve, shares)
        crossed <- function(limit, theirs) {
          if (!is.unsorted(-limit[!is.na(limit)])) return(as.vector(theirs))
          sapply(shares, function(p) curve$time[which(limit <= 1 - p)[1]])
        }
        add(row, "quantile", type, shares, as.vector(q$quantile), NA, crossed(curve$lower, q$lower),
            crossed(curve$upper, q$upper))
      }
      if (late) next
      expected <- predict(fit, newdata = new[row, ], type = "expected", se.fit = TRUE)
      if (!is.null(offset)) {
        whole <- summary(survfit(fit, newdata = new[row, ]), times = new$time[row])
        expected <- list(fit = whole$cumhaz, se.fit = whole$std.chaz)
      }
      add(row, "expected", "", "", expected$fit, expected$se.fit)
    }
    if (late) {
      new$x <- model.matrix(fit, data = new)
      column <- sub(".*strata\\((\\w+)\\).*", "\\1", case$formula)
      strata <- if (stratified) list(old = data[[column]], new = new[[column]])
                else list(old = rep(0, nrow(data)), new = rep(0, nrow(new)))
      of <- function(rows) {
        path <- along(fit, data, rep(1, nrow(data)), new[rows, ],
                      list(old = strata$old, new = strata$new[rows]))
        one <- new[rows, ]
        one$who <- 1
        theirs <- survfit(fit, newdata = one, id = who)
        if (!is.null(path)) {
          stopifnot(all.equal(max(theirs$cumhaz), max(path[, 2]), tolerance = 1e-11))
        }
        path
      }
      for (row in seq_len(nrow(new))) {
        path <- of(row)
        if (is.null(path)) next
        last <- path[nrow(path), ]
        add(row, "expected", "", "", last[2], last[3])
      }
      for (subject in c("a", "b")) {
        rows <- which(new$who == subject)
        path <- of(rows)
        at <- times[times >= path[1, 1] & times <= path[nrow(path), 1]]
        for (type in c("log-log", "log", "plain")) {
          limits <- limited(path[, 2], path[, 3], type)
          if (length(at) > 0) {
            k <- findInterval(at, path[, 1])
            s <- exp(-path[k, 2])
            add(subject, "survival", type, at, s, s * path[k, 3], limits[k, 1], limits[k, 2])
            if (type == "log") add(subject, "hazard", "", at, path[k, 2], path[k, 3])
          }
          first <- function(values, p) path[which(values <= 1 - p)[1], 1]
          for (p in c(0.1, 0.25, 0.5)) {
            add(subject, "quantile", type, p, first(exp(-path[, 2]), p), NA, first(limits[, 1], p),
                first(limits[, 2], p))
          }
        }
      }
    }
  }
  write.csv(format(made, digits = 15, trim = TRUE), file.path("cases", paste0(case$case, ".csv")),
            row.names = FALSE, quote = FALSE, na = "NA")
}
