#pragma once

#include <string>
#include <vector>

namespace test {

/// A document that was made, and a text that stands in it.
struct MadeDocument {
  std::string name;
  std::string bytes;
  std::string text;
};

/// A small document of every family of formats, all that stand behind a library of their own
/// included.
std::vector<MadeDocument> small_documents();

/// Documents nested as deep as bounds allow, and deeper, in each way that a format offers; also
/// with each other inside.
std::vector<MadeDocument> deep_documents();

}  // namespace test
