#include "tests/foundation/TestCertificates.hpp"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <stdexcept>

namespace karvex::foundation {
namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

void require(bool isDone) {
  if (!isDone) {
    throw std::runtime_error("OpenSSL can't make a certificate");
  }
}

Key makeKey() {
  Key key(EVP_EC_gen("P-256"), &EVP_PKEY_free);
  require(key != nullptr);
  return key;
}

void setName(X509_NAME* name, const char* text) {
  require(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>(text),
                                     -1, -1, 0) == 1);
}

void addExtension(X509& certificate, int what, const char* value) {
  const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
      X509V3_EXT_conf_nid(nullptr, nullptr, what, value), &X509_EXTENSION_free);
  require(extension && X509_add_ext(&certificate, extension.get(), -1) == 1);
}

/// Not signed yet.
Certificate makeCertificate(const char* subject, const char* issuer, EVP_PKEY& key) {
  static std::atomic<long> lastSerialNumber = 0;
  Certificate certificate(X509_new(), &X509_free);
  auto* made = certificate.get();
  require(made != nullptr && X509_set_version(made, X509_VERSION_3) == 1 &&
          ASN1_INTEGER_set(X509_get_serialNumber(made), ++lastSerialNumber) == 1 &&
          X509_gmtime_adj(X509_getm_notBefore(made), -60) != nullptr &&
          X509_gmtime_adj(X509_getm_notAfter(made), 3600) != nullptr && X509_set_pubkey(made, &key) == 1);
  setName(X509_get_subject_name(made), subject);
  setName(X509_get_issuer_name(made), issuer);
  return certificate;
}

template <typename Write>
std::string pem(Write write) {
  const std::unique_ptr<BIO, decltype(&BIO_free)> memory(BIO_new(BIO_s_mem()), &BIO_free);
  require(memory && write(memory.get()) == 1);
  char* text = nullptr;
  const auto size = BIO_get_mem_data(memory.get(), &text);
  return {text, static_cast<std::size_t>(size)};
}

}  // namespace

struct TestAuthority::State {
  std::string name;
  Key key;
  Certificate certificate;
};

TestAuthority::TestAuthority(std::string name) {
  auto key = makeKey();
  auto own = makeCertificate(name.c_str(), name.c_str(), *key);
  state_ = std::make_unique<State>(State{std::move(name), std::move(key), std::move(own)});
  addExtension(*state_->certificate, NID_basic_constraints, "critical,CA:TRUE");
  addExtension(*state_->certificate, NID_key_usage, "critical,keyCertSign");
  require(X509_sign(state_->certificate.get(), state_->key.get(), EVP_sha256()) > 0);
}

TestAuthority::~TestAuthority() = default;

std::string TestAuthority::certificate() const {
  return pem([this](BIO* to) { return PEM_write_bio_X509(to, state_->certificate.get()); });
}

ServerIdentity TestAuthority::issue(const std::string& names) const {
  const auto key = makeKey();
  const auto certificate = makeCertificate("Test server", state_->name.c_str(), *key);
  addExtension(*certificate, NID_subject_alt_name, names.c_str());
  require(X509_sign(certificate.get(), state_->key.get(), EVP_sha256()) > 0);
  return {.certificate = pem([&](BIO* to) { return PEM_write_bio_X509(to, certificate.get()); }),
          .key = pem([&](BIO* to) {
            return PEM_write_bio_PrivateKey(to, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
          })};
}

}  // namespace karvex::foundation
