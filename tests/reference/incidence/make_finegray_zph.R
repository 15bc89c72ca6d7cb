# Writes finegray_zph.csv: score tests of proportional subdistribution hazards by the information alone, as cox.zph has them of what
# finegray makes of the rows of data/ (make_data.R). Run in this folder:  Rscript make_finegray_zph.R    R 4.2.2, survival 3.5-3.
# rank: of the time among those of all rows, ties at their mean. incidence: of the cause just before the time (Aalen-Johansen).
suppressMessages(library(survival))
number <- function(x) formatC(x, digits=17, width=1, format="g")
before <- function(d, cause) function(times) { at <- sort(unique(d$time)); entry <- if (is.null(d$entry)) rep(-1, nrow(d)) else d$entry
  n <- sapply(at, function(t) sum(entry < t & d$time >= t)); own <- sapply(at, function(t) sum(d$time == t & d$status == cause)); any <- sapply(at, function(t) sum(d$time == t & d$status != 0))
  free <- c(1, cumprod(1 - any / n)[-length(at)]); f <- c(0, cumsum(free * own / n)[-length(at)]); f[match(times, at)] }
cells <- NULL
for (set in c("melanoma", "pbc", "paquid", "mgus", "bmt", "random26", "late")) for (strata in c("", "stratum")) for (cause in 1:2) {
  d <- read.csv(sprintf("data/%s.csv", set)); x <- grep("^x", names(d), value=TRUE); d$row <- seq_len(nrow(d)); d$state <- factor(d$status, 0:max(d$status)); d$base <- if (strata == "") 1 else d[[strata]]
  left <- if (is.null(d$entry)) "Surv(time, state)" else "Surv(entry, time, state)"
  g <- finegray(as.formula(paste(left, "~", paste(c(x, "row", "base"), collapse=" + "))), d, etype=as.character(cause), id=row)
  m <- coxph(as.formula(paste("Surv(fgstart, fgstop, fgstatus) ~", paste(x, collapse=" + "), if (strata != "") "+ strata(base)")), g, weights=fgwt, ties="breslow", control=coxph.control(eps=1e-14, iter.max=50))
  ranks <- rank(d$time)
  for (transform in c("identity", "log", "rank", "incidence")) {
    z <- cox.zph(m, switch(transform, rank=function(times) ranks[match(times, d$time)], incidence=before(d, cause), transform))
    cells <- rbind(cells, data.frame(data=set, cause, strata, transform, term=rownames(z$table), chiSquare=number(z$table[, "chisq"]))) }
}
write.csv(cells, "finegray_zph.csv", row.names=FALSE, quote=FALSE)
