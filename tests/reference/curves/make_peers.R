# Writes peers_data.csv and peers.csv: data sets that no other script here takes, and what coin 1.4-2, survminer 0.4.9 with survMisc 0.5.6
# and survival 3.5-3 make of them. R 4.2.2. Run in this folder: Rscript make_peers.R
#
# permuted    coin's logrank_test with "mid-ranks": the variance over all arrangements. Its "Prentice-Marek" is our Peto-Peto, its "Peto-Peto"
#             our Fleming-Harrington (1, 0) (make_permutation.R).
# chiSquare   the squares of survMisc's Z, which survminer's surv_pvalue rounds; its S1 is Peto-Peto, S2 the modified one. Only where no two events are
#             tied: its variance of tied events is not survdiff's (the log-rank test of the burns: 7.04 for 7.24).
# survdiff    survival's survdiff with strata, rho = 0, 1, 1/2
# pairs-...   survminer's pairwise_survdiff of the log-rank test
suppressMessages({library(survival); library(coin); library(survminer); library(survMisc); library(KMsurv)})
number <- function(x) formatC(x, digits=17, width=1, format="g")
e <- new.env(); data(list=c("btrial", "bnct", "burn", "larynx"), package="KMsurv", envir=e)
sets <- list(btrial=with(e$btrial, data.frame(time, event=death, group=im)), bnct=with(e$bnct, data.frame(time, event=death, group=trt)),
  burn=with(e$burn, data.frame(time=T1, event=D1, group=Z1, stratum=Z2)), gastric=with(GTSG, data.frame(time, event, group=as.integer(group))),
  glioma=with(glioma, data.frame(time, event=as.integer(event), group=as.integer(group))), udca=na.omit(with(udca1, data.frame(time=futime, event=status, group=trt, stratum=stage))),
  diabetic=with(diabetic, data.frame(time, event=status, group=trt, stratum=as.integer(laser))), stages=with(e$larynx, data.frame(time, event=delta, group=stage, stratum=diagyr %% 3)),
  gehan=with(MASS::gehan, data.frame(time, event=cens, group=as.integer(treat))))
apart <- function(set) transform(sets[[set]], time=time + seq_along(time) / 1024)  # no two times tied
for (set in c("burn", "gastric", "glioma", "diabetic", "gehan")) sets[[paste0(set, "Apart")]] <- apart(set)
for (set in names(sets)) if (is.null(sets[[set]]$stratum)) sets[[set]]$stratum <- 0
types <- c(logRank="logrank", gehanBreslow="Gehan-Breslow", taroneWare="Tarone-Ware", petoPeto="Prentice-Marek", fh10="Peto-Peto")
ours <- c("1"="logRank", n="gehanBreslow", sqrtN="taroneWare", S1="petoPeto", S2="modifiedPetoPeto", "FH_p=1_q=1"="fh11")
cells <- list()
for (set in names(sets)) { d <- sets[[set]]; d$g <- factor(d$group)
  add <- function(test, item, value) cells[[length(cells) + 1]] <<- data.frame(set, test, item, index=seq_along(value) - 1, value=number(as.numeric(value)))
  for (test in names(types)) add(test, "permuted", { x <- logrank_test(Surv(time, event) ~ g, data=d, type=types[[test]], ties.method="mid-ranks"); s <- statistic(x); if (nlevels(d$g) == 2) s^2 else s })
  if (nlevels(d$g) == 2 && !any(duplicated(d$time[d$event == 1]))) { x <- ten(do.call(survfit, list(Surv(time, event) ~ group, data=d))); invisible(capture.output(comp(x))); l <- attr(x, "lrt")
    for (i in seq_len(nrow(l))) add(ours[[as.character(l$W[i])]], "chiSquare", as.numeric(l$Z[i])^2) }
  if (any(d$stratum != 0)) for (test in c("logRank", "fh10", "fhHalf")) add(test, "survdiff", survdiff(Surv(time, event) ~ group + strata(stratum), d, rho=c(logRank=0, fh10=1, fhHalf=0.5)[[test]])$chisq)
  for (m in c("none", "holm", "BH", "bonferroni")) { p <- pairwise_survdiff(Surv(time, event) ~ group, data=d, p.adjust.method=m)$p.value; add("logRank", paste0("pairs-", m), p[!is.na(p)]) } }
write.csv(do.call(rbind, lapply(names(sets), function(set) data.frame(set, time=number(sets[[set]]$time), sets[[set]][c("event", "group", "stratum")]))), "peers_data.csv", row.names=FALSE, quote=FALSE)
write.csv(do.call(rbind, cells), "peers.csv", row.names=FALSE, quote=FALSE)
