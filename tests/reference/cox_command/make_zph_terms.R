# The scaled Schoenfeld residuals of whole terms, as survival's cox.zph has them: zph_terms.csv. Run in
# this folder: Rscript make_zph_terms.R
suppressMessages({library(survival); library(splines)})
d <- read.csv("../../../data/veteran.csv", stringsAsFactors = TRUE)
fit <- coxph(Surv(time, status) ~ karno + celltype + ns(age, 3), d,
             control = coxph.control(eps = 1e-14, iter.max = 50, toler.chol = 1e-15))
z <- cox.zph(fit, transform = "identity", terms = TRUE)
write.csv(data.frame(time = sprintf("%.17g", z$x), matrix(sprintf("%.17g", z$y), ncol = 3,
                     dimnames = list(NULL, c("karno", "celltype", "age")))),
          "zph_terms.csv", row.names = FALSE, quote = FALSE)
write.csv(data.frame(term = c("karno", "celltype", "age"), variance = sprintf("%.17g", diag(z$var))),
          "zph_variances.csv", row.names = FALSE, quote = FALSE)
