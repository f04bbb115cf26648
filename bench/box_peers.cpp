#include "box_peers.h"

#include <charconv>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/utf8.h"

namespace box_peers {

namespace {

using Pairs = std::vector<std::pair<std::size_t, double>>;

std::string utf8(HString const& text) {
  return morvabs::to_utf8(text_view(text));
}

HString wide(std::string_view text) {
  std::wstring const characters = morvabs::from_utf8(text);
  return {characters.data(), static_cast<int>(characters.size())};
}

Pairs pairs_of(std::vector<double> const& list) {
  Pairs pairs;
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (list[i] != 0.0) {
      pairs.emplace_back(i, list[i]);
    }
  }
  return pairs;
}

std::vector<double> list_of(Pairs const& pairs, std::size_t size) {
  std::vector<double> list(size);
  for (auto const& [position, weight] : pairs) {
    list[position] = weight;
  }
  return list;
}

std::string content_of(std::string const& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

void write(std::string const& content, std::string const& path) {
  std::ofstream(path, std::ios::binary) << content;
}

class TextWriter {
 public:
  template <typename Number>
  void number(Number value, char end) {
    char digits[32];
    auto const result = std::to_chars(digits, digits + sizeof digits, value);
    text.append(digits, result.ptr);
    text.push_back(end);
  }
  void line(HString const& value) {
    morvabs::append_utf8(text, text_view(value));
    text.push_back('\n');
  }

  std::string text;
};

class TextReader {
 public:
  explicit TextReader(std::string_view text) : rest_(text) {}

  template <typename Number>
  Number number() {
    Number value{};
    auto const result = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
    rest_.remove_prefix(static_cast<std::size_t>(result.ptr - rest_.data()) + 1);
    return value;
  }
  HString line() {
    std::size_t const end = rest_.find('\n');
    HString const value = wide(rest_.substr(0, end));
    rest_.remove_prefix(end + 1);
    return value;
  }

 private:
  std::string_view rest_;
};

}  // namespace

void write_text(QXPPolicyMorvaClustBox const& box, Lists lists, std::string const& path) {
  TextWriter out;
  out.number(box.vt_words.size(), '\n');
  for (HString const& word : box.vt_words) {
    out.line(word);
  }
  out.number(box.vt_kmeans_node.size(), '\n');
  for (QXPKMeansNode const& node : box.vt_kmeans_node) {
    out.line(node.str_class_id);
    out.line(node.str_class_name);
    out.number(node.d_radius, '\n');
    if (lists == Lists::dense) {
      for (double const weight : node.vt_weight) {
        out.number(weight, ' ');
      }
    } else {
      Pairs const pairs = pairs_of(node.vt_weight);
      out.number(pairs.size(), ' ');
      for (auto const& [position, weight] : pairs) {
        out.number(position, ' ');
        out.number(weight, ' ');
      }
    }
  }
  write(out.text, path);
}

QXPPolicyMorvaClustBox read_text(Lists lists, std::string const& path) {
  std::string const content = content_of(path);
  TextReader in(content);
  QXPPolicyMorvaClustBox box;
  box.vt_words.resize(in.number<std::size_t>());
  for (HString& word : box.vt_words) {
    word = in.line();
  }
  box.vt_kmeans_node.resize(in.number<std::size_t>());
  for (QXPKMeansNode& node : box.vt_kmeans_node) {
    node.str_class_id = in.line();
    node.str_class_name = in.line();
    node.d_radius = in.number<double>();
    node.vt_weight.resize(box.vt_words.size());
    if (lists == Lists::dense) {
      for (double& weight : node.vt_weight) {
        weight = in.number<double>();
      }
      continue;
    }
    for (auto left = in.number<std::size_t>(); left > 0; --left) {
      auto const position = in.number<std::size_t>();
      node.vt_weight[position] = in.number<double>();
    }
  }
  return box;
}

void write_json(QXPPolicyMorvaClustBox const& box, Lists lists, std::string const& path) {
  nlohmann::json json;
  for (HString const& word : box.vt_words) {
    json["words"].push_back(utf8(word));
  }
  for (QXPKMeansNode const& node : box.vt_kmeans_node) {
    nlohmann::json each{{"id", utf8(node.str_class_id)},
                        {"name", utf8(node.str_class_name)},
                        {"radius", node.d_radius}};
    if (lists == Lists::dense) {
      each["weights"] = node.vt_weight;
    } else {
      each["weights"] = pairs_of(node.vt_weight);
    }
    json["classes"].push_back(std::move(each));
  }
  write(json.dump(), path);
}

QXPPolicyMorvaClustBox read_json(Lists lists, std::string const& path) {
  auto const json = nlohmann::json::parse(content_of(path));
  QXPPolicyMorvaClustBox box;
  for (nlohmann::json const& word : json["words"]) {
    box.vt_words.push_back(wide(word.get_ref<std::string const&>()));
  }
  for (nlohmann::json const& each : json["classes"]) {
    QXPKMeansNode& node = box.vt_kmeans_node.emplace_back();
    node.str_class_id = wide(each["id"].get_ref<std::string const&>());
    node.str_class_name = wide(each["name"].get_ref<std::string const&>());
    node.d_radius = each["radius"].get<double>();
    node.vt_weight = lists == Lists::dense
                         ? each["weights"].get<std::vector<double>>()
                         : list_of(each["weights"].get<Pairs>(), box.vt_words.size());
  }
  return box;
}

}  // namespace box_peers
