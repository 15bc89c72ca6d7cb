# Writes finegray_cases.csv and finegray.csv: subdistribution hazards of the data sets in data/ (make_data.R) by crr, and by coxph of
# what finegray makes of the rows. Run in this folder:  Rscript make_finegray.R    R 4.2.2, cmprsk 2.2-11, survival 3.5-3.
#
# crr       its Newton steps end early: they are run on to gtol 1e-14. Where it halts before (converged is FALSE, up to 2e-9 from the
#           maximum), the step that its own score and information still ask for is added. Not with weights, strata of the baseline or late entry.
#           Its errors with strata of the censoring are not taken: on two copies of a data set, each a stratum, it has other ones
#           than on the copies as one stratum, where nothing differs.
# finegray  coxph with Breslow ties; errors by person (or cluster), eps 1e-14. Left-truncated data too. Not with strata of the censoring
#           (coefficients that are not those of the stratified curves), nor with weights, which its censoring curve passes over.
# weight    count: rows as often as that.
suppressMessages({library(cmprsk); library(survival)})
number <- function(x) formatC(x, digits=17, width=1, format="g")
cases <- NULL; cells <- list(); last <- character(); eight <- function(n) unique(round(seq(1, n, length.out=8)))
add <- function(item, value) cells[[length(cells) + 1]] <<- data.frame(case=last, item, index=seq_along(value) - 1, value=number(as.numeric(value)))
begin <- function(program, set, cause, weight="", cluster="", censoring="", strata="") { last <<- sprintf("%s_%s_%d", program, set, 1 + sum(cases$data == set & cases$program == program))
  cases <<- rbind(cases, data.frame(case=last, program, data=set, cause, weight, cluster, censoring, strata)); read.csv(sprintf("data/%s.csv", set)) }
covariates <- function(d) grep("^x", names(d), value=TRUE)

often <- function(d, weight) if (weight == "count") d[rep(seq_len(nrow(d)), 1 + seq_len(nrow(d)) %% 3), ] else d
byCrr <- function(set, cause=1, censoring="", weight="") { d <- often(begin("crr", set, cause, weight, censoring=censoring), weight); x <- as.matrix(d[covariates(d)])
  f <- if (censoring == "") crr(d$time, d$status, x, failcode=cause, gtol=1e-14, maxiter=100) else crr(d$time, d$status, x, failcode=cause, cengroup=d[[censoring]], gtol=1e-14, maxiter=100)
  add("coef", f$coef + if (f$converged) 0 else f$invinf %*% f$score); if (censoring == "") add("var", f$var); add("loglik", c(f$loglik.null, f$loglik)); add("inverse", f$invinf); k <- eight(length(f$uftime)); add("at", k - 1); add("time", f$uftime[k]); add("jump", f$bfitj[k]); add("residual", t(f$res[k, , drop=FALSE]))
  new <- x[c(1, nrow(x) %/% 2), , drop=FALSE]; p <- predict(f, new); add("new", t(new)); add("predicted", p[k, 2:3]) }

byFinegray <- function(set, cause=1, weight="", cluster="", strata="") { d <- often(begin("finegray", set, cause, weight, cluster, "", strata), weight); d$row <- seq_len(nrow(d)); d$by <- if (cluster == "") d$row else d[[cluster]]; d$state <- factor(d$status, 0:max(d$status))
  left <- if ("entry" %in% names(d)) "Surv(entry, time, state)" else "Surv(time, state)"; d$base <- if (strata == "") 1 else d[[strata]]
  f <- as.formula(paste(left, "~", paste(c(covariates(d), "row", "by", "base"), collapse=" + "))); g <- finegray(f, d, etype=as.character(cause), id=row)
  m <- coxph(as.formula(paste("Surv(fgstart, fgstop, fgstatus) ~", paste(covariates(d), collapse=" + "), if (strata != "") "+ strata(base)")), g, weights=fgwt, ties="breslow", cluster=by, control=coxph.control(eps=1e-14, iter.max=50))
  add("coef", coef(m)); add("var", m$var); add("naive", m$naive.var); add("loglik", m$loglik) }

sets <- sub(".csv", "", list.files("data"))
for (set in setdiff(sets, c("late", "abortion", "random2"))) { byCrr(set); byCrr(set, 2) }
for (set in c("pbc", "melanoma", "paquid", "mgus")) byCrr(set, censoring="stratum")
for (set in c("pbc", "melanoma")) byCrr(set, weight="count")
for (set in setdiff(sets, c("abortion", "random2"))) byFinegray(set)
for (set in c("pbc", "melanoma", "late")) { byFinegray(set, weight="count"); byFinegray(set, 2, cluster="cluster"); byFinegray(set, strata="stratum") }
write.csv(cases, "finegray_cases.csv", row.names=FALSE, quote=FALSE); write.csv(do.call(rbind, cells), "finegray.csv", row.names=FALSE, quote=FALSE)
