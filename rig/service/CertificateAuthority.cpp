#include "rig/service/CertificateAuthority.hpp"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <array>
#include <cstdint>
#include <span>
#include <stdexcept>

namespace karvex::rig {
namespace {

constexpr long day = 24L * 60 * 60;  // seconds

struct Extension {
  int identifier;
  const char* value;
};

[[noreturn]] void fail(const std::string& what) {
  std::array<char, 256> reason{};
  ERR_error_string_n(ERR_get_error(), reason.data(), reason.size());
  throw std::runtime_error(what + ": " + reason.data());
}

void check(bool isGood, const char* what) {
  if (!isGood) {
    fail(what);
  }
}

void setSerialNumber(X509* certificate) {
  std::uint64_t number = 0;
  check(RAND_bytes(reinterpret_cast<unsigned char*>(&number), sizeof number) == 1, "No random number");
  // Positive, and never 0 (RFC 5280, 4.1.2.2).
  number = (number >> 1U) | 1U;
  check(ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), number) == 1, "No serial number");
}

void addExtensions(X509* certificate, X509* issuer, std::span<const Extension> extensions) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  for (const auto& [identifier, value] : extensions) {
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, identifier, value);
    check(extension != nullptr, value);
    const bool isAdded = X509_add_ext(certificate, extension, -1) == 1;
    X509_EXTENSION_free(extension);
    check(isAdded, value);
  }
}

/// A new key with a certificate signed by the issuer, or by itself if there is none.
Identity makeIdentity(const std::string& name, const Identity* issuer,
                      std::span<const Extension> extensions) {
  Identity made;
  made.key.reset(EVP_EC_gen("P-256"));
  check(made.key != nullptr, "No key could be made");
  made.certificate.reset(X509_new());
  X509* certificate = made.certificate.get();
  check(certificate != nullptr && X509_set_version(certificate, X509_VERSION_3) == 1, "No certificate");
  setSerialNumber(certificate);
  X509_gmtime_adj(X509_getm_notBefore(certificate), -day);
  X509_gmtime_adj(X509_getm_notAfter(certificate), 30 * day);
  check(X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8,
                                   reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0) == 1,
        "No name");
  check(X509_set_pubkey(certificate, made.key.get()) == 1, "No public key");
  const Identity& signer = issuer != nullptr ? *issuer : made;
  check(X509_set_issuer_name(certificate, X509_get_subject_name(signer.certificate.get())) == 1, "No issuer");
  addExtensions(certificate, signer.certificate.get(), extensions);
  check(X509_sign(certificate, signer.key.get(), EVP_sha256()) != 0, "The certificate could not be signed");
  return made;
}

constexpr std::array<Extension, 3> authorityExtensions = {{
    {NID_basic_constraints, "critical,CA:TRUE,pathlen:0"},
    {NID_key_usage, "critical,keyCertSign,cRLSign"},
    {NID_subject_key_identifier, "hash"},
}};

constexpr std::array<Extension, 6> serverExtensions = {{
    {NID_basic_constraints, "critical,CA:FALSE"},
    {NID_key_usage, "critical,digitalSignature"},
    {NID_ext_key_usage, "serverAuth"},
    {NID_subject_alt_name, "IP:127.0.0.1,DNS:localhost"},
    {NID_subject_key_identifier, "hash"},
    {NID_authority_key_identifier, "keyid"},
}};

}  // namespace

CertificateAuthority::CertificateAuthority(const std::string& name)
    : identity_(makeIdentity(name, nullptr, authorityExtensions)) {}

Identity CertificateAuthority::issueLocalServer() const {
  return makeIdentity("localhost", &identity_, serverExtensions);
}

std::string CertificateAuthority::pem() const {
  const std::unique_ptr<BIO, decltype(&BIO_free)> memory(BIO_new(BIO_s_mem()), &BIO_free);
  check(memory != nullptr && PEM_write_bio_X509(memory.get(), identity_.certificate.get()) == 1,
        "No PEM text");
  char* text = nullptr;
  const long length = BIO_get_mem_data(memory.get(), &text);
  return {text, static_cast<std::size_t>(length)};
}

}  // namespace karvex::rig
