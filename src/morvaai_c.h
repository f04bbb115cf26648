#pragma once

/// The library for programs in C, and in whatever else can call C: words, fingerprints (DNA) and
/// text of documents, likeness of fingerprints, and the class that a document belongs to.
///
/// What is promised for good: the numbers below, the names and the arguments of the functions. No
/// structure has a layout that a caller knows; all are handles, and what they hold is asked for by
/// functions. What is added later are more functions and more constants. A program that was built
/// with version 1 runs with every `libmorvaai_c.so.1`.
///
/// Results: every function that can fail returns a status, and `morva_last_error` then says why. No
/// C++ exception leaves the library. Where a function gives one thing through a pointer, that is
/// set to null or 0 first, the position of a class to SIZE_MAX; an array that the caller gives to
/// be filled is left as it is unless the function succeeds. A null pointer where something is
/// needed gives `MORVA_INVALID_ARGUMENT`; to free null does nothing. A handle must not be used once
/// it has been freed.
///
/// Ownership: who gets a handle frees it, with the function named for that. Texts and arrays that a
/// handle gives belong to it: they are good until it is freed.
///
/// Texts are UTF-8, ended by a zero. A byte that is no part of well-formed UTF-8 counts as U+FFFD.
/// Paths are bytes as the system takes them.
///
/// Threads: any thread may call. The functions that read documents, match, or open and close boxes
/// wait for each other: one thread at a time works in the library, so that more threads are no
/// faster; `morva_pool_read` uses several cores. All other functions take no lock: one handle may
/// be asked by several threads at once as long as none changes or frees it. A thread must not be
/// cancelled within the library.
///
/// Fork: in a process with one thread the child may go on with the library. Where another thread
/// was in the library at that moment the child must not call it, only run another program.
///
/// Hostile documents: what a document may cost is bounded, but `morva_read_file` and
/// `morva_read_text` work in the calling process, where a fault of a parser is a fault of this
/// process, and where the library for PDF ends it when memory runs out. `morva_pool_read` reads in
/// worker processes that reach nothing but their document: use it for files from elsewhere.

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/// What a function returns. More may be added: take every value that is not `MORVA_OK` for a
/// failure.
typedef int morva_status;
enum {
  MORVA_OK = 0,
  /// A null pointer, a number out of range, or a text that is not what it should be.
  MORVA_INVALID_ARGUMENT = 1,
  MORVA_OUT_OF_MEMORY = 2,
  /// The system does not open the file; `errno` says why.
  MORVA_CANNOT_OPEN = 3,
  /// The document is of no known type, needs a password or is damaged, or its worker was lost; the
  /// outcome says which.
  MORVA_NOT_READ = 4,
  /// There is no dictionary where it is looked for.
  MORVA_NO_DICTIONARY = 5,
  /// The document was read without what this function asks of it.
  MORVA_NOT_ASKED = 6,
  /// A box, or the index of a directory of boxes, cannot be read.
  MORVA_BAD_BOX = 7,
  /// No worker process can be started.
  MORVA_NO_WORKER = 8,
  /// The caller's function wanted no more.
  MORVA_STOPPED = 9,
  /// A fault of the library.
  MORVA_INTERNAL = 10
};

/* ---- The library ---- */

/// The version of this interface, 1; greater where functions have been added since.
int morva_interface_version(void);
/// The version of the library, as "3.2306.4".
char const* morva_library_version(void);

/// One line, without its end, on the last failure in this thread; empty before the first. It names
/// the file, if there is one, and the cause. Characters in it that would steer a terminal or turn
/// the direction of the line are replaced, so that it may be shown. Good until the next failure in
/// this thread.
char const* morva_last_error(void);

/// Loads the dictionary now; otherwise the first document does. With null from where it is found
/// without being told: MORVA_DICT_PATH, else beside the library. Else from this directory, for
/// which MORVA_DICT_PATH of this process is set: call it before there are other threads.
morva_status morva_load_dictionary(char const* directory);

/// Receives the library's own records. `level` is from 1, failures, to 4.
typedef void (*morva_log_sink)(void* user, int level, char const* text);
/// How much is logged, 0 (nothing) to 4, and to where: to `sink`, or with null to the file that
/// MORVA_LOG_FILE names, else to standard error. At the start the level is what MORVA_LOG_LEVEL
/// says, else 1. Worker processes do not call the sink: where one is set they log nothing, else to
/// where this process does. Must not be called while another thread reads.
morva_status morva_set_log(int level, morva_log_sink sink, void* user);

/* ---- Documents ---- */

/// What was found in a document. Once made it never changes.
typedef struct morva_document morva_document;

/// What a document is read for; these are added.
enum {
  MORVA_WANT_WORDS = 1,     ///< the words that characterise it
  MORVA_WANT_DNA = 2,       ///< the fingerprint of 32 digits
  MORVA_WANT_WIDE_DNA = 4,  ///< the fingerprint of up to 1024 digits
  MORVA_WANT_TEXT = 8       ///< its texts
};

/// How reading a document ended.
enum {
  MORVA_OUTCOME_TEXT = 1,           ///< read, with main text
  MORVA_OUTCOME_NO_TEXT = 2,        ///< read, and its main text is empty, as of a scanned page
  MORVA_OUTCOME_ENCRYPTED = 3,      ///< needs a password
  MORVA_OUTCOME_NOT_SUPPORTED = 4,  ///< of no known type, or of one without a reader
  MORVA_OUTCOME_INCOMPLETE = 5,     ///< read, but for something embedded or beside its text
  MORVA_OUTCOME_DAMAGED = 6,        ///< breaks its format's rules; it has the text up to there
  MORVA_OUTCOME_LIMIT_REACHED = 7,  ///< read up to a bound on what it may cost
  MORVA_OUTCOME_TIMED_OUT = 8,      ///< read as far as the time allowed
  MORVA_OUTCOME_FAILED = 9          ///< the file was not opened, reading failed, or its worker did
};

/// Kinds of text.
enum {
  MORVA_TEXT_MAIN = 1,      ///< the body
  MORVA_TEXT_HEADER = 2,    ///< headers and footers
  MORVA_TEXT_COMMENT = 3,   ///< comments
  MORVA_TEXT_NOTES = 4,     ///< speaker notes
  MORVA_TEXT_FOOTNOTE = 5,  ///< footnotes
  MORVA_TEXT_ENDNOTE = 6,   ///< endnotes
  MORVA_TEXT_CONTROL = 7,   ///< form fields
  MORVA_TEXT_PROPERTY = 8,  ///< properties, one "name: value" a line
  MORVA_TEXT_OTHER = 9      ///< all other text
};

/// Reads a file, of which the content tells the type. `wants` is a sum of `MORVA_WANT_...`;
/// `most_words` bounds the number of words, 0 is all. Words and fingerprints are those of the first
/// 10485760 characters of the main text.
///
/// `MORVA_OK` if there is text to work with, perhaps not all of it: the outcome tells. With
/// `MORVA_CANNOT_OPEN`, `MORVA_NOT_READ` and `MORVA_NO_DICTIONARY` there is a document too, to be
/// freed as any other, with outcome and reason and whatever text was found. One time through the
/// words serves all that is wanted.
morva_status morva_read_file(char const* path, unsigned wants, size_t most_words,
                             morva_document** document);
/// The same of a text of `size` bytes, zeros among them or not. It is taken whole; the only kind of
/// text that it gives is the main one.
morva_status morva_read_text(char const* text, size_t size, unsigned wants, size_t most_words,
                             morva_document** document);
/// A document of words that were kept from an earlier reading, to be matched again: `count` words
/// that are not empty, their weights, which must be finite numbers, and where they were kept
/// (else null) counts and the wide fingerprint.
morva_status morva_document_from_words(char const* const* words, double const* weights,
                                       int32_t const* counts, size_t count, char const* wide_dna,
                                       morva_document** document);
/// Frees the document and all texts and arrays that it gave.
void morva_document_free(morva_document* document);

/// One of `MORVA_OUTCOME_...`; 0 for null.
int morva_document_outcome(morva_document const* document);
/// An outcome as a word, as "encrypted"; empty for a number that is none.
char const* morva_outcome_name(int outcome);
/// A phrase for a person on why the document was not read, or not whole; else empty.
char const* morva_document_reason(morva_document const* document);
/// The system's error number where the file was not opened, else 0.
int morva_document_error(morva_document const* document);

/// The words in descending weight, and beside each its weight, of which the greatest is 1, how
/// often it stands in the text, and its part of speech. Of these, any that are not of interest may
/// be null. Takes `MORVA_WANT_WORDS`.
morva_status morva_document_words(morva_document const* document, size_t* count,
                                  char const* const** words, double const** weights,
                                  int32_t const** counts, char const* const** tags);
/// The fingerprint: hexadecimal digits in upper case; empty where the text has no words. Takes
/// `MORVA_WANT_DNA`.
morva_status morva_document_dna(morva_document const* document, char const** dna);
/// The same in its wide form. Takes `MORVA_WANT_WIDE_DNA`.
morva_status morva_document_wide_dna(morva_document const* document, char const** dna);
/// How many characters all words of the text cover together, each as often as it stands there.
/// Takes one of the fingerprints.
morva_status morva_document_covered(morva_document const* document, int64_t* characters);
/// A text of the document and its number of bytes, without the zero that ends it; a text may hold
/// zeros itself. Empty where there is none of that kind. Takes `MORVA_WANT_TEXT`.
morva_status morva_document_text(morva_document const* document, int kind, char const** text,
                                 size_t* size);

/* ---- Many documents, in worker processes ---- */

/// How many workers there are and what each may use. A plain value: it holds no process.
typedef struct morva_pool morva_pool;

/// One worker, which may take 4 GiB and 150 seconds of the processor for a document.
morva_status morva_pool_new(morva_pool** pool);
/// Frees the pool; documents that it gave stay.
void morva_pool_free(morva_pool* pool);
/// The number of workers, at least 1: as many as there are processors to spare.
morva_status morva_pool_set_jobs(morva_pool* pool, size_t jobs);
/// The bytes of memory that a worker may take beyond what this process holds; at least 1 MiB.
morva_status morva_pool_set_memory(morva_pool* pool, uint64_t bytes);
/// The seconds of the processor for one document, at least 1. By the clock it has a fifth more, or
/// 180 seconds where that is longer.
morva_status morva_pool_set_seconds(morva_pool* pool, int seconds);

/// Receives a document, which it then owns, with the status that `morva_read_file` would have
/// returned; null with `MORVA_OUT_OF_MEMORY`. Returns 0 to go on. It may call the library, but must
/// not be left by an exception or a jump.
typedef int (*morva_take)(void* user, size_t index, morva_status status, morva_document* document);

/// Reads each of the files as `morva_read_file` does, but in worker processes, and hands the
/// documents to `take` in order of the files, in this thread. A document that crashes its worker,
/// takes it over, hangs, or eats memory costs its own result only: its outcome is
/// `MORVA_OUTCOME_FAILED`, and the reason says what happened.
///
/// Workers are forked from this process, while this function runs, and have a copy of its memory,
/// which a document that takes a worker over can read and put into its result: a process that holds
/// secrets leaves this to another one. SIGCHLD must not be ignored, and nobody else may wait for
/// children that are not their own. Starting a worker takes some milliseconds: give many files to
/// one call.
morva_status morva_pool_read(morva_pool const* pool, char const* const* paths, size_t count,
                             unsigned wants, size_t most_words, morva_take take, void* user);

/// What shuts workers in on this machine: 1 or 0 for a filter of system calls, the version of
/// Landlock, 0 for none, and 1 or 0 for the bound on memory. Any of them may be null.
morva_status morva_isolation(int* system_calls, int* landlock, int* memory);

/* ---- Likeness of fingerprints ---- */

/// The share of bits in which two fingerprints agree, 0.0 to 100.0; 0.0 where one is empty or their
/// lengths differ. Unrelated texts agree in about half of the bits. A fingerprint is of digits and
/// upper-case letters A to F.
morva_status morva_dna_similarity(char const* a, char const* b, double* similarity);

/// The 128 numbers behind a wide fingerprint of 1024 digits, the coordinates by which documents are
/// clustered.
morva_status morva_dna_point(char const* wide_dna, double values[128]);

/// Many fingerprints, with all of which one is compared at a time, far faster than pair by pair.
typedef struct morva_dna_list morva_dna_list;

/// An empty list.
morva_status morva_dna_list_new(morva_dna_list** list);
/// Frees the list.
void morva_dna_list_free(morva_dna_list* list);
/// Appends all of them, or with a status other than `MORVA_OK` those before the one that failed.
morva_status morva_dna_list_append(morva_dna_list* list, char const* const* dnas, size_t count);
/// 0 for null.
size_t morva_dna_list_size(morva_dna_list const* list);
/// The similarity of a fingerprint to each of the list, in its order. `count` is the size of the
/// list, and that of the array.
morva_status morva_dna_list_similarities(morva_dna_list const* list, char const* dna,
                                         double* similarities, size_t count);
/// The most similar ones, at most `count` and at most all: positions and similarities, the most
/// similar first, of equal ones the earlier first. `found` is how many there are.
morva_status morva_dna_list_most_similar(morva_dna_list const* list, char const* dna, size_t count,
                                         size_t* positions, double* similarities, size_t* found);

/* ---- Boxes: the class that a document belongs to ---- */

/// Boxes that were opened together: their classes, in the order in which they are asked.
typedef struct morva_boxes morva_boxes;

/// Opens a box file; or all boxes of a directory, in the order of its index `box.ini`; or with null
/// those of the directory of this machine: MORVA_BOX_PATH, else $XDG_DATA_HOME/morvaai/box, else
/// ~/.local/share/morvaai/box. One box that cannot be read is a failure of the whole. Boxes are
/// read once: what becomes of the files later changes nothing.
morva_status morva_boxes_open(char const* path, morva_boxes** boxes);
/// Frees the boxes and all texts that they gave. What was made of them so that they are asked fast
/// is kept a while: it goes as boxes that are opened later are asked for the first time.
void morva_boxes_close(morva_boxes* boxes);

/// What documents must be read for to be matched with these boxes: a sum of `MORVA_WANT_...`.
unsigned morva_boxes_wants(morva_boxes const* boxes);
/// The number of classes in all boxes; 0 for null.
size_t morva_boxes_class_count(morva_boxes const* boxes);
/// The id of the box that the class at a position is in. Null for a position that is none, as of
/// the next two.
char const* morva_boxes_box_id(morva_boxes const* boxes, size_t position);
/// The identifier of the class, by which it is asked.
char const* morva_boxes_class_id(morva_boxes const* boxes, size_t position);
/// Its name.
char const* morva_boxes_class_name(morva_boxes const* boxes, size_t position);

/// The position of the first class that takes the document, or SIZE_MAX where none does. A document
/// goes by its 100 strongest words, however few of them were asked for; one of
/// `morva_document_from_words` by all that it was made of.
morva_status morva_boxes_match(morva_boxes const* boxes, morva_document const* document,
                               size_t* position);
/// Whether the class at a position takes the document, 1 or 0, whether or not one before it does.
/// In a box of method kmeans only the class with the nearest center can.
morva_status morva_boxes_is_in_class(morva_boxes const* boxes, morva_document const* document,
                                     size_t position, int* is_in_class);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
