# Writes finegray_new.csv and finegray_incidence.csv: cumulative incidences of new rows by crr's regressions of both types of event
# of data/pbc.csv, at eight of their times. Run in this folder:  Rscript make_finegray.R    R 4.2.2, cmprsk 2.2-11.
#
# crr's Newton steps end early: they are run on to gtol 1e-14.
suppressMessages(library(cmprsk))
number <- function(x) formatC(x, digits=17, width=1, format="g")
pbc <- read.csv("../../../data/pbc.csv")
design <- function(d) cbind(d$age, log(d$bili), as.integer(d$sex == "m"))
new <- data.frame(age=c(35.5, 52, 71), bili=c(0.6, 14, 2.2), sex=c("f", "m", "f"))
write.csv(new, "finegray_new.csv", row.names=FALSE, quote=FALSE)
cells <- NULL
for (cause in 1:2) {
  fit <- crr(pbc$time, pbc$status, design(pbc), failcode=cause, cencode=0, gtol=1e-14, maxiter=100)
  at <- predict(fit, design(new))
  k <- unique(round(seq(1, nrow(at), length.out=8)))
  for (row in 1:3) cells <- rbind(cells, data.frame(status=cause, line=row + 1, time=number(at[k, 1]), incidence=number(at[k, row + 1])))
}
write.csv(cells, "finegray_incidence.csv", row.names=FALSE, quote=FALSE)
