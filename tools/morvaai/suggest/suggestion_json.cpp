#include <cmath>

#include <nlohmann/json.hpp>

#include "suggest/suggestion.h"
#include "terminal/output.h"

namespace tool {

namespace {

using Json = nlohmann::ordered_json;

Json json_of(Neighbourhood const& neighbourhood) {
  return {{"eps", neighbourhood.eps}, {"minpts", neighbourhood.minpts}};
}

Json json_of(HeldOut const& outcome) {
  return {{"decided", outcome.decided()},     {"right", outcome.right},
          {"wrong", outcome.wrong},           {"refused", outcome.refused},
          {"strangers", outcome.strangers},   {"strangers_taken", outcome.accepted},
          {"precision", outcome.precision()}, {"recall", outcome.recall()},
          {"f", outcome.f_measure()}};
}

Json json_of(std::optional<std::size_t> position) {
  return position ? Json(*position) : Json(nullptr);
}

Json json_of(Sweep const& sweep, bool by_k) {
  Json trials = Json::array();
  for (Trial const& trial : sweep.trials) {
    Json one = by_k ? Json{{"k", trial.k}} : json_of(trial.neighbourhood);
    one["class_count"] = trial.classes.size();
    one["largest_class"] = trial.largest_class;
    one["unclassified"] = trial.unclassified;
    one["silhouette"] = trial.silhouette;
    trials.push_back(std::move(one));
  }
  return {{"trials", std::move(trials)},
          {"best", json_of(sweep.best)},
          {"second", json_of(sweep.second)}};
}

Json folders_of(Suggestion const& suggestion) {
  Json folders = Json::array();
  for (auto const& [name, file_count] : suggestion.folders) {
    folders.push_back({{"name", utf8(name)}, {"file_count", file_count}});
  }
  return folders;
}

Json estimates_of(Suggestion const& suggestion) {
  Json estimates = Json::array();
  for (auto const& [neighbourhood, outcome] : suggestion.estimates) {
    Json one = json_of(neighbourhood);
    one.update(json_of(outcome));
    estimates.push_back(std::move(one));
  }
  return estimates;
}

Json boxes_of(Suggestion const& suggestion) {
  Json boxes = Json::array();
  for (auto const& [neighbourhood, outcome] : suggestion.tried) {
    Json one = {{"method", neighbourhood ? "dbscan" : "kmeans"}};
    if (neighbourhood) {
      one.update(json_of(*neighbourhood));
    }
    one.update(json_of(outcome));
    boxes.push_back(std::move(one));
  }
  return boxes;
}

}  // namespace

std::string Suggestion::as_json() const {
  Json object;
  object["file_count"] = looked_at;
  object["found_count"] = found;
  object["word_count"] = word_count;
  object["failed"] = tool::json_of(failed);
  object["distances"] = {{"nearest", nearest}, {"fourth", fourth}};
  object["auto_eps"] = estimated_eps > 0.0 ? Json(estimated_eps) : Json(nullptr);
  if (is_by_folder) {
    object["folders"] = folders_of(*this);
    object["estimates"] = estimates_of(*this);
  } else {
    object["kmeans"] = json_of(k, true);
    object["dbscan"] = json_of(neighbourhoods, false);
  }
  object["proposed"] = proposed ? json_of(*proposed) : Json(nullptr);
  object["boxes"] = boxes_of(*this);
  object["best"] = json_of(best);
  object["command"] = best ? Json(command()) : Json(nullptr);
  // A reason may quote the bytes of a document.
  return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace tool
