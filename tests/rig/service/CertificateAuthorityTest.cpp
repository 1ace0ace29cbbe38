#include "rig/service/CertificateAuthority.hpp"

#include <gmock/gmock.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

namespace karvex::rig {
namespace {

using Certificate = std::unique_ptr<X509, FreeCertificate>;

Certificate fromPem(const std::string& pem) {
  const std::unique_ptr<BIO, decltype(&BIO_free)> memory(
      BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), &BIO_free);
  return Certificate(PEM_read_bio_X509(memory.get(), nullptr, nullptr, nullptr));
}

/// The library's verdict on a server's certificate, for a client that trusts one authority and is strict.
int verdict(X509* server, X509* authority) {
  const std::unique_ptr<X509_STORE, decltype(&X509_STORE_free)> store(X509_STORE_new(), &X509_STORE_free);
  X509_STORE_add_cert(store.get(), authority);
  X509_STORE_set_flags(store.get(), X509_V_FLAG_X509_STRICT);
  X509_STORE_set_purpose(store.get(), X509_PURPOSE_SSL_SERVER);
  const std::unique_ptr<X509_STORE_CTX, decltype(&X509_STORE_CTX_free)> context(X509_STORE_CTX_new(),
                                                                                &X509_STORE_CTX_free);
  X509_STORE_CTX_init(context.get(), store.get(), server, nullptr);
  X509_verify_cert(context.get());
  return X509_STORE_CTX_get_error(context.get());
}

TEST(CertificateAuthorityTest, OnlyWhatAnAuthorityIssuedStandsUnderIt) {
  const CertificateAuthority ours("ours");
  const CertificateAuthority theirs("theirs");
  const auto ourCertificate = fromPem(ours.pem());
  const auto theirCertificate = fromPem(theirs.pem());
  ASSERT_TRUE(ourCertificate != nullptr && theirCertificate != nullptr);
  const auto server = ours.issueLocalServer();
  EXPECT_EQ(verdict(server.certificate.get(), ourCertificate.get()), X509_V_OK);
  EXPECT_EQ(verdict(server.certificate.get(), theirCertificate.get()),
            X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY);
  EXPECT_EQ(X509_check_private_key(server.certificate.get(), server.key.get()), 1);
  EXPECT_EQ(X509_check_ca(server.certificate.get()), 0) << "a server must not be able to sign for others";
}

TEST(CertificateAuthorityTest, AServerIsKnownByItsLoopbackNamesAlone) {
  const auto server = CertificateAuthority("any").issueLocalServer();
  EXPECT_EQ(X509_check_ip_asc(server.certificate.get(), "127.0.0.1", 0), 1);
  EXPECT_EQ(X509_check_host(server.certificate.get(), "localhost", 0, 0, nullptr), 1);
  EXPECT_EQ(X509_check_ip_asc(server.certificate.get(), "127.0.0.2", 0), 0);
  EXPECT_EQ(X509_check_host(server.certificate.get(), "firmware.example.com", 0, 0, nullptr), 0);
}

}  // namespace
}  // namespace karvex::rig
