#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <string>

namespace karvex::rig {

struct FreeCertificate {
  void operator()(X509* certificate) const { X509_free(certificate); }
};
struct FreeKey {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};

/// A certificate (RFC 5280) with the private key that belongs to it. The key never leaves memory.
struct Identity {
  std::unique_ptr<EVP_PKEY, FreeKey> key;
  std::unique_ptr<X509, FreeCertificate> certificate;
};

/// A certificate authority that lives as long as the process and that nobody trusts unless told to.
/// Everything it makes has an elliptic key on P-256 and is good from yesterday, so that a clock that is a bit
/// slow does no harm, for 30 days. What fails throws std::runtime_error with the library's own words.
class CertificateAuthority {
 public:
  /// The name stands in its certificate. Two authorities must differ in name.
  explicit CertificateAuthority(const std::string& name);

  /// A new identity for a server on this machine, known as 127.0.0.1 and as localhost.
  Identity issueLocalServer() const;

  /// The authority's own certificate as PEM text (RFC 7468), which is what a client has to trust.
  std::string pem() const;

 private:
  Identity identity_;
};

}  // namespace karvex::rig
