#include <fstream>

#include "tests/foundation/TestCertificates.hpp"
#include "tests/foundation/UrlSessionFixture.hpp"

namespace karvex::foundation {
namespace {

using testing::MatchesRegex;
using Connection = LoopbackServer::Connection;

class UrlSessionTlsTest : public UrlSessionFixture<SystemRuntime> {
 protected:
  /// A policy that trusts `authority` and nobody else.
  TransferPolicy trustingPolicy() const {
    TransferPolicy policy;
    policy.certificateAuthorities = directory.path() / "authority.pem";
    std::ofstream(*policy.certificateAuthorities) << authority.certificate();
    return policy;
  }

  const TestAuthority authority;
};

TEST_F(UrlSessionTlsTest, OnlyACertificateOfATrustedAuthorityForThisHostWillDo) {
  const TestAuthority other("Another authority");
  const TestAuthority impostor;
  const struct {
    const char* what;
    ServerIdentity identity;
    TransferPolicy policy;
    const char* expected;
  } cases[] = {
      {"trusted", authority.issue("IP:127.0.0.1"), trustingPolicy(), ""},
      {"not known to the system",
       authority.issue("IP:127.0.0.1"),
       {},
       "127\\.0\\.0\\.1: The server's certificate is refused: .*certificate.*"},
      {"of another authority", other.issue("IP:127.0.0.1"), trustingPolicy(),
       "127\\.0\\.0\\.1: The server's certificate is refused: .*certificate.*"},
      {"of another authority by the same name", impostor.issue("IP:127.0.0.1"), trustingPolicy(),
       "127\\.0\\.0\\.1: No secure connection: .*"},
      {"of another host", authority.issue("DNS:other.example"), trustingPolicy(),
       "127\\.0\\.0\\.1: The server's certificate is refused: .*127\\.0\\.0\\.1.*"},
  };
  for (const auto& [what, identity, policy, expected] : cases) {
    const LoopbackServer server(
        [](Connection& connection) {
          connection.readRequest();
          connection.write(answer(200, "secret"));
        },
        identity);
    const auto outcome = get(server.url("/"), policy);
    EXPECT_EQ(outcome.value.has_value(), *expected == '\0') << what;
    EXPECT_THAT(outcome.error, MatchesRegex(expected)) << what;
  }
}

TEST_F(UrlSessionTlsTest, ARedirectLeadsFromHttpToHttps) {
  const LoopbackServer secure(
      [](Connection& connection) {
        connection.readRequest();
        connection.write(answer(200, "secret"));
      },
      authority.issue("IP:127.0.0.1"));
  const LoopbackServer open([&secure](Connection& connection) {
    connection.readRequest();
    connection.write(answer(302, "", "Location: " + secure.url("/b") + "\r\n"));
  });
  const auto outcome = get(open.url("/a"), trustingPolicy());
  ASSERT_TRUE(outcome.value) << outcome.error;
  EXPECT_EQ(outcome.value->url, secure.url("/b"));
}

TEST_F(UrlSessionTlsTest, AServerThatGoesInMidUploadIsAFailureAndNotTheProgramsEnd) {
  const LoopbackServer server([](Connection& connection) { connection.reset(); },
                              authority.issue("IP:127.0.0.1"));
  for (int attempt = 0; attempt < 3; ++attempt) {
    const auto outcome = send(
        {.url = server.url("/"), .method = "POST", .body = std::string(20'000'000, 'x')}, trustingPolicy());
    EXPECT_FALSE(outcome.value);
    EXPECT_NE(outcome.error, "");
  }
}

}  // namespace
}  // namespace karvex::foundation
