# Makes incidence.csv: cumulative incidence of both event types by group, as R's cmprsk has it, at
# every time of the group's rows: the liver trial by treatment, and three of the sets of
# gray_random_data.csv (see make_gray.R), with and without ties, of 2, 3 and 4 groups.
# Run in this folder: Rscript make_incidence.R
suppressMessages(library(cmprsk))
made <- NULL
add <- function(set, time, status, group) {
  found <- cuminc(time, status, group)
  found$Tests <- NULL
  for (name in names(found)) {
    # "1 2": group 1, event 2
    g <- sub(" [0-9]+$", "", name)
    event <- sub("^.* ", "", name)
    times <- sort(unique(time[group == g]))
    incidence <- as.vector(timepoints(found[name], times)$est)
    made <<- rbind(made, data.frame(set = set, group = g, event = event, time = times,
                                    incidence = format(incidence, digits = 17, trim = TRUE)))
  }
}
pbc <- read.csv("../../data/pbc.csv")
pbc <- pbc[!is.na(pbc$trt), ]
add("pbc", pbc$time, pbc$status, pbc$trt)
random <- read.csv("gray_random_data.csv")
for (id in c(1, 14, 35)) {
  one <- random[random$set == id, ]
  add(id, one$time, one$status, one$group)
}
write.csv(made, "incidence.csv", row.names = FALSE, quote = FALSE)
