#include "morvajieba/segmenter.h"

#include <algorithm>

namespace morvajieba {

namespace {

/// Where the block that begins at `start` ends. ASCII letters and digits at its end that run into a
/// letter of another alphabet are left to that run.
std::size_t find_block_end(std::wstring_view text, std::size_t start) {
  std::size_t ascii_start = text.size();
  bool in_ascii = false;
  for (std::size_t i = start; i < text.size(); ++i) {
    CharacterClass const kind = classify(text[i]);
    if (kind == CharacterClass::ascii) {
      if (!in_ascii) ascii_start = i;
      in_ascii = true;
    } else if (kind >= CharacterClass::joiner) {
      in_ascii = false;
    } else {
      bool const runs_on = kind == CharacterClass::letter || kind == CharacterClass::mark;
      return in_ascii && runs_on ? ascii_start : i;
    }
  }
  return text.size();
}

/// End of a run of letters around one that is no ASCII letter.
std::size_t find_letters_end(std::wstring_view text, std::size_t start) {
  return static_cast<std::size_t>(
      std::find_if(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(),
                   [](wchar_t character) {
                     CharacterClass const kind = classify(character);
                     return kind != CharacterClass::ascii && kind != CharacterClass::letter &&
                            kind != CharacterClass::mark;
                   }) -
      text.begin());
}

/// End of a run of one kind of kana.
std::size_t find_kana_end(std::wstring_view text, std::size_t start, CharacterClass kana) {
  std::size_t end = start + 1;
  while (end < text.size() &&
         (classify(text[end]) == kana || classify(text[end]) == CharacterClass::mark)) {
    ++end;
  }
  return end;
}

bool is_digit(wchar_t character) {
  return character >= L'0' && character <= L'9';
}

std::size_t find_run_end(std::wstring_view text, std::size_t start, bool (*belongs)(wchar_t)) {
  while (start < text.size() && belongs(text[start])) ++start;
  return start;
}

bool is_ascii_word_character(wchar_t character) {
  return classify(character) == CharacterClass::ascii;
}

template <typename T>
void make_room(std::vector<T>& vector, std::size_t size) {
  if (vector.size() < size) vector.resize(size);
}

// For each state the two that can stand before it; the later one wins a tie.
constexpr State earlier_before[state_count] = {state_end, state_begin, state_begin, state_end};
constexpr State later_before[state_count] = {state_single, state_middle, state_middle,
                                             state_single};

}  // namespace

void Segmenter::cut(std::wstring_view text, TokenSink& sink) {
  sink_ = &sink;
  with_model_ = true;
  cut_text(text);
}

void Segmenter::cut_without_model(std::wstring_view text, TokenSink& sink) {
  sink_ = &sink;
  with_model_ = false;
  cut_text(text);
}

void Segmenter::cut_text(std::wstring_view text) {
  for (std::size_t start = 0; start < text.size();) {
    std::size_t const end = find_block_end(text, start);
    if (end > start) {
      cut_block(fold(text.substr(start, end - start)));
      start = end;
    } else {
      start = cut_special(text, start);
    }
  }
}

/// The text with full-width forms as ASCII; the text itself where it holds none.
std::wstring_view Segmenter::fold(std::wstring_view text) {
  if (std::none_of(text.begin(), text.end(), is_full_width)) return text;
  folded_.resize(text.size());
  std::transform(text.begin(), text.end(), folded_.begin(), fold_width);
  return folded_;
}

/// Cuts one token that is in no block; the position behind it comes back.
std::size_t Segmenter::cut_special(std::wstring_view text, std::size_t start) {
  CharacterClass const kind = classify(text[start]);
  std::size_t end = start + 1;
  if (kind == CharacterClass::letter || kind == CharacterClass::ascii) {
    end = find_letters_end(text, start);
  } else if (kind == CharacterClass::hiragana || kind == CharacterClass::katakana) {
    end = find_kana_end(text, start, kind);
  } else if (text[start] == L'\r' && end < text.size() && text[end] == L'\n') {
    ++end;
  }
  sink_->token(fold(text.substr(start, end - start)));
  return end;
}

void Segmenter::cut_block(std::wstring_view block) {
  Dictionary const& dictionary = lexicon_->dictionary();
  make_room(codes_, block.size());
  make_room(steps_, block.size());
  std::transform(block.begin(), block.end(), codes_.begin(),
                 [&dictionary](wchar_t character) { return dictionary.code(character); });
  if (lexicon_->user_words().empty()) {
    find_path<false>(block);
  } else {
    find_path<true>(block);
  }
  with_model_ ? emit_path(block) : emit_path_without_model(block);
}

/// From the end to the beginning: of the words that begin at a character, the one whose way to the
/// end weighs most; the longer one where two weigh the same. The order of the additions is jieba's,
/// as their rounding decides ties.
template <bool with_user_words>
void Segmenter::find_path(std::wstring_view block) {
  Dictionary const& dictionary = lexicon_->dictionary();
  UserTree const& user_words = lexicon_->user_words();
  double const log_total = lexicon_->log_total();
  std::size_t const size = block.size();
  auto const weight = [this](std::size_t position) -> double& {
    return weights_[position % weights_.size()];
  };
  weight(size) = 0.0;
  for (std::size_t start = size; start-- > 0;) {
    double best = 0.0;
    std::size_t step = 0;
    std::size_t const most = std::min(size - start, lexicon_->longest());
    bool in_dictionary = true;
    std::uint32_t base = 0;
    [[maybe_unused]] std::uint32_t user_node = UserTree::root;
    [[maybe_unused]] bool in_user_words = with_user_words && user_words.may_begin(block[start]);
    for (std::size_t length = 1; length <= most; ++length) {
      bool is_word = false;
      double log_frequency = 0.0;
      if (Node node{}; in_dictionary && dictionary.child(base, codes_[start + length - 1], node)) {
        base = node.base();
        is_word = node.frequency() != 0;
        log_frequency = dictionary.log_frequency(node);
      } else {
        in_dictionary = false;
      }
      if constexpr (with_user_words) {
        if (in_user_words) {
          user_node = user_words.child(user_node, block[start + length - 1]);
          in_user_words = user_node != UserTree::root;
          if (UserNode const& user = user_words.node(user_node); user.has_frequency) {
            is_word = user.frequency != 0;
            log_frequency = user.log_frequency;
          }
        }
      }
      if (is_word) {
        double const candidate = log_frequency - log_total + weight(start + length);
        if (step == 0 || candidate >= best) {
          best = candidate;
          step = length;
        }
      }
      if (!in_dictionary && !(with_user_words && in_user_words)) break;
    }
    // An unknown character counts as a word of frequency 1.
    weight(start) = step == 0 ? 0.0 - log_total + weight(start + 1) : best;
    steps_[start] = static_cast<std::uint8_t>(std::max<std::size_t>(step, 1));
  }
}

void Segmenter::emit_path(std::wstring_view block) {
  std::size_t singles = 0;  // beginning of the single characters not told yet
  for (std::size_t start = 0; start < block.size();) {
    std::size_t const step = steps_[start];
    if (step > 1) {
      emit_singles(block.substr(singles, start - singles));
      sink_->token(block.substr(start, step));
      singles = start + step;
    }
    start += step;
  }
  emit_singles(block.substr(singles));
}

void Segmenter::emit_path_without_model(std::wstring_view block) {
  for (std::size_t start = 0; start < block.size();) {
    std::size_t end = start;
    while (end < block.size() && steps_[end] == 1 && is_ascii_word_character(block[end])) ++end;
    if (end == start) end = start + steps_[start];
    sink_->token(block.substr(start, end - start));
    start = end;
  }
}

/// Single characters in a row: a word that lost against its characters stays cut, anything else is
/// unknown.
void Segmenter::emit_singles(std::wstring_view singles) {
  bool const stays_cut = singles.size() <= 1 || (singles.size() <= lexicon_->longest() &&
                                                 lexicon_->find(singles).frequency != 0);
  if (stays_cut) {
    emit_each(singles);
  } else {
    emit_unknown(singles);
  }
}

/// Han characters by the model; of the rest ASCII words, with a fraction and a percent sign behind
/// them, and what stands between these.
void Segmenter::emit_unknown(std::wstring_view text) {
  while (!text.empty()) {
    std::size_t end = find_run_end(text, 0, is_han);
    if (end > 0) {
      emit_by_model(text.substr(0, end));
    } else if (is_ascii_word_character(text.front())) {
      end = find_run_end(text, 0, is_ascii_word_character);
      if (end + 1 < text.size() && text[end] == L'.' && is_digit(text[end + 1])) {
        end = find_run_end(text, end + 1, is_digit);
      }
      if (end < text.size() && text[end] == L'%') ++end;
      sink_->token(text.substr(0, end));
    } else {
      end = find_run_end(text, 0, [](wchar_t character) {
        return !is_han(character) && !is_ascii_word_character(character);
      });
      sink_->token(text.substr(0, end));
    }
    text.remove_prefix(end);
  }
}

void Segmenter::emit_by_model(std::wstring_view han) {
  find_states(han);
  std::size_t begin = 0;
  std::size_t next = 0;
  for (std::size_t i = 0; i < han.size(); ++i) {
    if (states_[i] == state_begin) {
      begin = i;
    } else if (states_[i] == state_end) {
      emit_unless_forbidden(han.substr(begin, i + 1 - begin));
      next = i + 1;
    } else if (states_[i] == state_single) {
      emit_unless_forbidden(han.substr(i, 1));
      next = i + 1;
    }
  }
  if (next < han.size()) emit_unless_forbidden(han.substr(next));
}

/// The most probable states of the characters (Viterbi). On the way forward `states_` holds a bit
/// per state that says which of its two predecessors was the better one.
void Segmenter::find_states(std::wstring_view han) {
  Dictionary const& dictionary = lexicon_->dictionary();
  make_room(states_, han.size());
  std::array<double, state_count> now{};
  for (State const state : {state_begin, state_end, state_middle, state_single}) {
    now[state] = dictionary.start(state) + dictionary.emission(han[0])[state];
  }
  for (std::size_t i = 1; i < han.size(); ++i) {
    double const* const emission = dictionary.emission(han[i]);
    std::array<double, state_count> const before = now;
    unsigned choices = 0;
    for (State const state : {state_begin, state_end, state_middle, state_single}) {
      State const earlier = earlier_before[state];
      State const later = later_before[state];
      double const by_earlier =
          before[earlier] + dictionary.transition(earlier, state) + emission[state];
      double const by_later = before[later] + dictionary.transition(later, state) + emission[state];
      bool const takes_later = by_later >= by_earlier;
      now[state] = takes_later ? by_later : by_earlier;
      choices |= static_cast<unsigned>(takes_later) << state;
    }
    states_[i] = static_cast<std::uint8_t>(choices);
  }
  State state = now[state_single] >= now[state_end] ? state_single : state_end;
  for (std::size_t i = han.size(); i-- > 1;) {
    unsigned const choices = states_[i];
    bool const takes_later = (choices >> state & 1u) != 0;
    states_[i] = state;
    state = takes_later ? later_before[state] : earlier_before[state];
  }
  states_[0] = state;
}

void Segmenter::emit_unless_forbidden(std::wstring_view word) {
  if (lexicon_->has_forbidden() && lexicon_->is_forbidden(word)) {
    emit_each(word);
  } else {
    sink_->token(word);
  }
}

void Segmenter::emit_each(std::wstring_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) sink_->token(text.substr(i, 1));
}

}  // namespace morvajieba
