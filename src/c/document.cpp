#include "c/internal/document.h"

#include <array>
#include <cmath>
#include <memory>
#include <string>
#include <utility>

#include "host/Orlec/ParseFile.h"
#include "host/native_path.h"
#include "host/utf8.h"
#include "morvaai_c.h"

#include "c/internal/call.h"
#include "c/internal/dna_text.h"
#include "c/internal/reading.h"

namespace {

using morva::c::Failure;
using morva::c::Reading;
using morva::c::Wants;

// Hands the document over, and fails as its reading did.
void hand_over(Reading reading, Wants const& wants, HString const& path,
               morva_document*& document) {
  document = std::make_unique<morva_document>(std::move(reading), wants).release();
  Reading const& done = document->reading();
  if (done.status != MORVA_OK) {
    throw Failure(done.status, failure_line(path, done), done.error);
  }
}

// A document that was read for what is asked of it now.
Reading const& read_for(morva_document const* document, unsigned any_of, char const* name) {
  if ((morva::c::needed(document, "document")->wants().flags & any_of) == 0) {
    throw Failure(MORVA_NOT_ASKED, std::string("the document was read without ") + name);
  }
  return document->reading();
}

WordNode kept_word(char const* const* words, double const* weights, std::int32_t const* counts,
                   std::size_t i) {
  WordNode node;
  node.word = HString(morva::c::needed(words[i], "a word"));
  node.weight = weights[i];
  node.count = counts == nullptr ? 1 : counts[i];
  if (node.word.empty() || !std::isfinite(node.weight) || node.count < 0) {
    throw Failure(MORVA_INVALID_ARGUMENT, "word " + std::to_string(i) +
                                              " is empty, or its weight is no finite number, or "
                                              "its count is below 0");
  }
  return node;
}

using OutcomeNames = std::array<std::string, MORVA_OUTCOME_FAILED + 1>;

OutcomeNames outcome_names() {
  OutcomeNames names;
  for (int i = MORVA_OUTCOME_TEXT; i <= MORVA_OUTCOME_FAILED; ++i) {
    HString const name = Orlec::GetOutcomeName(static_cast<Orlec::ParseOutcome>(i));
    names[static_cast<std::size_t>(i)] = morvabs::to_utf8(text_view(name));
  }
  return names;
}

}  // namespace

morva_status morva_read_file(char const* path, unsigned wants, size_t most_words,
                             morva_document** document) {
  return morva::c::locked_status_of([&] {
    morva_document*& result = morva::c::emptied(document, "document");
    HString const file = morvabs::from_path(morva::c::needed(path, "path"));
    Wants const wanted = morva::c::checked_wants(wants, most_words);
    hand_over(morva::c::read_file(file, wanted), wanted, file, result);
  });
}

morva_status morva_read_text(char const* text, size_t size, unsigned wants, size_t most_words,
                             morva_document** document) {
  return morva::c::locked_status_of([&] {
    morva_document*& result = morva::c::emptied(document, "document");
    std::string_view const given(size == 0 ? "" : morva::c::needed(text, "text"), size);
    Wants const wanted = morva::c::checked_wants(wants, most_words);
    hand_over(morva::c::read_text(given, wanted), wanted, L"", result);
  });
}

morva_status morva_document_from_words(char const* const* words, double const* weights,
                                       int32_t const* counts, size_t count, char const* wide_dna,
                                       morva_document** document) {
  return morva::c::status_of([&] {
    morva_document*& result = morva::c::emptied(document, "document");
    Reading reading;
    reading.outcome = MORVA_OUTCOME_TEXT;
    if (count > 0) {
      morva::c::needed(words, "words");
      morva::c::needed(weights, "weights");
    }
    for (std::size_t i = 0; i < count; ++i) {
      reading.words.push_back(kept_word(words, weights, counts, i));
    }
    Wants wants{MORVA_WANT_WORDS, 0};
    if (wide_dna != nullptr) {
      wants.flags |= MORVA_WANT_WIDE_DNA;
      reading.wide_dna = morvabs::to_utf8(text_view(morva::c::checked_dna(wide_dna, "wide_dna")));
    }
    auto made = std::make_unique<morva_document>(std::move(reading), wants);
    made->match_by_all_words();
    result = made.release();
  });
}

void morva_document_free(morva_document* document) {
  std::unique_ptr<morva_document> const ended(document);
}

int morva_document_outcome(morva_document const* document) {
  return document == nullptr ? 0 : document->reading().outcome;
}

char const* morva_outcome_name(int outcome) {
  if (outcome < MORVA_OUTCOME_TEXT || outcome > MORVA_OUTCOME_FAILED) {
    return "";
  }
  char const* name = "";
  morva::c::status_of([&] {
    static OutcomeNames const names = outcome_names();
    name = names[static_cast<std::size_t>(outcome)].c_str();
  });
  return name;
}

char const* morva_document_reason(morva_document const* document) {
  return document == nullptr ? "" : document->reading().reason.c_str();
}

int morva_document_error(morva_document const* document) {
  return document == nullptr ? 0 : document->reading().error;
}

morva_status morva_document_words(morva_document const* document, size_t* count,
                                  char const* const** words, double const** weights,
                                  int32_t const** counts, char const* const** tags) {
  return morva::c::status_of([&] {
    auto const give = [](auto* result, auto const& value) {
      if (result != nullptr) {
        *result = value;
      }
    };
    give(count, std::size_t{0});
    give(words, nullptr);
    give(weights, nullptr);
    give(counts, nullptr);
    give(tags, nullptr);
    read_for(document, MORVA_WANT_WORDS, "MORVA_WANT_WORDS");
    give(count, document->word_count());
    give(words, document->words());
    give(weights, document->weights());
    give(counts, document->counts());
    give(tags, document->tags());
  });
}

morva_status morva_document_dna(morva_document const* document, char const** dna) {
  return morva::c::status_of([&] {
    char const*& result = morva::c::emptied(dna, "dna");
    result = read_for(document, MORVA_WANT_DNA, "MORVA_WANT_DNA").dna.c_str();
  });
}

morva_status morva_document_wide_dna(morva_document const* document, char const** dna) {
  return morva::c::status_of([&] {
    char const*& result = morva::c::emptied(dna, "dna");
    result = read_for(document, MORVA_WANT_WIDE_DNA, "MORVA_WANT_WIDE_DNA").wide_dna.c_str();
  });
}

morva_status morva_document_covered(morva_document const* document, int64_t* characters) {
  return morva::c::status_of([&] {
    std::int64_t& result = morva::c::emptied(characters, "characters");
    unsigned const any = MORVA_WANT_DNA | MORVA_WANT_WIDE_DNA;
    result = read_for(document, any, "MORVA_WANT_DNA or MORVA_WANT_WIDE_DNA").covered;
  });
}

morva_status morva_document_text(morva_document const* document, int kind, char const** text,
                                 size_t* size) {
  return morva::c::status_of([&] {
    std::size_t unread = 0;
    std::size_t& length = size == nullptr ? unread : morva::c::emptied(size, "size");
    char const*& result = morva::c::emptied(text, "text");
    Reading const& reading = read_for(document, MORVA_WANT_TEXT, "MORVA_WANT_TEXT");
    if (kind < MORVA_TEXT_MAIN || kind > MORVA_TEXT_OTHER) {
      throw Failure(MORVA_INVALID_ARGUMENT, "kind is none of the kinds of text");
    }
    std::string const& found = reading.texts[static_cast<std::size_t>(kind) - 1];
    length = found.size();
    result = found.c_str();
  });
}
