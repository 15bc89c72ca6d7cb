# Makes methcomp.csv from data/pefr.csv with base R: run from the root of the project.
d <- read.csv("data/pefr.csv")
out <- list()
add <- function(name, value) out[[length(out) + 1]] <<- data.frame(name = name, value = value)

t1 <- t.test(d$mini1 - d$wright1)
add("bias", unname(t1$estimate)); add("bias.lower", t1$conf.int[1]); add("bias.upper", t1$conf.int[2])
add("sd", sd(d$mini1 - d$wright1))

long <- data.frame(value = c(d$wright1, d$wright2), subject = factor(c(d$subject, d$subject)))
ms <- anova(lm(value ~ subject, long))["Residuals", "Mean Sq"]
add("within.sd", sqrt(ms))
add("within.sd.lower", sqrt(17 * ms / qchisq(0.975, 17)))
add("within.sd.upper", sqrt(17 * ms / qchisq(0.025, 17)))

# Orthogonal regression: the first principal component; jackknife over the pairs.
orthogonal <- function(x, y) {
  v <- prcomp(cbind(x, y))$rotation[, 1]
  b <- unname(v[2] / v[1])
  c(mean(y) - b * mean(x), b)
}
fit <- orthogonal(d$wright1, d$mini1)
jack <- sapply(seq_len(nrow(d)), function(j) orthogonal(d$wright1[-j], d$mini1[-j]))
n <- nrow(d)
se <- apply(jack, 1, function(v) sqrt((n - 1) / n * sum((v - mean(v))^2)))
t <- qt(0.975, n - 2)
add("intercept", fit[1]); add("intercept.lower", fit[1] - t * se[1]); add("intercept.upper", fit[1] + t * se[1])
add("slope", fit[2]); add("slope.lower", fit[2] - t * se[2]); add("slope.upper", fit[2] + t * se[2])
add("correlation", cor(d$wright1, d$mini1))

result <- do.call(rbind, out)
result$value <- formatC(result$value, digits = 15, format = "g")
write.csv(result, "tests/reference/methcomp/methcomp.csv", row.names = FALSE, quote = FALSE)
