#include "suggest/suggestion.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <string_view>

#include <fmt/format.h>

#include "terminal/columns.h"
#include "terminal/output.h"
#include "terminal/style.h"

namespace tool {

namespace {

constexpr double bar_width = 30.0;

double share(std::size_t part, std::size_t whole) {
  return whole == 0 ? 0.0 : static_cast<double>(part) / static_cast<double>(whole);
}

std::string percent(double share) {
  return fmt::format("{:.0f} %", 100.0 * share);
}

std::string counted(std::size_t count, char const* one, char const* several) {
  return fmt::format("{} {}", count, count == 1 ? one : several);
}

// As long as the value is of the largest.
std::string bar(double value, double largest) {
  double const length = largest > 0.0 ? std::clamp(value / largest, 0.0, 1.0) : 0.0;
  return std::string(static_cast<std::size_t>(std::lround(length * bar_width)), '#');
}

std::string heading(std::string const& text) {
  return "\n" + styled(Role::heading, text) + "\n";
}

// As one argument of a shell.
std::string quoted(std::string const& text) {
  auto const is_plain = [](char c) {
    return (c & 0x80) != 0 || std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           std::string_view("_-./").find(c) != std::string_view::npos;
  };
  if (!text.empty() && std::all_of(text.begin(), text.end(), is_plain)) {
    return text;
  }
  std::string result = "'";
  for (char const c : text) {
    result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return result + "'";
}

Table::Cell mark_of(Sweep const& sweep, std::size_t at) {
  return {at == sweep.best ? "<- proposed" : at == sweep.second ? "<- clearest" : "", Role::good};
}

double greatest_silhouette(Sweep const& sweep) {
  return sweep.trials[sweep.second.value_or(*sweep.best)].silhouette;
}

// What to do about a class that holds most of the files, where there are classes at all.
std::string large_class_text(Trial const& proposed) {
  if (proposed.largest_class <= 0.5 ||
      structure_of(proposed.silhouette) == std::string_view("none")) {
    return {};
  }
  return fmt::format(
      "  {} of the files are in one class, which may be several: morvaai cluster -o lists its\n"
      "  files, and morvaai suggest - looks at those of a list\n",
      percent(proposed.largest_class));
}

// What the greatest silhouette of a sweep says.
std::string structure_text(double silhouette) {
  std::string_view const structure = structure_of(silhouette);
  return structure == "none"
             ? fmt::format("  {:.2f} is no structure: these words hardly part the files\n",
                           silhouette)
             : fmt::format("  {:.2f} is a {} structure\n", silhouette, structure);
}

std::string k_text(Sweep const& sweep) {
  std::string text = heading("Number of classes: K-means, -k");
  if (!sweep.best) {
    return text + "  no number of classes parts these files\n";
  }
  Table table({Align::right, Align::right, Align::right, Align::left, Align::left}, 2);
  table.set_titles({"k", "silhouette", "largest class"});
  double const greatest = greatest_silhouette(sweep);
  for (std::size_t i = 0; i < sweep.trials.size(); ++i) {
    Trial const& trial = sweep.trials[i];
    table.add({fmt::format("{}", trial.k), fmt::format("{:.3f}", trial.silhouette),
               percent(trial.largest_class), bar(trial.silhouette, greatest), mark_of(sweep, i)});
  }
  return text + table.text() + structure_text(greatest) +
         large_class_text(sweep.trials[*sweep.best]);
}

std::string distances_text(Suggestion const& suggestion) {
  constexpr std::array shares = {0, 5, 10, 25, 50, 75, 90, 95, 100};
  auto const at = [](std::vector<double> const& ascending, int percentage) {
    return ascending[(ascending.size() - 1) * static_cast<std::size_t>(percentage) / 100];
  };
  std::string text = heading("Distances: how far files are from the nearest others");
  Table table({Align::right, Align::right, Align::right, Align::left}, 2);
  table.set_titles({"of files", "nearest", "4th nearest"});
  auto const& nearest = suggestion.nearest;
  auto const& fourth = suggestion.fourth;
  for (int const percentage : shares) {
    double const distance = at(nearest, percentage);
    table.add({fmt::format("{} %", percentage), fmt::format("{:.2f}", distance),
               fourth.empty() ? std::string("-") : fmt::format("{:.2f}", at(fourth, percentage)),
               bar(distance, nearest.back())});
  }
  text += table.text();
  if (suggestion.estimated_eps > 0.0) {
    text += fmt::format("  --eps auto is {:.2f} with --minpts {}\n", suggestion.estimated_eps,
                        default_minpts);
  }
  return text;
}

// A row for each radius.
std::string neighbourhoods_text(Sweep const& sweep) {
  std::string text = heading("Neighbourhood: DBSCAN, --eps and --minpts");
  if (!sweep.best) {
    return text + "  no radius gives classes that are apart from each other\n";
  }
  text += "  for each minpts: classes, files in none, silhouette\n";
  std::vector<std::string> titles = {"eps"};
  std::vector<std::vector<Table::Cell>> rows;
  for (std::size_t i = 0; i < sweep.trials.size(); ++i) {
    auto const& [eps, minpts] = sweep.trials[i].neighbourhood;
    if (i == 0 || eps != sweep.trials[i - 1].neighbourhood.eps) {
      rows.push_back({fmt::format("{:.2f}", eps)});
    }
    if (rows.size() == 1) {
      titles.push_back(fmt::format("minpts {}", minpts));
    }
    Trial const& trial = sweep.trials[i];
    bool const is_proposed = i == sweep.best;
    rows.back().emplace_back(
        fmt::format("{}{:3} {:>5} {:6.3f}", is_proposed ? "*" : "", trial.classes.size(),
                    percent(trial.unclassified), trial.silhouette),
        is_proposed ? Role::good : Role::plain);
  }
  Table table(std::vector<Table::Column>(titles.size(), Align::right), 2);
  table.set_titles(titles);
  for (auto& row : rows) {
    table.add(std::move(row));
  }
  return text + table.text() + structure_text(greatest_silhouette(sweep));
}

// A row for each radius, for each count the share of right ones among all that are given a class,
// and of files that are given theirs.
std::string estimates_text(Suggestion const& suggestion) {
  std::string text =
      heading("Neighbourhood: precision / recall of a box of files, --eps and --minpts");
  std::vector<std::string> titles = {"eps"};
  std::vector<std::vector<Table::Cell>> rows;
  for (auto const& [neighbourhood, outcome] : suggestion.estimates) {
    if (rows.empty() || rows.back().front().text != fmt::format("{:.2f}", neighbourhood.eps)) {
      rows.push_back({fmt::format("{:.2f}", neighbourhood.eps)});
    }
    if (rows.size() == 1) {
      titles.push_back(fmt::format("minpts {}", neighbourhood.minpts));
    }
    bool const is_proposed = suggestion.proposed && *suggestion.proposed == neighbourhood;
    bool const is_silent = outcome.right + outcome.wrong + outcome.accepted == 0;
    rows.back().emplace_back(
        fmt::format("{}{} / {:.2f}", is_proposed ? "* " : "",
                    is_silent ? std::string("-") : fmt::format("{:.2f}", outcome.precision()),
                    outcome.recall()),
        is_proposed ? Role::good : Role::plain);
  }
  Table table(std::vector<Table::Column>(titles.size(), Align::right), 2);
  table.set_titles(titles);
  for (auto& row : rows) {
    table.add(std::move(row));
  }
  return text + table.text();
}

std::string method_of(Suggestion::TriedBox const& box) {
  return box.neighbourhood ? fmt::format("dbscan --eps {:.2f} --minpts {}", box.neighbourhood->eps,
                                         box.neighbourhood->minpts)
                           : std::string("kmeans");
}

std::string parameters_of(Suggestion const& suggestion, Suggestion::TriedBox const& box) {
  std::string const method = method_of(box);
  return box.neighbourhood || suggestion.is_by_folder
             ? method
             : fmt::format("{} -k {}", method, suggestion.k.trials[*suggestion.k.best].k);
}

std::string tried_text(Suggestion const& suggestion) {
  std::string not_tried;
  if (suggestion.is_too_large_for_centers) {
    not_tried += "  a box of so many classes would be larger than a box may be: none was tried\n";
  }
  if (suggestion.is_too_large_for_files) {
    not_tried += "  a box of so many files would be larger than a box may be: none was tried\n";
  }
  if (suggestion.tried.empty()) {
    return not_tried.empty() ? not_tried : heading("Boxes") + not_tried;
  }
  std::string text = heading("Boxes, learnt from two thirds of the files and asked about the rest");
  Table table({Align::left, Align::right, Align::right, Align::right, Align::right, Align::right,
               Align::left},
              2);
  table.set_titles({"box", "right", "wrong", "refused", "strangers taken", "F"});
  for (std::size_t i = 0; i < suggestion.tried.size(); ++i) {
    Suggestion::TriedBox const& box = suggestion.tried[i];
    HeldOut const& outcome = box.outcome;
    std::size_t const decided = outcome.decided();
    table.add({parameters_of(suggestion, box),
               percent(share(outcome.right, decided)),
               percent(share(outcome.wrong, decided)),
               percent(share(outcome.refused, decided)),
               outcome.strangers == 0 ? std::string("-")
                                      : percent(share(outcome.accepted, outcome.strangers)),
               fmt::format("{:.2f}", outcome.f_measure()),
               {i == suggestion.best ? "<- best" : "", Role::good}});
  }
  text += table.text() + not_tried;
  text += "  strangers: files of classes that were left out of the box, which it should refuse\n";
  if (!suggestion.is_by_folder) {
    text +=
        "  the classes are those that the method itself found: this is how stable they are, not\n"
        "  how true; folders of known classes and --by-folder tell that. Files that it left in no\n"
        "  class count as refused\n";
  }
  return text;
}

// What K-means with the proposed number of classes finds.
std::string cluster_command(Suggestion const& suggestion, std::string const& files) {
  return suggestion.k.best ? fmt::format("\n  morvaai cluster{} -m kmeans -k {}\n", files,
                                         suggestion.k.trials[*suggestion.k.best].k)
                           : std::string();
}

std::string without_best(Suggestion const& suggestion, std::string const& files) {
  if (!suggestion.is_by_folder) {
    return "These files do not fall into classes of themselves. Sort samples into folders, one "
           "for\neach class, and try --by-folder. To see how far clustering goes:\n" +
           cluster_command(suggestion, files);
  }
  if (suggestion.tried.empty()) {
    return "These classes are too many for a box: learn fewer of them.\n";
  }
  bool const is_decided =
      std::any_of(suggestion.tried.begin(), suggestion.tried.end(),
                  [](Suggestion::TriedBox const& box) { return box.outcome.decided() > 0; });
  return is_decided ? "Neither kind of box tells these classes apart.\n"
                    : "No folder has two files: nothing can be held out to judge boxes by.\n";
}

std::string sentence(Suggestion const& suggestion, Suggestion::TriedBox const& box) {
  HeldOut const& outcome = box.outcome;
  std::string text = fmt::format(
      "A box of {} separates these classes better:\nof files held out {} are right and {} wrong",
      box.neighbourhood ? "files (dbscan)" : "centers (kmeans)", percent(outcome.recall()),
      percent(share(outcome.wrong, outcome.decided())));
  text += outcome.strangers == 0 ? std::string(".\n")
                                 : fmt::format(", and {} of strangers are taken.\n",
                                               percent(share(outcome.accepted, outcome.strangers)));
  if (!box.neighbourhood && 2 * outcome.accepted > outcome.strangers) {
    text +=
        "Put ordinary documents into a folder of their own beside these, and do not ask about\n"
        "that class: next to its center fewer strangers are taken.\n";
  }
  if (!box.neighbourhood && suggestion.is_by_folder) {
    text += fmt::format(
        "To find copies and revisions of these files instead: -m dbscan --eps {} --minpts {}\n",
        for_copies.eps, for_copies.minpts);
  }
  return text;
}

std::string shown_inputs(std::vector<std::string> const& inputs) {
  std::string text;
  for (std::string const& input : inputs) {
    text += " " + quoted(printable(morvabs::from_path(input)));
  }
  return text;
}

}  // namespace

bool Suggestion::has_structure() const {
  auto const is_clear = [](Sweep const& sweep) {
    return sweep.best && structure_of(greatest_silhouette(sweep)) != std::string_view("none");
  };
  return is_clear(k) || is_clear(neighbourhoods);
}

std::string Suggestion::command() const {
  return best ? "morvaai learn" + shown_inputs(inputs) + " --box NAME" +
                    (is_by_folder ? " --by-folder" : "") + " -m " +
                    parameters_of(*this, tried[*best])
              : std::string();
}

std::string Suggestion::as_text() const {
  std::string text = fmt::format("{} with {}", counted(looked_at, "file", "files"),
                                 counted(word_count, "word", "words"));
  if (is_by_folder) {
    text += fmt::format(" in {}", counted(folders.size(), "class", "classes"));
  }
  if (looked_at + failed.size() < found) {
    text += fmt::format(", of {} found: evenly spaced ones, --sample sets how many", found);
  }
  text += "\n" + distances_text(*this);
  text += is_by_folder ? estimates_text(*this) : k_text(k) + neighbourhoods_text(neighbourhoods);
  text += tried_text(*this) + "\n";
  return best ? text + sentence(*this, tried[*best]) + "\n  " + styled(Role::name, command()) + "\n"
              : text + without_best(*this, shown_inputs(inputs));
}

}  // namespace tool
