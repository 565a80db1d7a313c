#include "experiments/digest.h"

#include <array>
#include <cstdint>
#include <limits>

#include <openssl/evp.h>

#include "base/file.h"

namespace {

std::string Hexadecimal(const unsigned char* bytes, unsigned count) {
  // Small letters, as sha256sum prints them, with which a user can check pictures.txt and record.json.
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (unsigned i = 0; i < count; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 15];
  }
  return text;
}

}  // namespace

TDigest::TDigest() : context(EVP_MD_CTX_new()) {
  // FIPS 180-4. Digests stand in files that outlive a version: with another function every stored feature would look as
  // if its picture had changed.
  EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr);
}

void TDigest::TFreer::operator()(evp_md_ctx_st* begun) const {
  EVP_MD_CTX_free(begun);
}

void TDigest::Add(std::string_view bytes) {
  EVP_DigestUpdate(context.get(), bytes.data(), bytes.size());
}

std::string TDigest::Finish() {
  std::array<unsigned char, EVP_MAX_MD_SIZE> bytes;
  unsigned count = 0;
  EVP_DigestFinal_ex(context.get(), bytes.data(), &count);
  return Hexadecimal(bytes.data(), count);
}

std::string DigestOf(std::string_view bytes) {
  TDigest digest;
  digest.Add(bytes);
  return digest.Finish();
}

std::optional<std::string> DigestOfFile(const std::string& path) {
  base::TFileReader reader;
  // Up to 4 GiB, which no plug-in and no run comes near.
  if (reader.Read(path, std::numeric_limits<std::uint32_t>::max()) != base::TReadOutcome::kRead) {
    return std::nullopt;
  }
  return DigestOf(reader.GetBytes());
}
