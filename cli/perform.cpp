#include "cli/perform.h"

#include <cstdint>

#include "analysis/savedFit.h"
#include "cli/shell/problem.h"
#include "cli/shell/progress.h"
#include "cli/version.h"
#include "frame/expression.h"
#include "frame/reader.h"

namespace cli {
namespace {

namespace analysis = survmeth::analysis;
namespace engine = survmeth::engine;
namespace frame = survmeth::frame;

frame::Frame read(const Job& job) {
  Progress progress("reading " + (job.file == "-" ? "standard input" : job.file));
  return frame::readFrame(
      job.file,
      [&](const std::vector<std::string>& header) {
        return analysis::wantedColumns(job.declaration, job.request, header);
      },
      job.reading.frame(),
      [&](std::uint64_t done, std::uint64_t total) { progress.at(done, total); });
}

// The work after reading, on the same progress line.
class Working : public survmeth::numerics::Progress {
 public:
  explicit Working(const std::string& what) : line_(what) {}

 private:
  void show(double done) override { line_.at(static_cast<std::uint64_t>(done * kParts), kParts); }

  static constexpr std::uint64_t kParts = 10000;
  cli::Progress line_;
};

// A refusal with its place: file, line, column.
Problem placed(const Job& job, const frame::Frame& data, const engine::Refusal& refusal) {
  const analysis::Place place = analysis::placeOf(job.declaration, job.request, refusal);
  const std::size_t line =
      refusal.row() == engine::Refusal::kNone ? 0 : data.lines.line(refusal.row());
  return problemAt({data.source, line, place.column}, refusal.what(), refusal.expected());
}

}  // namespace

analysis::Fitted perform(const Job& job) {
  frame::Frame data;
  try {
    data = read(job);
  } catch (const frame::ExpressionError& wrong) {
    throw analysis::BadOption("where", analysis::withPlace(wrong));
  }
  Working progress(job.declaration.name + " of " + data.source);
  try {
    analysis::Fitted fitted =
        analysis::analyse(job.declaration, data, job.request, progress, job.parts);
    if (job.name != job.file) fitted.report.data.name = job.name;
    analysis::echo(job.reading, fitted.report);
    if (job.saved != nullptr) {
      const auto lasting = job.declaration.lasting->of(data, fitted.result.get(), job.request);
      *job.saved = analysis::savedFit(job.declaration, fitted.report, lasting.get(), kVersion);
    }
    return fitted;
  } catch (const engine::Refusal& refusal) {
    throw placed(job, data, refusal);
  }
}

}  // namespace cli
