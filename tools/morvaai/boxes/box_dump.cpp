#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "boxes/box_store.h"
#include "boxes/box_text.h"

#include "command_line/commands.h"
#include "exit_status.h"
#include "terminal/columns.h"
#include "terminal/output.h"
#include "terminal/style.h"

namespace tool {

namespace {

/// Writes a box as one JSON object, piece by piece: it may be far larger as text than in its file.
class BoxJson {
 public:
  static bool write(HString const& path, QXPPolicyMorvaClustBox const& box) {
    std::string const head = fmt::format(
        "{{\"file\":{},\"box_value\":{},\"cluster_type\":{},\"words\":{},\"reserved\":{}", of(path),
        box.i_box_value, box.i_cluster_type, of(box.vt_words), of(box.vt_reserved));
    return write_output(head) && write_classes("kmeans_classes", box.vt_kmeans_node) &&
           write_classes("dbscan_classes", box.vt_dbscan_node) && write_output("}\n");
  }

 private:
  template <typename Class>
  static bool write_classes(char const* name, std::vector<Class> const& classes) {
    bool is_written = write_output(fmt::format(",\"{}\":[", name));
    for (Class const& each : classes) {
      is_written = is_written && write_output((&each == classes.data() ? "" : ",") + of(each));
    }
    return is_written && write_output("]");
  }

  static std::string of(std::int32_t number) { return std::to_string(number); }
  /// A number, or for what JSON has no number for its bits as a text.
  static std::string of(double number) {
    return std::isfinite(number)
               ? nlohmann::json(number).dump()
               : fmt::format("\"0x{:016X}\"", std::bit_cast<std::uint64_t>(number));
  }
  /// A text, or where it is no Unicode text the numbers of its characters.
  static std::string of(HString const& text) {
    std::string const plain = utf8(text);
    std::wstring const wide = text.get_ws();
    return morvabs::from_utf8(plain) == wide
               ? nlohmann::json(plain).dump()
               : nlohmann::json(std::vector<std::uint32_t>(wide.begin(), wide.end())).dump();
  }
  template <typename T>
  static std::string of(std::vector<T> const& list) {
    std::string json = "[";
    for (T const& element : list) {
      json += (&element == list.data() ? "" : ",") + of(element);
    }
    return json + "]";
  }
  /// The number of weights, and position and value of those that are not +0.0.
  static std::string of_weights(std::vector<double> const& weights) {
    std::string values;
    for (std::size_t i = 0; i < weights.size(); ++i) {
      if (std::bit_cast<std::uint64_t>(weights[i]) != 0) {
        values += fmt::format("{}[{},{}]", values.empty() ? "" : ",", i, of(weights[i]));
      }
    }
    return fmt::format("{{\"count\":{},\"values\":[{}]}}", weights.size(), values);
  }
  static std::string of(QXPKMeansNode const& node) {
    return fmt::format(
        "{{\"id\":{},\"name\":{},\"radius\":{},\"words\":{},\"weights\":{},\"dna\":{},"
        "\"reserve\":{}}}",
        of(node.str_class_id), of(node.str_class_name), of(node.d_radius), of(node.vt_words),
        of_weights(node.vt_weight), of(node.str_dna), node.i_reserve);
  }
  static std::string of(QXPFeatureNode const& member) {
    return fmt::format("{{\"id\":{},\"weights\":{}}}", of(member.str_file_id),
                       of_weights(member.vt_weight));
  }
  static std::string of(QXPDBScanNode const& node) {
    return fmt::format("{{\"id\":{},\"name\":{},\"eps\":{},\"minpts\":{},\"members\":{}}}",
                       of(node.str_class_id), of(node.str_class_name), of(node.d_eps),
                       node.i_minpts, of(node.vt_file_node));
  }
};

/// How many words have a weight, and the ten heaviest of them; behind so many columns.
std::string summary(std::vector<HString> const& words, std::vector<double> const& weights,
                    std::size_t columns_before = 2) {
  constexpr std::size_t most_shown = 10;
  std::vector<std::pair<double, std::size_t>> used;
  for (std::size_t i = 0; i < weights.size(); ++i) {
    // What is no number has no place in an order.
    if (weights[i] != 0.0 && !std::isnan(weights[i])) {
      used.emplace_back(-weights[i], i);
    }
  }
  std::size_t const shown = std::min(most_shown, used.size());
  std::partial_sort(used.begin(), used.begin() + static_cast<std::ptrdiff_t>(shown), used.end());
  std::vector<std::pair<std::string, double>> heaviest;
  for (std::size_t i = 0; i < shown; ++i) {
    std::size_t const at = used[i].second;
    heaviest.emplace_back(at < words.size() ? printable(words[at]) : fmt::format("#{}", at),
                          weights[at]);
  }
  return weighted_words(fmt::format("{} of {} words:", used.size(), weights.size()), heaviest,
                        columns_before);
}

}  // namespace

std::string box_type_name(int type) {
  switch (type) {
    case 0:
      return "K-means";
    case 1:
      return "DBSCAN";
    default:
      return fmt::format("unknown type {}", type);
  }
}

bool write_box_text(QXPPolicyMorvaClustBox const& box) {
  bool is_written = show(fmt::format(
      "{}, {} words, {} classes, value {}\n", box_type_name(box.i_cluster_type),
      box.vt_words.size(), box.vt_kmeans_node.size() + box.vt_dbscan_node.size(), box.i_box_value));
  for (QXPKMeansNode const& node : box.vt_kmeans_node) {
    is_written =
        is_written &&
        show(fmt::format(
            "\n{} {}\n  radius {:.6g}{}\n  {}", styled(Role::name, printable(node.str_class_name)),
            styled(Role::faint, "(" + printable(node.str_class_id) + ")"), node.d_radius,
            node.str_dna.empty() ? std::string() : ", DNA " + printable(node.str_dna),
            summary(box.vt_words, node.vt_weight)));
  }
  for (QXPDBScanNode const& node : box.vt_dbscan_node) {
    std::string text = fmt::format("\n{} {}\n  eps {:.6g}, minpts {}, {} members\n",
                                   styled(Role::name, printable(node.str_class_name)),
                                   styled(Role::faint, "(" + printable(node.str_class_id) + ")"),
                                   node.d_eps, node.i_minpts, node.vt_file_node.size());
    for (QXPFeatureNode const& member : node.vt_file_node) {
      std::string const begin = "  " + printable(member.str_file_id) + ": ";
      text += begin + summary(box.vt_words, member.vt_weight, columns_of(begin));
    }
    is_written = is_written && show(text);
  }
  return is_written;
}

int run_box_dump(BoxDumpOptions const& options) {
  HString const path = morvabs::from_path(options.file);
  QXPPolicyMorvaClustBox box;
  if (auto const problem = BoxStore::read(path, box)) {
    complain(*problem);
    return some_failed;
  }
  bool const is_written = options.json ? BoxJson::write(path, box) : write_box_text(box);
  return is_written ? all_done : some_failed;
}

}  // namespace tool
