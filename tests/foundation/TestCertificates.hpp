#pragma once

#include <memory>
#include <string>

namespace karvex::foundation {

/// What a TLS server shows and what it signs with, both as PEM text.
struct ServerIdentity {
  std::string certificate;
  std::string key;
};

/// A certificate authority that nobody knows but who has its certificate. Good for an hour.
class TestAuthority {
 public:
  explicit TestAuthority(std::string name = "Test authority");
  ~TestAuthority();
  TestAuthority(const TestAuthority&) = delete;
  TestAuthority& operator=(const TestAuthority&) = delete;

  /// PEM text.
  std::string certificate() const;

  /// For the names of the server in OpenSSL's form, such as "IP:127.0.0.1" or "DNS:example.com".
  ServerIdentity issue(const std::string& names) const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace karvex::foundation
