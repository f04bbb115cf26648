#include "morvajieba/lexicon.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "host/utf8.h"
#include "morvajieba/exact_log.h"
#include "morvajieba/segmenter.h"

namespace morvajieba {

namespace {

constexpr std::uint64_t greatest_frequency = 1'000'000'000'000;
/// Distinct parts of speech that a user may bring; further ones are passed over.
constexpr std::size_t most_user_tags = 1000;

bool is_in_dictionary_alphabet(wchar_t character) {
  CharacterClass const kind = classify(character);
  return kind >= CharacterClass::joiner && !is_full_width(character);
}

/// Cuts " " and a run of characters of one kind off the end of a line; empty, with the line
/// untouched, where it does not end so or nothing would be left.
template <typename Predicate>
std::string_view take_last_field(std::string_view& line, Predicate is_of_kind) {
  std::size_t start = line.size();
  while (start > 0 && is_of_kind(line[start - 1])) --start;
  if (start == line.size() || start < 2 || line[start - 1] != ' ') return {};
  std::string_view const field = line.substr(start);
  line = line.substr(0, start - 1);
  return field;
}

std::string_view strip(std::string_view line) {
  constexpr std::string_view blanks = " \t\n\r\v\f";
  std::size_t const first = line.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return line.substr(first, line.find_last_not_of(blanks) - first + 1);
}

std::uint64_t parse_frequency(std::string_view digits) {
  std::uint64_t value = 0;
  auto const result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return result.ec == std::errc() ? std::min(value, greatest_frequency) : greatest_frequency;
}

}  // namespace

std::size_t UserTree::slot_of(std::uint32_t parent, std::uint32_t character) const {
  std::uint64_t const key = (static_cast<std::uint64_t>(parent) << 32 | character) + 1;
  std::size_t const mask = edges_.size() - 1;
  std::size_t slot = (key * 0x9E3779B97F4A7C15u >> 32) & mask;
  while (edges_[slot].child != root &&
         (edges_[slot].parent != parent || edges_[slot].character != character)) {
    slot = (slot + 1) & mask;
  }
  return slot;
}

std::uint32_t UserTree::child(std::uint32_t parent, wchar_t character) const {
  if (edges_.empty()) return root;
  return edges_[slot_of(parent, static_cast<std::uint32_t>(character))].child;
}

UserNode const* UserTree::find(std::wstring_view text) const {
  if (text.empty() || !may_begin(text.front())) return nullptr;
  std::uint32_t number = root;
  for (wchar_t const character : text) {
    number = child(number, character);
    if (number == root) return nullptr;
  }
  return &nodes_[number];
}

void UserTree::grow() {
  std::vector<Edge> old(std::max<std::size_t>(1024, edges_.size() * 2));
  old.swap(edges_);
  for (Edge const& edge : old) {
    if (edge.child != root) edges_[slot_of(edge.parent, edge.character)] = edge;
  }
}

UserNode* UserTree::insert(std::wstring_view word) {
  if (word.empty() || nodes_.size() + word.size() > most_nodes) return nullptr;
  std::uint32_t number = root;
  for (wchar_t const character : word) {
    if (nodes_.size() * 2 > edges_.size()) grow();
    Edge& edge = edges_[slot_of(number, static_cast<std::uint32_t>(character))];
    if (edge.child == root) {
      edge = {number, static_cast<std::uint32_t>(character),
              static_cast<std::uint32_t>(nodes_.size())};
      nodes_.emplace_back();
    }
    number = edge.child;
  }
  first_characters_.set(static_cast<std::uint32_t>(word.front()) % first_characters_.size());
  return &nodes_[number];
}

/// A line of a word list in its parts.
struct Lexicon::Line {
  std::wstring word;
  std::string_view frequency;
  std::string_view tag;
};

Lexicon::Lexicon(Dictionary const& dictionary)
    : dictionary_(&dictionary), user_tags_(1), longest_(dictionary.longest()) {
  set_total(dictionary.total());
}

void Lexicon::set_total(std::uint64_t total) {
  total_ = total;
  log_total_ = exact_log(static_cast<double>(total));
}

bool Lexicon::find_node(std::wstring_view text, Node& node) const {
  if (text.size() > dictionary_->longest()) return false;
  std::uint32_t base = 0;
  for (wchar_t const character : text) {
    if (!is_in_dictionary_alphabet(character)) return false;
    if (!dictionary_->child(base, dictionary_->code(character), node)) return false;
    base = node.base();
  }
  return !text.empty();
}

WordEntry Lexicon::find(std::wstring_view text) const {
  WordEntry entry;
  if (Node node{}; find_node(text, node)) {
    entry = {node.frequency() == 0 ? 0 : dictionary_->frequency(node), true};
  }
  if (UserNode const* const user = user_words_.find(text)) {
    entry.is_prefix = true;
    if (user->has_frequency) entry.frequency = user->frequency;
  }
  return entry;
}

bool Lexicon::is_forbidden(std::wstring_view word) const {
  UserNode const* const user = user_words_.find(word);
  return user != nullptr && user->is_forbidden;
}

std::string_view Lexicon::tag(std::wstring_view token) const {
  UserNode const* const user = user_words_.find(token);
  if (user != nullptr && user->tag != 0) return user_tags_[user->tag];
  if (Node node{}; find_node(token, node) && node.frequency() != 0) return dictionary_->tag(node);
  bool has_letter = false;
  bool has_digit = false;
  for (wchar_t const character : token) {
    if (static_cast<std::uint32_t>(character) >= 0x80) return "x";
    bool const is_digit = character >= L'0' && character <= L'9';
    has_digit = has_digit || is_digit;
    has_letter = has_letter || (!is_digit && classify(character) == CharacterClass::ascii);
  }
  return has_letter ? "eng" : has_digit ? "m" : "x";
}

void Lexicon::load_user_words(std::string_view content) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  while (!content.empty()) {
    std::size_t const end = std::min(content.find('\n'), content.size());
    std::string_view text = strip(content.substr(0, end));
    content.remove_prefix(std::min(end + 1, content.size()));
    while (text.starts_with(mark)) text.remove_prefix(mark.size());
    if (text.empty() || !morvabs::is_utf8(text)) continue;
    Line line;
    line.tag = take_last_field(text, [](char c) { return c >= 'a' && c <= 'z'; });
    line.frequency = take_last_field(text, [](char c) { return c >= '0' && c <= '9'; });
    line.word = morvabs::from_utf8(text);
    if (line.word.size() <= longest_word) add(line);
  }
}

void Lexicon::add(Line const& line) {
  std::uint64_t const frequency =
      line.frequency.empty() ? suggest_frequency(line.word) : parse_frequency(line.frequency);
  UserNode* const node = user_words_.insert(line.word);
  if (node == nullptr) return;
  node->has_frequency = true;
  node->frequency = frequency;
  node->log_frequency = frequency == 0 ? 0.0 : exact_log(static_cast<double>(frequency));
  if (frequency == 0) {
    node->is_forbidden = true;
    has_forbidden_ = true;
  }
  if (!line.tag.empty()) {
    auto found = std::find(user_tags_.begin(), user_tags_.end(), line.tag);
    if (found == user_tags_.end() && user_tags_.size() < most_user_tags) {
      found = user_tags_.emplace(found, line.tag);
    }
    if (found != user_tags_.end()) {
      node->tag = static_cast<std::uint32_t>(found - user_tags_.begin());
    }
  }
  longest_ = std::max(longest_, line.word.size());
  set_total(total_ + frequency);
}

std::uint64_t Lexicon::suggest_frequency(std::wstring_view word) const {
  // The product of the pieces' shares of the total, in the order of the pieces.
  class Shares : public TokenSink {
   public:
    Shares(Lexicon const& lexicon, double total) : lexicon_(lexicon), total_(total) {}
    void token(std::wstring_view text) override {
      WordEntry const entry = lexicon_.find(text);
      double const frequency = entry.is_prefix ? static_cast<double>(entry.frequency) : 1.0;
      product_ *= frequency / total_;
    }
    double product() const { return product_; }

   private:
    Lexicon const& lexicon_;
    double total_;
    double product_ = 1.0;
  };
  auto const total = static_cast<double>(total_);
  Shares shares(*this, total);
  Segmenter(*this).cut_without_model(word, shares);
  // A damaged dictionary can ask for more than any integer holds.
  double const share = shares.product() * total;
  auto const suggested = share < static_cast<double>(greatest_frequency)
                             ? static_cast<std::uint64_t>(share) + 1
                             : greatest_frequency;
  WordEntry const known = find(word);
  return std::min(std::max(suggested, known.is_prefix ? known.frequency : 1), greatest_frequency);
}

}  // namespace morvajieba
