#include <atomic>
#include <fstream>
#include <future>

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

TEST_F(UrlSessionTlsTest, AServerThatIsSilentInTheHandshakeCostsTheTimeToConnectAndNoMore) {
  const LoopbackServer mute([](Connection& connection) { connection.awaitEnd(); });
  auto policy = trustingPolicy();
  policy.connectTimeOut = std::chrono::milliseconds(150);
  const auto start = runtime.clock().now();
  UrlSession session(runtime, policy);
  const auto outcome = await(session.download("https://127.0.0.1:" + std::to_string(mute.port()) + "/"));
  EXPECT_THAT(outcome.error, MatchesRegex("127\\.0\\.0\\.1: .*(timeout|timed out).*"));
  EXPECT_GE(outcome.at - start, policy.connectTimeOut);
  EXPECT_LT(outcome.at - start, std::chrono::seconds(10));
}

/// Answers "/s..." with a redirect to the secure server and "/p..." with one to the plain server, each with
/// what is left of the path, and "/" with "the end".
TEST_F(UrlSessionTlsTest, ARedirectLeadsFromHttpToHttpsAndNeverBack) {
  std::string secure;
  std::string plain;
  std::atomic<int> askedOpenly = 0;
  const auto handler = [&](bool isSecure) {
    return [&, isSecure](Connection& connection) {
      for (auto request = connection.readRequest(); !request.empty(); request = connection.readRequest()) {
        askedOpenly += isSecure ? 0 : 1;
        const auto path = request.substr(5, request.find(" HTTP") - 5);
        const auto& next = path.starts_with('s') ? secure : plain;
        connection.write(path.empty() ? answer(200, "the end")
                                      : answer(302, "", "Location: " + next + path.substr(1) + "\r\n"));
      }
    };
  };
  const LoopbackServer secureServer(handler(true), authority.issue("IP:127.0.0.1"));
  const LoopbackServer plainServer(handler(false));
  secure = secureServer.url("/");
  plain = plainServer.url("/");
  constexpr auto refused = "127.0.0.1: The server redirects to an address that doesn't begin with https://";
  const struct {
    std::string url;
    std::string expected;
    int askedOpenly;
  } cases[] = {
      {plain + "s", "", 1},       {secure + "s", "", 0},       {secure + "p", refused, 0},
      {plain + "sp", refused, 1}, {plain + "psp", refused, 2},
  };
  for (const auto& [url, expected, count] : cases) {
    askedOpenly = 0;
    const auto outcome = get(url, trustingPolicy());
    EXPECT_EQ(outcome.error, expected) << url;
    EXPECT_EQ(outcome.value ? outcome.value->url : secure, secure) << url;
    EXPECT_EQ(askedOpenly, count) << url;
  }
}

TEST_F(UrlSessionTlsTest, AConnectionThatTheServerResetMeanwhileIsReplaced) {
  std::promise<void> isAnswered;
  std::promise<void> isReset;
  std::atomic<int> connections = 0;
  const LoopbackServer server(
      [&](Connection& connection) {
        connection.readRequest();
        connection.write(answer(200, "secret"));
        if (connections++ == 0) {
          isAnswered.get_future().wait();
          connection.reset();
          isReset.set_value();
        }
      },
      authority.issue("IP:127.0.0.1"));
  UrlSession session(runtime, trustingPolicy());
  EXPECT_TRUE(await(session.send({.url = server.url("/")})).value);
  isAnswered.set_value();
  isReset.get_future().wait();
  EXPECT_TRUE(await(session.send({.url = server.url("/")})).value);
  EXPECT_EQ(connections, 2);
}

}  // namespace
}  // namespace karvex::foundation
