# Writes permutation.csv: tests of equal survival with the variance over all arrangements, by coin 1.4-2 (survival 3.5-3, R 4.2.2).
# Run in this folder: Rscript make_permutation.R   Scores with n at risk and d tied events at a time as in the log-rank test are coin's "mid-ranks".
# coin would rank all strata together; here scores are made within each stratum, as in the stratified log-rank test. Its "Peto-Peto" weight is
# S(t-), our Fleming-Harrington (1, 0); its "Prentice-Marek" the product of 1 - d / (n + 1), our Peto-Peto.
suppressMessages({library(survival); library(coin)})
number <- function(x) formatC(x, digits=17, width=1, format="g")
types <- list(logRank=list("logrank", 0, 0), gehanBreslow=list("Gehan-Breslow", 0, 0), taroneWare=list("Tarone-Ware", 0.5, 0), petoPeto=list("Prentice-Marek", 0, 0),
  fh10=list("Fleming-Harrington", 1, 0), fh01=list("Fleming-Harrington", 0, 1), fh11=list("Fleming-Harrington", 1, 1))
cells <- list()
run <- function(data, group, stratum="", rows=0) { d <- read.csv(sprintf("../cox/data/%s.csv", data)); if (rows > 0) d <- d[seq_len(rows), ]
  g <- factor(d[[group]]); s <- factor(if (stratum == "") rep(1, nrow(d)) else d[[stratum]]); cat(data, "")
  add <- function(test, item, value) cells[[length(cells) + 1]] <<- data.frame(data, group, stratum, rows, test, item, value=number(as.numeric(value)))
  for (test in names(types)) { t <- types[[test]]; score <- numeric(nrow(d))
    for (one in levels(s)) score[s == one] <- logrank_trafo(Surv(d$time, d$event)[s == one], ties.method="mid-ranks", type=t[[1]], rho=t[[2]], gamma=t[[3]])
    x <- if (nlevels(s) > 1) independence_test(score ~ g | s, teststat="quadratic") else independence_test(score ~ g, teststat="quadratic")
    add(test, "chiSquare", statistic(x)); add(test, "degreesOfFreedom", x@statistic@df); add(test, "pValue", pvalue(x))
    if (rows > 0 && nlevels(g) == 2 && nlevels(s) == 1) for (side in c("two.sided", "less", "greater")) {
      # The statistic is the first level's sum of scores, which are low where events are early.
      e <- independence_test(score ~ g, distribution=exact(), alternative=side); add(test, paste0("exact-", side), pvalue(e)) } } }
run("lung", "male"); run("lung", "ecog", "male"); run("veteran", "cell"); run("veteran", "cell", "test"); run("ovarian", "rx"); run("larynx", "stage2"); run("pbc", "stage", "trt")
run("burn", "bathing", "male"); run("kidtran", "black", "female"); run("std", "gonorrhoea"); run("gbsg", "grade", "hormon"); run("hodgkin", "allo", "hodgkin"); run("bmt", "fab", "hospital")
run("ovarian", "rx", rows=20); run("hodgkin", "allo", rows=21); run("lung", "male", rows=20); run("bfeed", "poverty", rows=24)
write.csv(do.call(rbind, cells), "permutation.csv", row.names=FALSE, quote=FALSE); cat("\n")
