// Fits of survmeth cox for tests of what follows from them, as perform() of the command line makes
// them but for files.
#ifndef TESTS_ANALYSIS_COX_FITS_H_
#define TESTS_ANALYSIS_COX_FITS_H_

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "analysis/all.h"
#include "analysis/cox/saved.h"
#include "analysis/savedFit.h"
#include "frame/reader.h"

namespace survmeth::analysis {

using Options = std::vector<std::pair<std::string, Setting>>;

struct Made {
  Fitted fitted;
  std::shared_ptr<const CoxSaved> lasting;
  std::string text;
};

inline frame::Frame dataOf(const Declaration& declaration, const void* request,
                           const std::string& file) {
  return frame::readFrame(file, [&](const std::vector<std::string>& header) {
    return wantedColumns(declaration, request, header);
  });
}

inline Made fitted(const std::string& data, const Options& options) {
  static const Declaration kCox = coxDeclaration();
  const auto request = kCox.request();
  for (const auto& [name, setting] : options) kCox.find(name)->set(request.get(), setting);
  const frame::Frame frame = dataOf(kCox, request.get(), SURVMETH_DATA "/" + data);
  numerics::Progress progress;
  Made made;
  made.fitted = analyse(kCox, frame, request.get(), progress);
  made.lasting = std::static_pointer_cast<const CoxSaved>(
      kCox.lasting->of(frame, made.fitted.result.get(), request.get(), progress));
  made.text = savedFit(kCox, made.fitted.report, made.lasting.get(), "test");
  return made;
}

inline std::string reference(const std::string& file) {
  return std::string(SURVMETH_REFERENCE) + "/predict/" + file;
}

inline Made lung() {
  return fitted("lung.csv", {{"formula", std::string("Surv(time, status) ~ age + sex + ph.ecog")}});
}
inline Made veteran() {
  return fitted("veteran.csv", {{"formula", std::string("Surv(time, status) ~ karno * trt + "
                                                        "ns(age, 3) + strata(celltype)")},
                                {"ties", std::string("breslow")}});
}

inline bool sameBits(const std::vector<double>& a, const std::vector<double>& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::bit_cast<std::uint64_t>(a[i]) != std::bit_cast<std::uint64_t>(b[i])) return false;
  }
  return true;
}

}  // namespace survmeth::analysis

#endif  // TESTS_ANALYSIS_COX_FITS_H_
