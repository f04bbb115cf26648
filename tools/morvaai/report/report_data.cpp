#include "report/report_data.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

#include <fmt/format.h>

#include "report/corpus_map.h"
#include "report/report_page.h"

namespace tool {

namespace {

using Json = nlohmann::ordered_json;
using Class = ClassesReport::Class;

// Of each file its class, or none.
std::vector<int> classes_of_files(ClassesReport const& report) {
  std::vector<int> class_of(report.files.size(), -1);
  for (std::size_t i = 0; i < report.classes.size(); ++i) {
    for (int const member : report.classes[i].members) {
      class_of[static_cast<std::size_t>(member)] = static_cast<int>(i);
    }
  }
  return class_of;
}

Json heaviest_words(Class const& one, std::vector<HString> const& words) {
  std::vector<std::size_t> order(one.center.indices.size());
  std::iota(order.begin(), order.end(), 0U);
  std::size_t const shown = std::min(order.size(), report_limits::words_of_class);
  std::partial_sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(shown), order.end(),
                    [&](std::size_t a, std::size_t b) {
                      double const x = one.center.values[a];
                      double const y = one.center.values[b];
                      return x > y || (x == y && a < b);
                    });
  Json list = Json::array();
  for (std::size_t i = 0; i < shown; ++i) {
    std::size_t const word = one.center.indices[order[i]];
    if (word < words.size()) {
      list.push_back({report_text(words[word]), report_number(one.center.values[order[i]])});
    }
  }
  return list;
}

Json place_json(CorpusMap::Place const& place) {
  return {report_number(place[0]), report_number(place[1])};
}

Json class_json(Class const& one, std::vector<HString> const& words, CorpusMap const& map) {
  Json object = {{"name", report_text(one.name)}, {"id", report_text(one.id)}};
  if (one.size) {
    object["size"] = *one.size;
  }
  if (one.radius) {
    object["radius"] = report_number(*one.radius);
  }
  if (one.eps) {
    object["eps"] = report_number(*one.eps);
  }
  if (one.minpts) {
    object["minpts"] = *one.minpts;
  }
  object["center"] = place_json(map.place_of(one.center));
  object["word_count"] = one.center.indices.size();
  object["words"] = heaviest_words(one, words);
  return object;
}

// The first of the files that there is room for; each with its class, the distance from the center
// of that, and for those that are on the map its place there.
Json files_json(ClassesReport const& report, CorpusMap const& map) {
  std::vector<int> const class_of = classes_of_files(report);
  std::size_t const shown = std::min(report.files.size(), report_limits::files);
  std::size_t const step = shown / report_limits::points_on_map + 1;
  std::size_t bytes = 0;
  Json list = Json::array();
  for (std::size_t i = 0; i < shown && bytes < report_limits::bytes_of_files; ++i) {
    ClassesReport::File const& file = report.files[i];
    Json one = {report_text(file.name), class_of[i], nullptr};
    if (class_of[i] >= 0) {
      Class const& its = report.classes[static_cast<std::size_t>(class_of[i])];
      one[2] = report_number(distance_of(file.row, its.center));
    }
    if (i % step == 0) {
      CorpusMap::Place const place = map.place_of(file.row);
      one.push_back(report_number(place[0]));
      one.push_back(report_number(place[1]));
    }
    bytes += report_bytes(one);
    list.push_back(std::move(one));
  }
  return list;
}

// Below the diagonal: of each class the distances to those before it.
Json distances_json(std::vector<Class> const& classes) {
  std::size_t const shown = std::min(classes.size(), report_limits::classes_of_distances);
  Json rows = Json::array();
  for (std::size_t i = 0; i < shown; ++i) {
    Json row = Json::array();
    for (std::size_t j = 0; j < i; ++j) {
      row.push_back(report_number(distance_of(classes[i].center, classes[j].center)));
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

// Some of many values, evenly spaced, the last one among them.
Json curve_json(ClassesReport::Curve const& curve) {
  std::size_t const count = curve.distances.size();
  std::size_t const shown = std::min(count, report_limits::values_of_curve);
  Json values = Json::array();
  for (std::size_t i = 0; i < shown; ++i) {
    std::size_t const at = shown < 2 ? 0 : i * (count - 1) / (shown - 1);
    values.push_back({at + 1, report_number(curve.distances[at])});
  }
  return {{"eps", report_number(curve.eps)},
          {"minpts", curve.minpts},
          {"count", count},
          {"values", std::move(values)}};
}

CorpusMap map_of(ClassesReport const& report) {
  std::vector<ReportRow> rows;
  for (ClassesReport::File const& file : report.files) {
    rows.push_back(file.row);
  }
  if (rows.empty()) {
    for (Class const& one : report.classes) {
      rows.push_back(one.center);
    }
  }
  return CorpusMap(rows, report.words.size());
}

Json failures_json(std::vector<Corpus::Failure> const& failed) {
  Json list = Json::array();
  std::size_t const shown = std::min(failed.size(), report_limits::failures);
  std::size_t bytes = 0;
  for (std::size_t i = 0; i < shown && bytes < report_limits::bytes_of_failures; ++i) {
    list.push_back({report_text(failed[i].file), report_text(failed[i].reason)});
    bytes += report_bytes(list.back());
  }
  return list;
}

}  // namespace

std::string report_text(std::string const& text) {
  return report_text(HString(morvabs::from_utf8(text).c_str()));
}

std::string report_text(HString const& text) {
  std::wstring const wide = text.get_ws();
  if (wide.size() <= report_limits::characters) {
    return morvabs::to_utf8(wide);
  }
  return morvabs::to_utf8(wide.substr(0, report_limits::characters)) + "\xE2\x80\xA6";
}

nlohmann::ordered_json report_number(double number) {
  if (!std::isfinite(number)) {
    return nullptr;
  }
  return std::strtod(fmt::format("{:.6g}", number).c_str(), nullptr);
}

std::size_t report_bytes(nlohmann::ordered_json const& listed) {
  return script_text(listed).size() + 1;
}

nlohmann::ordered_json ClassesReport::as_json() const {
  CorpusMap const map = map_of(*this);
  Json object = {{"schema", 1}, {"kind", kind}};
  object["box"] = {{"id", report_text(box.id)}, {"file", report_text(box.file)}};
  object["method"] = method;
  object["parameters"] = Json::array();
  for (auto const& [name, parameter] : parameters) {
    object["parameters"].push_back(
        {name, std::visit([](auto const& value) { return Json(value); }, parameter)});
  }
  std::vector<int> const class_of = classes_of_files(*this);
  object["counts"] = {{"files", files.size()},
                      {"classes", classes.size()},
                      {"words", words.size()},
                      {"unclassified", std::count(class_of.begin(), class_of.end(), -1)},
                      {"failed", failed.size()}};
  object["classes"] = Json::array();
  std::size_t bytes = 0;
  for (Class const& one : classes) {
    if (object["classes"].size() == report_limits::classes ||
        bytes >= report_limits::bytes_of_classes) {
      break;
    }
    object["classes"].push_back(class_json(one, words, map));
    bytes += report_bytes(object["classes"].back());
  }
  object["files"] = files_json(*this, map);
  object["map"] = {{"shares", place_json(map.shares())}};
  object["distances"] = distances_json(classes);
  if (curve) {
    object["curve"] = curve_json(*curve);
  }
  object["failed"] = failures_json(failed);
  return object;
}

}  // namespace tool
