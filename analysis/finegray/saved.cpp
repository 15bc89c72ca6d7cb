// From an answer to what lasts of it, and its JSON.
#include <utility>

#include "analysis/finegray/predict.h"
#include "analysis/option.h"
#include "analysis/savedFit.h"
#include "numerics/partOfProgress.h"

namespace survmeth::analysis {

FineGraySaved fineGraySaved(const frame::Frame& data, const FineGrayAnswer& answer,
                            const FineGrayRequest&, numerics::Progress& progress) {
  if (answer.types.empty()) {
    throw BadOption("save", "there is no fit, for no row is an event");
  }
  FineGraySaved saved;
  saved.status = answer.status;
  const std::size_t count = answer.types.size();
  for (std::size_t i = 0; i < count; ++i) {
    const FineGrayOfType& type = answer.types[i];
    saved.events.push_back(type.label);
    CoxSaved& fit = saved.fits.emplace_back(savedCoding(data, answer.coding));
    fit.names = answer.names;
    fit.mean = answer.means;
    fit.coefficients = type.fit.coefficients;
    fit.covariance = type.fit.covariance;
    fit.strata = answer.strata;
    fit.stratumMean = stratumMeans(type.fit.problem->rows, fit.strata.size());
    numerics::PartOfProgress part(progress, i, count);
    fit.hazard = type.hazard(part).sums();
  }
  return saved;
}

void writeFineGraySaved(const FineGraySaved& saved, report::JsonWriter& json) {
  json.member("status", saved.status);
  json.member("events", saved.events);
  json.key("fits");
  json.beginArray();
  for (const CoxSaved& fit : saved.fits) {
    json.beginObject();
    writeCoxSaved(fit, json);
    json.endObject();
  }
  json.endArray();
}

FineGraySaved readFineGraySaved(const JsonNode& node) {
  const std::string what = "the model";
  FineGraySaved saved;
  saved.status = node.at("status", what).asText("the status");
  const JsonNode& fits = node.at("fits", what);
  const std::size_t count = fits.asArray("the fits").size();
  saved.events = textsOf(node.at("events", what), "the events", count);
  for (const JsonNode& each : fits.elements) {
    saved.fits.push_back(readCoxSaved(each));
    const CoxSaved& fit = saved.fits.back();
    // All are of the same rows and terms; there is no incidence without a hazard.
    if (!fit.hazard || fit.names != saved.fits.front().names ||
        fit.strata != saved.fits.front().strata) {
      throw JsonError(each.place, "the model contradicts itself");
    }
  }
  if (count == 0) throw JsonError(fits.place, "the model contradicts itself");
  return saved;
}

}  // namespace survmeth::analysis
