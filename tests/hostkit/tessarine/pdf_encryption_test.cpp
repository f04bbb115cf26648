#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "host/HTessarineResult.h"
#include "hostkit/morvakit/pdf_builder.h"
#include "hostkit/tessarine/pdf_protection.h"
#include "hostkit/tessarine/samples.h"

#include "support/temporary_directory.h"

namespace {

using test::one_page;
using test::PdfProtection;
using test::show;

std::string protected_pdf(std::string const& user_password, std::string const& filling = "") {
  PdfProtection const protection(user_password, "owner");
  auto pdf = one_page(protection.encrypted(4, show("text")));
  auto const handler = pdf.add(protection.dictionary());
  if (!filling.empty()) {
    pdf.add_stream(filling);
  }
  return pdf.bytes(PdfProtection::trailer_entries(handler));
}

TEST(PdfEncryption, a_user_password_is_needed) {
  EXPECT_TRUE(test::recognize(protected_pdf("secret")).encrypted);
}

TEST(PdfEncryption, an_owner_password_alone_is_not_needed) {
  EXPECT_FALSE(test::recognize(protected_pdf("")).encrypted);
}

TEST(PdfEncryption, of_a_large_document_is_told_by_its_end) {
  std::string const filling(5 << 20, ' ');
  EXPECT_TRUE(test::recognize(protected_pdf("secret", filling)).encrypted);
}

TEST(PdfEncryption, a_page_that_tells_of_it_is_not_encrypted) {
  EXPECT_FALSE(test::recognize(one_page(show("/Encrypt 6 0 R")).bytes()).encrypted);
}

TEST(PdfEncryption, a_damaged_document_is_not_called_encrypted) {
  EXPECT_FALSE(test::recognize("%PDF-1.4\ntrailer\n<</Encrypt 1 0 R>>\n%%EOF\n").encrypted);
}

TEST(PdfEncryption, an_encrypted_document_is_still_a_pdf) {
  EXPECT_EQ(test::recognize(protected_pdf("secret")).type, tessarine::FileType::pdf);
}

/// A document with a gap of a gigabyte behind its beginning.
class HugeReader final : public test::MemoryReader {
 public:
  using MemoryReader::MemoryReader;

  std::int64_t ReadAt(std::int64_t offset, void* buffer, std::int64_t size) const override {
    bytes_read_ += size;
    return MemoryReader::ReadAt(offset < gap ? offset : offset - gap, buffer, size);
  }
  std::int64_t GetSize() const override { return MemoryReader::GetSize() + gap; }
  std::int64_t bytes_read() const { return bytes_read_; }

 private:
  static constexpr std::int64_t gap = std::int64_t{1} << 30;
  mutable std::int64_t bytes_read_ = 0;
};

TEST(PdfEncryption, of_a_huge_document_is_not_searched_for) {
  HugeReader const reader(protected_pdf("secret"), "document");
  tessarine::recognize(reader);
  EXPECT_LT(reader.bytes_read(), 8 << 20);
}

TEST(PdfEncryption, is_told_in_the_record_of_a_file) {
  test::TemporaryDirectory const directory;
  HTessarineResult result;
  HTessarine::recognize(directory.write("document", protected_pdf("secret")), result);
  EXPECT_TRUE(result.b_encrypt);
}

}  // namespace
