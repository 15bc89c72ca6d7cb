#include "cli/perform.h"

#include <cstdint>

#include "analysis/lastingProgress.h"
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

// What is asked of a file.
struct Asked {
  const analysis::Declaration& declaration;
  const void* request;
  std::string file;
};

frame::Frame read(const Asked& asked, const frame::Reading& reading) {
  Progress progress("reading " + (asked.file == "-" ? "standard input" : asked.file));
  return frame::readFrame(
      asked.file,
      [&](const std::vector<std::string>& header) {
        return analysis::wantedColumns(asked.declaration, asked.request, header);
      },
      reading, [&](std::uint64_t done, std::uint64_t total) { progress.at(done, total); });
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
Problem placed(const Asked& asked, const frame::Frame& data, const engine::Refusal& refusal) {
  const analysis::Place place = analysis::placeOf(asked.declaration, asked.request, refusal);
  const std::size_t line =
      refusal.row() == engine::Refusal::kNone ? 0 : data.lines.line(refusal.row());
  return problemAt({data.source, line, place.column}, refusal.what(), refusal.expected());
}

// The reader of other data: as the first, of which a condition is.
analysis::WithData otherData(const Job& job) {
  return [&job](const std::string& name, const analysis::Declaration& declaration,
                const void* request, const std::function<void(const frame::Frame&)>& use) {
    const Asked asked{declaration, request, job.fileOf ? job.fileOf(name) : name};
    frame::Reading reading = job.reading.frame();
    reading.where.clear();
    const frame::Frame data = read(asked, reading);
    try {
      use(data);
    } catch (const engine::Refusal& refusal) {
      throw placed(asked, data, refusal);
    }
  };
}

}  // namespace

analysis::Fitted perform(const Job& job) {
  const Asked asked{job.declaration, job.request, job.file};
  frame::Frame data;
  try {
    data = read(asked, job.reading.frame());
  } catch (const frame::ExpressionError& wrong) {
    throw analysis::BadOption("where", analysis::withPlace(wrong));
  }
  Working progress(job.declaration.name + " of " + data.source);
  try {
    analysis::LastingProgress parts(progress, job.saved != nullptr);
    analysis::Fitted fitted =
        analysis::analyse(job.declaration, data, job.request, parts.run, job.parts, otherData(job));
    if (job.name != job.file) fitted.report.data.name = job.name;
    analysis::echo(job.reading, fitted.report);
    if (job.saved != nullptr) {
      const auto lasting =
          job.declaration.lasting->of(data, fitted.result.get(), job.request, parts.lasting);
      *job.saved = analysis::savedFit(job.declaration, fitted.report, lasting.get(), kVersion);
    }
    return fitted;
  } catch (const engine::Refusal& refusal) {
    throw placed(asked, data, refusal);
  }
}

}  // namespace cli
