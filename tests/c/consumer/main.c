#include <morvaai_c.h>
#include <stdio.h>

/* The strongest words of a file and its fingerprint; without a file, of a text. */
int main(int argc, char** argv) {
  static char const text[] = "A short text about harbours";
  unsigned const wants = MORVA_WANT_WORDS | MORVA_WANT_DNA;
  morva_document* document = NULL;
  morva_status const status =
      argc > 1 ? morva_read_file(argv[1], wants, 5, &document)
               : morva_read_text(text, sizeof text - 1, wants, 5, &document);
  size_t count = 0;
  char const* const* words = NULL;
  double const* weights = NULL;
  char const* dna = "";
  if (status != MORVA_OK) {
    fprintf(stderr, "%s\n", morva_last_error());
    morva_document_free(document);
    return 1;
  }
  morva_document_words(document, &count, &words, &weights, NULL, NULL);
  for (size_t i = 0; i < count; ++i) {
    printf("%.6f %s\n", weights[i], words[i]);
  }
  morva_document_dna(document, &dna);
  printf("%s\n", dna);
  morva_document_free(document);
  return count > 0 ? 0 : 1;
}
