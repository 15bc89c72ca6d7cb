// A subcommand made from the declaration of an analysis: its options, its help, its run and where
// the results go. Nothing here knows what is analysed.
#ifndef CLI_FACE_H_
#define CLI_FACE_H_

#include "analysis/declaration.h"
#include "cli/shell/session.h"

namespace cli {

// Adds the declaration's options, and those that all analyses share, to `app`; the returned Run
// reads the file, analyses it and collects the output.
Run addAnalysis(CLI::App& app, const survmeth::analysis::Declaration& declaration);

// survmeth predict: the follow-up of a saved fit, with new data.
Run addPredict(CLI::App& app);

}  // namespace cli

#endif  // CLI_FACE_H_
