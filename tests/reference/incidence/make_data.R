# Writes data/*.csv: public data under competing risks, a row a person, status 0 censored and causes 1, 2, ...; entry where rows enter
# late; groups, strata and clusters as whole numbers from 1; covariates x1, x2 ... as numbers. Run in this folder:  Rscript make_data.R
# R 4.2.2, survival 3.5-3, riskRegression 2022.11.28, etm 1.1.1, KMsurv 0.1-5, timereg 2.0-5.
suppressMessages({library(survival); library(riskRegression); library(etm); library(KMsurv)})
number <- function(x) as.integer(factor(x))
save <- function(name, d) { d <- d[complete.cases(d), ]; write.csv(format(d, digits=15, trim=TRUE), sprintf("data/%s.csv", name), row.names=FALSE, quote=FALSE) }
first <- function(time1, event1, time2, event2) data.frame(time=ifelse(event1 == 1, time1, time2), status=ifelse(event1 == 1, 1, ifelse(event2 == 1, 2, 0)))

data(Melanoma); save("melanoma", with(Melanoma, data.frame(time, status, group=number(sex), stratum=number(invasion), cluster=number(age %/% 5), x1=age, x2=log(thick), x3=number(ulcer) - 1)))
data(Paquid); save("paquid", with(Paquid[1:900, ], data.frame(time=round(time, 1), status, group=1 + (MMSE > 25) + (MMSE > 28), stratum=1 + (DSST > 25), cluster=number(round(DSST)), x1=DSST, x2=MMSE)))
m <- subset(mgus2, ptime > 0)[1:700, ]; save("mgus", with(m, data.frame(time=ptime, status=ifelse(pstat == 1, 1, 2 * death), group=number(sex), stratum=1 + (age > 70), cluster=number(dxyr), x1=age, x2=hgb, x3=mspike)))
save("transplant", with(subset(transplant, futime > 0), data.frame(time=futime, status=number(event) - 1, group=number(abo), stratum=number(sex), cluster=year, x1=age, x2=number(sex) - 1, x3=year - 1995)))
data(fourD); save("fourd", with(fourD, data.frame(time, status=as.integer(as.character(status)), group=1 + (age > 66), stratum=number(sex), cluster=number(round(age)), x1=age, x2=number(sex) - 1)))
data(abortion); i <- seq_len(nrow(abortion)); save("abortion", with(abortion, data.frame(entry, time=exit, status=cause, group=number(group), stratum=1 + i %% 3, cluster=1 + i %% 97, x1=number(group) - 1, x2=((37 * i) %% 101) / 100)))
data(bmt); save("bmt", with(bmt, data.frame(time=t2, status=ifelse(d3 == 0, 0, ifelse(d2 == 1, 1, 2)), group, stratum=z10 + 1, cluster=z9 * 10 + z8 + 1, x1=z1, x2=z2, x3=as.integer(group == 2), x4=as.integer(group == 3))))
p <- read.csv("../../../data/pbc.csv"); save("pbc", with(p, data.frame(time, status, group=stage, stratum=trt, cluster=number(round(age / 2)), x1=age, x2=log(bili), x3=edema, x4=albumin, x5=log(protime))))
r <- subset(rotterdam, rtime > 0)[seq(1, 2980, 4), ]; save("rotterdam", cbind(with(r, first(rtime, recur, dtime, death)), with(r, data.frame(group=number(size), stratum=meno + 1, cluster=year, x1=age, x2=nodes, x3=log1p(er)))))
y <- subset(myeloid, futime > 0); save("myeloid", cbind(with(y, first(ifelse(is.na(crtime), futime, crtime), !is.na(crtime), futime, death)), with(y, data.frame(group=number(trt), stratum=number(sex), cluster=1 + id %% 40, x1=number(trt) - 1, x2=number(sex) - 1, x3=(id %% 17) / 10))))
data(bmt, package="timereg"); save("marrow", with(bmt, data.frame(time, status=cause, group=tcell + 1, stratum=platelet + 1, cluster=1 + seq_along(time) %% 50, x1=platelet, x2=age, x3=tcell)))
data(sTRACE, package="timereg"); save("trace", with(sTRACE, data.frame(time, status=ifelse(status == 9, 1, ifelse(status == 0, 0, 2)), group=1 + (wmi > 1) + (wmi > 1.5), stratum=sex + 1, cluster=number(round(age)), x1=age, x2=wmi)))
o <- merge(subset(colon, etype == 1), subset(colon, etype == 2)[c("id", "time", "status")], by="id"); save("colon", cbind(with(o, first(time.x, status.x, time.y, status.y)), with(o, data.frame(group=number(rx), stratum=surg + 1, cluster=age, x1=age, x2=node4, x3=as.integer(rx == "Lev+5FU"), x4=extent))))
data(sir.cont); save("ward", with(subset(sir.cont, !duplicated(id) & from == 0), data.frame(time, status=match(to, 1:2, 0), group=number(sex), stratum=1 + (age > 60), cluster=number(round(age)), x1=age, x2=number(sex) - 1)))
m <- mgus1[!duplicated(mgus1$id), ]; save("spike", with(m, data.frame(time=stop, status=number(event) - 1, group=number(sex), stratum=1 + (age > 65), cluster=dxyr, x1=age, x2=mspike, x3=number(sex) - 1)))
g <- read.csv("../gray_random_data.csv"); for (s in c(2, 26, 44)) { d <- g[g$set == s, ]; i <- seq_len(nrow(d)); save(sprintf("random%d", s), data.frame(time=d$time, status=d$status, group=d$group, stratum=1 + i %% 2, cluster=1 + i %% 11, x1=sin(i), x2=as.integer(d$group == 1))) }
# Weeks from a made-up entry, with ties of every kind.
set.seed(7); n <- 400; x <- rnorm(n); t <- ceiling(8 * rexp(n, exp(0.4 * x))); e <- pmin(t - 1, rpois(n, 1)); save("late", data.frame(entry=e, time=t, status=sample(0:3, n, TRUE, c(3, 3, 2, 1)), group=1 + (x > 0), stratum=sample(1:3, n, TRUE), cluster=sample(1:50, n, TRUE), x1=x, x2=rbinom(n, 1, 0.4)))
