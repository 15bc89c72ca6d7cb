# Writes data/, cases.csv and fits/: what R's survival makes of public data sets from the packages
# survival and KMsurv. Run in this folder:  Rscript make.R
# R 4.2.2, survival 3.5-3, KMsurv 0.1-5.
suppressMessages({library(survival); library(KMsurv)})
from <- function(name, package) { e <- new.env(); data(list=name, package=package, envir=e); get(name, e) }
number <- function(x) formatC(x, digits=17, width=1, format="g")
unlink(c("data", "fits"), recursive=TRUE); dir.create("data"); dir.create("fits")

data <- list()
put <- function(name, d) { d <- as.data.frame(lapply(na.omit(d), as.numeric)); data[[name]] <<- d
  write.csv(as.data.frame(lapply(d, number)), sprintf("data/%s.csv", name), row.names=FALSE, quote=FALSE) }
l <- survival::lung; put("lung", with(l, data.frame(time, event=status-1, age, male=sex==1, ecog=ph.ecog, karno=ph.karno, inst)))
v <- survival::veteran; put("veteran", with(v, data.frame(time, event=status, test=trt==2, karno, diagtime, age, prior=prior/10,
  small=celltype=="smallcell", adeno=celltype=="adeno", large=celltype=="large", cell=as.integer(celltype))))
o <- survival::ovarian; put("ovarian", with(o, data.frame(time=futime, event=fustat, age, residual=resid.ds-1, rx=rx-1, ecog=ecog.ps-1)))
co <- survival::colon; put("colon", subset(with(co, data.frame(time, event=status, lev=rx=="Lev", fu=rx=="Lev+5FU", sex, age, obstruct, adhere, nodes, surg, etype, id)), id <= 450))
h <- survival::heart; put("heart", with(h, data.frame(start, time=stop, event, age, year, surgery, transplant=as.integer(transplant)-1, id)))
b <- survival::bladder2; put("bladder", with(b, data.frame(start, time=stop, event, thiotepa=rx-1, number, size, enum, id)))
g <- survival::cgd; put("cgd", with(g, data.frame(start=tstart, time=tstop, event=status, gamma=treat=="rIFN-g", male=sex=="male", age, autosomal=inherit=="autosomal", steroids, center=as.integer(center), id)))
p <- survival::pbc[1:312,]; put("pbc", with(p, data.frame(time, event=status==2, trt=trt-1, age, female=sex=="f", edema, bili, albumin, protime, stage)))
r <- survival::retinopathy; put("retinopathy", with(r, data.frame(time=futime, event=status, adult=type=="adult", treated=trt, risk, age, id)))
r <- survival::rats; put("rats", with(r, data.frame(time, event=status, rx, female=sex=="f", litter)))
r <- survival::gbsg; put("gbsg", with(r, data.frame(time=rfstime, event=status, age, meno, size, grade, nodes, pgr, er, hormon)))
set.seed(20); r <- survival::nwtco; sampled <- r$rel == 1 | r$in.subcohort
put("nwtco", with(r[sampled,], data.frame(time=edrel, event=rel, unfavourable=histol==2, stage2=stage==2, stage3=stage==3, stage4=stage==4, age=age/12, weight=ifelse(rel==1, 1, 5.75), seqno)))
r <- survival::rhDNase; put("rhdnase", with(r, data.frame(time=as.numeric(end.dt-entry.dt), event=!is.na(ivstart), rx=trt, fev, inst)))
r <- survival::mgus2; put("mgus", subset(with(r, data.frame(start=age, time=age+futime/12, event=death, male=sex=="M", hgb, creat, mspike)), TRUE)[1:600,])
r <- survival::stanford2; put("stanford", with(r, data.frame(time, event=status, age, t5)))
r <- survival::myeloma[1:500,]; put("myeloma", subset(with(r, data.frame(start=entry, time=futime, event=death, year=year-1990)), start < time))
k <- from("bfeed", "KMsurv"); put("bfeed", with(k, data.frame(time=duration, event=delta, black=race==2, other=race==3, poverty, smoke, alcohol, agemth, yschool, pc3mth)))
k <- from("larynx", "KMsurv"); put("larynx", with(k, data.frame(time, event=delta, stage2=stage==2, stage3=stage==3, stage4=stage==4, age, diagyr)))
k <- from("burn", "KMsurv"); put("burn", with(k, data.frame(time=T3, event=D3, bathing=Z1, male=Z2==0, percent=Z4, respiratory=Z9)))
k <- from("bmt", "KMsurv"); put("bmt", with(k, data.frame(time=t2, event=d3, low=group==2, high=group==3, z1=z1-28, z2=z2-28, fab=z8, hospital=z9)))
k <- from("channing", "KMsurv"); put("channing", subset(with(k, data.frame(start=ageentry, time=age, event=death, female=gender==2)), start < time))
k <- from("kidtran", "KMsurv"); put("kidtran", with(k, data.frame(time, event=delta, female=gender==2, black=race==2, age)))
k <- from("std", "KMsurv"); put("std", with(k, data.frame(time, event=rinfct, black=race=="B", age, yschool, gonorrhoea=iinfct==1, chlamydia=iinfct==2, npartner, oral=os12m)))
k <- from("pneumon", "KMsurv"); put("pneumon", with(k, data.frame(time=chldage, event=hospital, mthage, urban, alcohol, smoke, poverty, nsibs))[1:2000,])
k <- from("hodg", "KMsurv"); put("hodgkin", with(k, data.frame(time, event=delta, allo=gtype==1, hodgkin=dtype==2, score, wtime)))

cases <- data.frame()
sample40 <- function(n) if (n <= 40) seq_len(n) else unique(round(seq(1, n, length.out=40)))
fitCase <- function(name, dataset, x, ties="efron", strata="", cluster="", weight="", offset="", terms="") {
  d <- data[[dataset]]; p <- length(x)
  if (weight == "count") d$count <- 1 + (seq_len(nrow(d)) %% 3)
  if (weight == "share") d$share <- 0.5 + (seq_len(nrow(d)) %% 7) / 4
  if (offset == "drift") d$drift <- ((seq_len(nrow(d)) * 37) %% 100) / 50 - 1
  late <- "start" %in% names(d); d <<- d
  rhs <- if (terms == "") paste(x, collapse=" + ") else terms
  if (strata != "") rhs <- paste0(rhs, " + strata(", strata, ")")
  if (offset != "") rhs <- paste0(rhs, " + offset(", offset, ")")
  f <- as.formula(paste0("Surv(", if (late) "start, " else "", "time, event) ~ ", rhs))
  control <- coxph.control(eps=1e-14, iter.max=60, toler.chol=1e-15, toler.inf=1e-3)
  arguments <- list(formula=f, data=quote(d), ties=ties, control=control, x=TRUE)
  if (weight != "") arguments$weights <- as.name(weight)
  if (cluster != "") arguments$cluster <- as.name(cluster)
  m <- do.call(coxph, arguments)
  cases <<- rbind(cases, data.frame(case=name, data=dataset, ties=ties, columns=paste(x, collapse=";"), terms=gsub(", ", ";", terms),
    strata=strata, cluster=cluster, weight=weight, offset=offset))
  out <- list(); add <- function(item, i, j, value) out[[length(out)+1]] <<- data.frame(item=item, row=i, column=j, value=as.numeric(value))
  matrixItem <- function(item, value, rows=sample40(nrow(value))) for (j in seq_len(ncol(value))) add(item, rows-1, j-1, value[rows, j])
  add("coefficient", seq_len(p)-1, 0, coef(m))
  naive <- if (is.null(m$naive.var)) m$var else m$naive.var
  matrixItem("covariance", naive, seq_len(p)); if (!is.null(m$naive.var)) { matrixItem("robustCovariance", m$var, seq_len(p)); # m$rscore leaves the offset out
    zero <- do.call(coxph, modifyList(arguments, list(init=rep(0, p), control=coxph.control(iter.max=0))))
    u <- as.matrix(residuals(zero, "score", weighted=TRUE)); if (cluster != "") u <- rowsum(u, d[[cluster]])
    if (offset == "") stopifnot(all.equal(m$rscore, drop(colSums(u) %*% solve(crossprod(u), colSums(u))), tolerance=1e-9))
    add("robustScore", 0, 0, colSums(u) %*% solve(crossprod(u), colSums(u))) }
  add("logLikelihoodNull", 0, 0, m$loglik[1]); add("logLikelihood", 0, 0, m$loglik[2])
  add("score", 0, 0, m$score); add("wald", 0, 0, m$wald.test)
  if (weight == "") { add("aic", 0, 0, AIC(m)); add("bic", 0, 0, BIC(m)) }
  if (ties != "exact") {
    rows <- sample40(nrow(d))
    for (w in c(FALSE, TRUE)) if (!w || weight != "") { tag <- if (w) "Weighted" else ""
      add(paste0("martingale", tag), rows-1, 0, residuals(m, "martingale", weighted=w)[rows])
      matrixItem(paste0("score", tag, "Residual"), as.matrix(residuals(m, "score", weighted=w)), rows)
      matrixItem(paste0("dfbeta", tag), as.matrix(residuals(m, "dfbeta", weighted=w)), rows)
      matrixItem(paste0("dfbetas", tag), as.matrix(residuals(m, "dfbetas", weighted=w)), rows)
      if (cluster != "") { id <- d[[cluster]]
        add(paste0("martingaleCluster", tag), sample40(length(unique(id)))-1, 0, residuals(m, "martingale", collapse=id, weighted=w)[sample40(length(unique(id)))])
        if (!w) { # residuals(m, "deviance", collapse) takes the logarithm of single rows
          M <- rowsum(residuals(m, "martingale"), id)[, 1]; e <- rowsum(d$event, id)[, 1]
          add("devianceCluster", sample40(length(M))-1, 0, (sign(M) * sqrt(-2 * (M + ifelse(e == 0, 0, e * log(pmax((e - M) / e, 1e-300))))))[sample40(length(M))]) }
        matrixItem(paste0("dfbetaCluster", tag), as.matrix(residuals(m, "dfbeta", collapse=id, weighted=w))) }
    }
    add("deviance", rows-1, 0, residuals(m, "deviance")[rows])
    # weighted=TRUE takes the weights in the order of the rows, not of the events
    s <- as.matrix(residuals(m, "schoenfeld")); q <- as.matrix(residuals(m, "scaledsch"))
    matrixItem("schoenfeld", s); matrixItem("scaledSchoenfeld", q)
    if (strata == "") add("schoenfeldTime", sample40(nrow(s))-1, 0, as.numeric(rownames(s))[sample40(nrow(s))])
    for (transform in c("km", "rank", "identity", "log")) {
      z <- cox.zph(m, transform=transform)
      tag <- paste0("proportionality_", transform)
      add(tag, seq_len(nrow(z$table))-1, 0, z$table[, "chisq"]); add(paste0(tag, "_df"), seq_len(nrow(z$table))-1, 0, z$table[, "df"])
      add(paste0(tag, "_g"), sample40(length(z$x))-1, 0, z$x[sample40(length(z$x))])
      # z$y has tied events of (entry, exit] rows in an order of its own, and NA within small strata
      if (terms == "" && !late && name != "retinopathy_pairs") matrixItem(paste0(tag, "_y"), as.matrix(z$y)) }
    for (centre in 1:2) { new <- as.data.frame(lapply(d[x], function(c) if (centre == 1) 0 else as.numeric(quantile(c, 0.6, names=FALSE)))); if (offset != "") new[[offset]] <- 0
      if (strata == "") { s <- survfit(m, newdata=new); k <- sample40(length(s$time)); add(paste0("hazardTime", centre), k-1, 0, s$time[k]); add(paste0("hazard", centre), k-1, 0, s$cumhaz[k]); add(paste0("hazardError", centre), k-1, 0, s$std.err[k])
      } else { u <- sort(unique(d[[strata]])); u <- u[unique(round(seq(1, length(u), length.out=min(3, length(u)))))]
        for (one in u) { new[[strata]] <- one; s <- survfit(m, newdata=new); k <- sample40(length(s$time))
          add(paste0("hazardTime", centre), k-1, one, s$time[k]); add(paste0("hazard", centre), k-1, one, s$cumhaz[k]); add(paste0("hazardError", centre), k-1, one, s$std.err[k]) } } }
    cc <- concordance(m); add("concordance", 0, 0, cc$concordance); add("concordanceVariance", 0, 0, cc$var)
    counts <- if (is.matrix(cc$count)) colSums(cc$count) else cc$count
    add("concordanceCount", 0:4, 0, counts)
  }
  if (ties == "exact" && !late && strata == "") { cc <- concordance(m); add("concordance", 0, 0, cc$concordance); add("concordanceVariance", 0, 0, cc$var) }
  out <- do.call(rbind, out); out$value <- number(out$value); write.csv(out, sprintf("fits/%s.csv", name), row.names=FALSE, quote=FALSE)
}

fitCase("lung_efron", "lung", c("age","male","ecog")); fitCase("lung_breslow", "lung", c("age","male","ecog"), "breslow"); fitCase("lung_exact", "lung", c("age","male","ecog"), "exact")
fitCase("lung_inst", "lung", c("age","male","karno"), strata="inst")
fitCase("lung_count", "lung", c("age","male","ecog"), weight="count"); fitCase("lung_share", "lung", c("age","male","ecog"), "breslow", weight="share", offset="drift")
fitCase("veteran_terms", "veteran", c("test","karno","small","adeno","large","prior"), terms="test + karno + cbind(small, adeno, large) + prior")
fitCase("veteran_cell", "veteran", c("test","karno","age"), strata="cell"); fitCase("veteran_cell_breslow", "veteran", c("test","karno","age"), "breslow", strata="cell")
fitCase("ovarian", "ovarian", c("age","residual","rx","ecog"))
fitCase("colon_efron", "colon", c("lev","fu","sex","age","obstruct","nodes"), strata="etype", cluster="id"); fitCase("colon_breslow", "colon", c("lev","fu","sex","age","obstruct","nodes"), "breslow", strata="etype", cluster="id")
fitCase("heart_efron", "heart", c("age","year","surgery","transplant")); fitCase("heart_breslow", "heart", c("age","year","surgery","transplant"), "breslow"); fitCase("heart_offset", "heart", c("age","transplant"), offset="drift")
fitCase("heart_share", "heart", c("age","transplant"), weight="share", cluster="id")
fitCase("bladder_efron", "bladder", c("thiotepa","number","size"), strata="enum", cluster="id"); fitCase("bladder_breslow", "bladder", c("thiotepa","number","size"), "breslow", cluster="id")
fitCase("cgd_efron", "cgd", c("gamma","male","age","autosomal","steroids"), cluster="id"); fitCase("cgd_center", "cgd", c("gamma","age"), strata="center")
fitCase("pbc_efron", "pbc", c("trt","age","female","edema","bili","albumin","protime","stage")); fitCase("pbc_breslow", "pbc", c("trt","age","female","edema","bili","albumin","protime","stage"), "breslow")
fitCase("retinopathy_pairs", "retinopathy", c("treated","risk"), strata="id"); fitCase("retinopathy_cluster", "retinopathy", c("adult","treated","risk","age"), cluster="id")
fitCase("rats_efron", "rats", c("rx","female"), cluster="litter"); fitCase("rats_litter", "rats", c("rx"), strata="litter"); fitCase("rats_exact", "rats", c("rx","female"), "exact")
fitCase("gbsg_efron", "gbsg", c("age","meno","size","grade","nodes","pgr","er","hormon")); fitCase("gbsg_breslow", "gbsg", c("age","meno","size","grade","nodes","pgr","er","hormon"), "breslow")
fitCase("nwtco_weights", "nwtco", c("unfavourable","stage2","stage3","stage4","age"), weight="weight", cluster="seqno"); fitCase("nwtco_weights_breslow", "nwtco", c("unfavourable","stage2","stage3","stage4","age"), "breslow", weight="weight", cluster="seqno")
fitCase("rhdnase", "rhdnase", c("rx","fev"), cluster="inst")
fitCase("mgus_entry", "mgus", c("male","hgb","creat","mspike")); fitCase("mgus_entry_breslow", "mgus", c("male","hgb","creat","mspike"), "breslow")
fitCase("stanford", "stanford", c("age","t5")); fitCase("myeloma_entry", "myeloma", c("year"))
fitCase("bfeed_efron", "bfeed", c("black","other","poverty","smoke","alcohol","agemth","yschool","pc3mth")); fitCase("bfeed_breslow", "bfeed", c("black","other","poverty","smoke","alcohol","agemth","yschool","pc3mth"), "breslow")
fitCase("bfeed_share", "bfeed", c("poverty","smoke","yschool"), weight="share")
fitCase("larynx", "larynx", c("stage2","stage3","stage4","age")); fitCase("larynx_exact", "larynx", c("stage2","stage3","stage4","age"), "exact")
fitCase("burn", "burn", c("bathing","male","percent","respiratory")); fitCase("burn_exact", "burn", c("bathing","male"), "exact")
fitCase("bmt", "bmt", c("low","high","z1","z2","fab"), strata="hospital")
fitCase("channing_entry", "channing", c("female")); fitCase("channing_entry_breslow", "channing", c("female"), "breslow")
fitCase("kidtran", "kidtran", c("female","black","age")); fitCase("std", "std", c("black","age","yschool","gonorrhoea","chlamydia","npartner","oral"))
fitCase("pneumon_efron", "pneumon", c("mthage","urban","alcohol","smoke","poverty","nsibs")); fitCase("pneumon_exact", "pneumon", c("mthage","smoke"), "exact")
fitCase("hodgkin", "hodgkin", c("allo","hodgkin","score","wtime")); fitCase("hodgkin_exact", "hodgkin", c("allo","hodgkin","score"), "exact")
write.csv(cases, "cases.csv", row.names=FALSE, quote=FALSE)
