/* The same question from C: the fingerprint of a document. */
#include <morvaai_c.h>
#include <stdio.h>

int main(int argc, char** argv) {
  morva_document* document = NULL;
  char const* dna = NULL;
  if (argc != 2 || morva_read_file(argv[1], MORVA_WANT_DNA, 0, &document) != MORVA_OK ||
      morva_document_dna(document, &dna) != MORVA_OK) {
    fprintf(stderr, "%s\n", morva_last_error());
    return 1;
  }
  printf("%s\n", dna);
  morva_document_free(document);
  return 0;
}
