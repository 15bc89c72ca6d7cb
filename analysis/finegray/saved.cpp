// From an answer to what lasts of it, and its JSON.
#include <utility>

#include "analysis/finegray/predict.h"
#include "analysis/option.h"
#include "analysis/savedFit.h"
#include "engine/finegray/hazards.h"

namespace survmeth::analysis {

FineGraySaved fineGraySaved(const frame::Frame& data, const FineGrayAnswer& answer,
                            const FineGrayRequest&) {
  if (answer.types.empty()) {
    throw BadOption("save", "there is no fit, for no row is an event");
  }
  FineGraySaved saved;
  saved.status = answer.status;
  for (const FineGrayOfType& type : answer.types) {
    saved.events.push_back(type.label);
    CoxSaved& fit = saved.fits.emplace_back(savedCoding(data, answer.coding));
    fit.names = answer.names;
    fit.mean = answer.means;
    fit.coefficients = type.fit.coefficients;
    fit.covariance = type.fit.covariance;
    fit.strata = answer.strata;
    fit.stratumMean = stratumMeans(type.fit.problem->rows, fit.strata.size());
    numerics::Progress progress;
    fit.hazard = engine::finegray::hazardSums(type.fit, progress);
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
