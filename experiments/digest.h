#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct evp_md_ctx_st;

/// SHA-256 of bytes that arrive one after the other.
class TDigest {
 public:
  TDigest();

  void Add(std::string_view bytes);

  /// The digest in 64 hexadecimal digits, small letters. Nothing is added behind it.
  std::string Finish();

 private:
  struct TFreer {
    void operator()(evp_md_ctx_st* context) const;
  };

  std::unique_ptr<evp_md_ctx_st, TFreer> context;
};

std::string DigestOf(std::string_view bytes);

/// The digest of the file of exactly this name; nothing if it cannot be read.
std::optional<std::string> DigestOfFile(const std::string& path);
