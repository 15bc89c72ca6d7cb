// How figures become files: the options of their looks, and the drawing.
#ifndef CLI_FIGURES_H_
#define CLI_FIGURES_H_

#include <functional>
#include <string>
#include <vector>

#include "analysis/option.h"
#include "cli/shell/session.h"
#include "pictures/pictures.h"

namespace cli {

// What a person asks of the figures.
struct Looks {
  std::string plot;    // the file; empty: none
  std::string figure;  // which of several; empty: the first
  survmeth::pictures::Style style;
};

// Adds --plot and the options of the looks; --figure where there are several `figures`.
void addLooks(CLI::App& app, const std::vector<std::string>& figures, Looks& looks);

// An option that all analyses share, read and refused as theirs are.
void addShared(CLI::App& app, const survmeth::analysis::Option& option,
               std::function<void(const survmeth::analysis::Setting&)> take);

// Lays the figure out and leaves the drawing to the session's output. A note for what it
// could not show. Throws a Problem for looks that cannot be had.
void plot(const Looks& looks, const survmeth::report::Report& report, Session& session);

// The figures of a page, as SVG. One that cannot be drawn is left out and said once at the end.
std::function<std::string(const survmeth::report::Figure&)> pageFigures(const Looks& looks,
                                                                        Session& session);

}  // namespace cli

#endif  // CLI_FIGURES_H_
